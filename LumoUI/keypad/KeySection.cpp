#include "LumoUI/keypad/KeySection.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QToolButton>

#include <algorithm>

#include "LumoKit/base/Language.h"

namespace lumo {

namespace {

constexpr int headerHeight = 24;

} // namespace

KeySection::KeySection(std::string groupID, const std::vector<const KeyDefinition*>& keys,
                       const KeypadMetrics& metrics, int columns, QWidget* parent)
    : QWidget(parent), m_groupID(std::move(groupID)), m_metrics(metrics), m_columns(std::max(1, columns)) {
    m_title = new QLabel(this);
    QFont titleFont = m_title->font();
    titleFont.setPixelSize(std::max(11, metrics.fontPixels - 5));
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    m_title->setForegroundRole(QPalette::PlaceholderText);

    m_catalogButton = new QToolButton(this);
    m_catalogButton->setAutoRaise(true);
    m_catalogButton->setFocusPolicy(Qt::NoFocus);
    m_catalogButton->setCursor(Qt::PointingHandCursor);
    connect(m_catalogButton, &QToolButton::clicked, this, &KeySection::catalogRequested);

    for (const KeyDefinition* key : keys) {
        auto* button = new KeyButton(*key, metrics, this);
        button->installEventFilter(this);
        connect(button, &KeyButton::clicked, this, [this, button] { emit keyPressed(button->key()); });
        m_buttons.append(button);
    }
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    retranslate();
}

KeyButton* KeySection::keyButton(const std::string& keyID) const {
    for (KeyButton* button : m_buttons) {
        if (button->key().id == keyID)
            return button;
    }
    return nullptr;
}

void KeySection::setTitle(const QString& title) {
    m_title->setText(title);
}

void KeySection::retranslate() {
    m_catalogButton->setText(QString::fromStdString(L10n::pick("一覧 ›", "All ›")));
    m_catalogButton->setToolTip(QString::fromStdString(
        L10n::pick("すべてのキーと説明。キーをここへドラッグするとタブから外せます",
                   "Every key with what it does. Drag a key here to take it off the tab")));
    for (KeyButton* button : m_buttons)
        button->retranslate();
}

int KeySection::gridTop() const {
    return headerHeight + 4;
}

QSize KeySection::sizeHint() const {
    const int rows = std::max<int>(1, int((m_buttons.size() + m_columns - 1) / m_columns));
    return {m_metrics.rowWidth(m_columns), gridTop() + rows * (m_metrics.keyHeight + m_metrics.spacing)};
}

QRect KeySection::slot(int index) const {
    const int slotWidth = (width() - (m_columns - 1) * m_metrics.spacing) / m_columns;
    const int row = index / m_columns;
    const int column = index % m_columns;
    return {column * (slotWidth + m_metrics.spacing),
            gridTop() + row * (m_metrics.keyHeight + m_metrics.spacing), slotWidth, m_metrics.keyHeight};
}

int KeySection::slotAt(const QPoint& position) const {
    const int slotWidth = (width() - (m_columns - 1) * m_metrics.spacing) / m_columns;
    const int column =
        std::clamp(position.x() / std::max(1, slotWidth + m_metrics.spacing), 0, m_columns - 1);
    const int row = std::max(0, (position.y() - gridTop()) / (m_metrics.keyHeight + m_metrics.spacing));
    return std::clamp(row * m_columns + column, 0, int(m_buttons.size()) - 1);
}

void KeySection::resizeEvent(QResizeEvent*) {
    const int buttonWidth = m_catalogButton->sizeHint().width();
    m_catalogButton->setGeometry(width() - buttonWidth, 0, buttonWidth, headerHeight);
    m_title->setGeometry(2, 0, width() - buttonWidth - 4, headerHeight);
    layoutKeys();
}

void KeySection::layoutKeys() {
    // While a key is dragged the others close up around the slot it would take.
    int index = 0;
    for (KeyButton* button : m_buttons) {
        if (m_dragging && button == m_pressed)
            continue;
        if (m_dragging && index == m_target)
            ++index;
        button->setGeometry(slot(index++));
    }
}

bool KeySection::eventFilter(QObject* watched, QEvent* event) {
    auto* button = qobject_cast<KeyButton*>(watched);
    if (!button)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton) {
            m_pressed = button;
            m_pressAt = mouse->globalPosition().toPoint();
            m_dragging = false;
        }
        return false;
    }
    case QEvent::MouseMove: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (button != m_pressed || !(mouse->buttons() & Qt::LeftButton))
            return false;
        const QPoint global = mouse->globalPosition().toPoint();
        if (!m_dragging) {
            if ((global - m_pressAt).manhattanLength() < QApplication::startDragDistance())
                return false;
            m_dragging = true;
            m_grabOffset = m_pressAt - button->mapToGlobal(QPoint(0, 0));
            button->setDown(false);
            button->setLifted(true);
            button->raise();
        }
        const QPoint local = mapFromGlobal(global);
        button->move(local - m_grabOffset);
        m_target = slotAt(local);
        layoutKeys();
        return true;
    }
    case QEvent::MouseButtonRelease:
        if (m_dragging && button == m_pressed)
            finishDrag(static_cast<QMouseEvent*>(event)->globalPosition().toPoint());
        m_pressed = nullptr;
        // The button was let up when the drag began, so its release clicks nothing.
        return false;
    case QEvent::ContextMenu:
        emit contextMenuRequested(button->key().id, static_cast<QContextMenuEvent*>(event)->globalPos());
        return true;
    default:
        return false;
    }
}

void KeySection::finishDrag(const QPoint& globalPosition) {
    const QPoint local = mapFromGlobal(globalPosition);
    const std::string keyID = m_pressed->key().id;
    const int target = m_target;
    m_pressed->setLifted(false);
    m_dragging = false;
    m_target = -1;
    layoutKeys();
    // The receivers may rebuild the tab; this section then goes away later, not now.
    if (m_catalogButton->geometry().adjusted(-4, -4, 4, 4).contains(local))
        emit hideRequested(keyID);
    else if (rect().contains(local))
        emit moveRequested(keyID, target);
}

} // namespace lumo
