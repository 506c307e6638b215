#include "LumoUI/keypad/KeypadView.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <set>

#include "LumoKit/base/Language.h"
#include "LumoUI/keypad/ArrangedTab.h"
#include "LumoUI/keypad/CatalogPanel.h"
#include "LumoUI/keypad/KeyLayoutStore.h"
#include "LumoUI/keypad/KeySection.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/NamedValues.h"
#include "LumoUI/store/SheetSession.h"
#include "LumoUI/store/UndoCenter.h"

namespace lumo {

namespace {

constexpr auto panelKey = "lumo.keypadPanel";

// One segment of the tab switcher: the checked one stands out on the accent colour.
class SegmentButton : public QAbstractButton {
public:
    explicit SegmentButton(QWidget* parent) : QAbstractButton(parent) {
        setCheckable(true);
        setFocusPolicy(Qt::NoFocus);
        setAttribute(Qt::WA_Hover);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
    void setPixelHeight(int height) {
        m_height = height;
        updateGeometry();
    }
    QSize sizeHint() const override { return {60, m_height}; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPalette& colors = palette();
        const QRectF area = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
        QPainterPath shape;
        shape.addRoundedRect(area, area.height() / 3, area.height() / 3);
        if (isChecked()) {
            painter.fillPath(shape, colors.color(QPalette::Highlight));
        } else if (underMouse()) {
            QColor hover = colors.color(QPalette::ButtonText);
            hover.setAlphaF(0.08f);
            painter.fillPath(shape, hover);
        }
        QFont label = font();
        label.setPixelSize(std::max(12, m_height / 2 - 2));
        label.setBold(isChecked());
        painter.setFont(label);
        painter.setPen(colors.color(isChecked() ? QPalette::HighlightedText : QPalette::ButtonText));
        painter.drawText(area, Qt::AlignCenter, text());
    }

private:
    int m_height = 30;
};

// The rounded track the segments sit in.
class SegmentTrack : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor track = palette().color(QPalette::WindowText);
        track.setAlphaF(0.07f);
        const QRectF area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        QPainterPath shape;
        shape.addRoundedRect(area, area.height() / 3, area.height() / 3);
        painter.fillPath(shape, track);
    }
};

QString pick(const char* japanese, const char* english) {
    return QString::fromStdString(L10n::pick(japanese, english));
}

std::string panelName(KeyKind kind, const std::string& groupID) {
    return std::string(rawValue(kind)) + "." + groupID;
}

} // namespace

KeypadView::KeypadView(SheetSession* session, AppSettings* settings, NotificationCenter* notifications,
                       KeyLayoutStore* layouts, QWidget* parent)
    : QFrame(parent), m_session(session), m_settings(settings), m_notifications(notifications),
      m_layouts(layouts),
      m_metrics(KeypadMetrics::forSize(settings ? settings->keypadSize() : KeypadSizeSetting::large)) {
    setObjectName(QStringLiteral("keypad"));
    setAccessibleName(pick("キーパッド", "Keypad"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    buildTabs();
    applySize();
    retranslate();
    restorePanel();

    if (m_notifications) {
        m_notifications->observe(notification::keypadSizeChanged, this, [this] { applySize(); });
        m_notifications->observe(notification::languageChanged, this, [this] { retranslate(); });
    }
    if (m_session) {
        connect(m_session, &SheetSession::resultsChanged, this, &KeypadView::updateNamedValues);
        if (DocumentStore* store = m_session->store(); store && store->undoCenter()) {
            connect(store->undoCenter(), &UndoCenter::canUndoChanged, this, &KeypadView::updateUndoKeys);
            connect(store->undoCenter(), &UndoCenter::canRedoChanged, this, &KeypadView::updateUndoKeys);
        }
    }
    updateUndoKeys();
    updateNamedValues();
}

void KeypadView::buildTabs() {
    auto* column = new QVBoxLayout(this);
    column->setSpacing(8);

    auto* track = new SegmentTrack(this);
    auto* tabRow = new QHBoxLayout(track);
    tabRow->setContentsMargins(2, 2, 2, 2);
    tabRow->setSpacing(2);
    m_tabGroup = new QButtonGroup(this);
    for (Tab tab : {Tab::numbers, Tab::functions, Tab::units}) {
        auto* button = new SegmentButton(track);
        m_tabGroup->addButton(button, int(tab));
        m_tabButtons[tab] = button;
        tabRow->addWidget(button);
    }
    m_tabButtons[Tab::numbers]->setChecked(true);
    connect(m_tabGroup, &QButtonGroup::idClicked, this, [this](int id) { showTab(Tab(id)); });
    column->addWidget(track);

    m_namesArea = new QScrollArea(this);
    m_namesArea->setFrameShape(QFrame::NoFrame);
    m_namesArea->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_namesArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_namesArea->setWidgetResizable(true);
    m_namesArea->viewport()->setAutoFillBackground(false);
    m_names = new QWidget(m_namesArea);
    m_namesRow = new QHBoxLayout(m_names);
    m_namesRow->setContentsMargins(0, 0, 0, 0);
    m_namesArea->setWidget(m_names);
    column->addWidget(m_namesArea);

    m_pages = new QStackedWidget(this);
    m_numberPage = new QWidget(m_pages);
    buildNumberPad();
    m_pages->addWidget(m_numberPage);
    m_functionTab = new ArrangedTab(KeyKind::functions, m_layouts, m_metrics, m_pages);
    m_unitTab = new ArrangedTab(KeyKind::units, m_layouts, m_metrics, m_pages);
    for (ArrangedTab* tab : {m_functionTab, m_unitTab}) {
        m_pages->addWidget(tab);
        connect(tab, &ArrangedTab::keyPressed, this, &KeypadView::press);
        connect(tab, &ArrangedTab::catalogRequested, this,
                [this, tab](const std::string& groupID) { openCatalog(tab->kind(), groupID); });
    }
    column->addWidget(m_pages, 1);

    if (m_layouts) {
        connect(m_layouts, &KeyLayoutStore::arrangementChanged, this, [this](KeyKind kind) {
            // An open catalog shows its check boxes from the arrangement.
            if (m_catalog && m_catalogKind == kind)
                openCatalog(kind, m_catalog->groupID());
        });
    }
}

void KeypadView::buildNumberPad() {
    auto* grid = new QGridLayout(m_numberPage);
    grid->setContentsMargins(0, 0, 0, 0);
    for (const KeyPlace& place : KeyCatalog::numberPad()) {
        const KeyDefinition* key = KeyCatalog::numberKey(place.id);
        if (!key)
            continue;
        auto* button = new KeyButton(*key, m_metrics, m_numberPage);
        button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        connect(button, &KeyButton::clicked, this, [this, button] { press(button->key()); });
        grid->addWidget(button, place.row, place.column, place.rowSpan, place.columnSpan);
        m_numberKeys[place.id] = button;
    }
    for (int column = 0; column < 10; ++column)
        grid->setColumnStretch(column, 1);
    grid->setRowStretch(grid->rowCount(), 1);
}

void KeypadView::applySize() {
    if (m_settings)
        m_metrics = KeypadMetrics::forSize(m_settings->keypadSize());
    layout()->setContentsMargins(m_metrics.margin, m_metrics.margin, m_metrics.margin, m_metrics.margin);
    setFixedWidth(m_metrics.panelWidth());
    for (auto& [tab, button] : m_tabButtons)
        static_cast<SegmentButton*>(button)->setPixelHeight(m_metrics.keyHeight * 3 / 4);
    auto* grid = static_cast<QGridLayout*>(m_numberPage->layout());
    grid->setHorizontalSpacing(m_metrics.spacing);
    grid->setVerticalSpacing(m_metrics.spacing);
    for (auto& [id, button] : m_numberKeys) {
        button->setMetrics(m_metrics);
        button->setFixedHeight(m_metrics.keyHeight);
    }
    m_functionTab->setMetrics(m_metrics);
    m_unitTab->setMetrics(m_metrics);
    for (KeyButton* button : namedValueKeys())
        button->setMetrics(m_metrics);
    m_namesArea->setFixedHeight(m_metrics.keyHeight - 8 +
                                m_namesArea->horizontalScrollBar()->sizeHint().height());
    if (m_catalog && m_catalogKind)
        openCatalog(*m_catalogKind, m_catalog->groupID());
    updateGeometry();
}

void KeypadView::retranslate() {
    setAccessibleName(pick("キーパッド", "Keypad"));
    m_tabButtons[Tab::numbers]->setText(QStringLiteral("123"));
    m_tabButtons[Tab::numbers]->setToolTip(pick("数と演算", "Numbers and operators"));
    m_tabButtons[Tab::functions]->setText(QStringLiteral("f(x)"));
    m_tabButtons[Tab::functions]->setToolTip(pick("関数とプログラム", "Functions and programs"));
    m_tabButtons[Tab::units]->setText(pick("単位", "Units"));
    m_tabButtons[Tab::units]->setToolTip(pick("単位と変換", "Units and conversion"));
    for (auto& [id, button] : m_numberKeys)
        button->retranslate();
    m_functionTab->rebuild();
    m_unitTab->rebuild();
    if (m_catalog && m_catalogKind)
        openCatalog(*m_catalogKind, m_catalog->groupID());
    updateNamedValues();
}

KeypadView::Tab KeypadView::currentTab() const {
    if (m_pages->currentWidget() == m_functionTab || (m_catalog && m_catalogKind == KeyKind::functions))
        return Tab::functions;
    if (m_pages->currentWidget() == m_unitTab || (m_catalog && m_catalogKind == KeyKind::units))
        return Tab::units;
    return Tab::numbers;
}

void KeypadView::showTab(Tab tab) {
    if (m_catalog)
        closeCatalog();
    m_tabButtons[tab]->setChecked(true);
    m_pages->setCurrentWidget(tab == Tab::numbers     ? m_numberPage
                              : tab == Tab::functions ? static_cast<QWidget*>(m_functionTab)
                                                      : static_cast<QWidget*>(m_unitTab));
}

QAbstractButton* KeypadView::tabButton(Tab tab) const {
    return m_tabButtons.at(tab);
}

KeyButton* KeypadView::numberKey(const std::string& id) const {
    const auto found = m_numberKeys.find(id);
    return found == m_numberKeys.end() ? nullptr : found->second;
}

ArrangedTab* KeypadView::arrangedTab(KeyKind kind) const {
    return kind == KeyKind::functions ? m_functionTab : m_unitTab;
}

CatalogPanel* KeypadView::catalog() const {
    return m_catalog;
}

void KeypadView::openCatalog(KeyKind kind, const std::string& groupID) {
    const KeyGroup* group = KeyCatalog::group(kind, groupID);
    if (!group)
        return;
    if (m_catalog) {
        m_pages->removeWidget(m_catalog);
        m_catalog->deleteLater();
    }
    const KeyArrangement arrangement =
        m_layouts ? m_layouts->arrangement(kind) : KeyArrangement(KeyCatalog::groups(kind));
    m_catalog = new CatalogPanel(*group, arrangement, m_metrics, m_pages);
    m_catalogKind = kind;
    connect(m_catalog, &CatalogPanel::keyPressed, this, &KeypadView::press);
    connect(m_catalog, &CatalogPanel::closeRequested, this, &KeypadView::closeCatalog);
    connect(m_catalog, &CatalogPanel::resetRequested, this, [this, kind] {
        if (m_layouts)
            m_layouts->reset(kind);
    });
    connect(m_catalog, &CatalogPanel::shownChanged, this,
            [this, kind, groupID](const std::string& keyID, bool shown) {
                if (!m_layouts)
                    return;
                KeyArrangement changed = m_layouts->arrangement(kind);
                if (shown ? changed.show(groupID, keyID) : changed.hide(groupID, keyID))
                    m_layouts->setArrangement(kind, changed);
            });
    m_pages->addWidget(m_catalog);
    m_pages->setCurrentWidget(m_catalog);
    m_tabButtons[kind == KeyKind::functions ? Tab::functions : Tab::units]->setChecked(true);
    if (m_settings)
        m_settings->setViewPreference(QLatin1String(panelKey),
                                      QString::fromStdString(panelName(kind, groupID)));
}

void KeypadView::closeCatalog() {
    if (!m_catalog)
        return;
    const KeyKind kind = m_catalogKind.value_or(KeyKind::functions);
    m_pages->removeWidget(m_catalog);
    m_catalog->deleteLater();
    m_catalog = nullptr;
    m_catalogKind.reset();
    m_pages->setCurrentWidget(arrangedTab(kind));
    if (m_settings)
        m_settings->setViewPreference(QLatin1String(panelKey), QString());
}

void KeypadView::restorePanel() {
    if (!m_settings)
        return;
    const std::string panel =
        m_settings->viewPreference(QLatin1String(panelKey), QString()).toString().toStdString();
    const auto dot = panel.find('.');
    if (dot == std::string::npos)
        return;
    if (const std::optional<KeyKind> kind = keyKindFromRaw(panel.substr(0, dot)))
        openCatalog(*kind, panel.substr(dot + 1));
}

void KeypadView::press(const KeyDefinition& key) {
    if (!m_notifications)
        return;
    // The editor and the store act for the active session, which must be this window's.
    if (m_session)
        m_session->activate();
    const KeyNotification notification = notificationFor(key);
    m_notifications->post(notification.name, notification.payload);
}

void KeypadView::updateUndoKeys() {
    const DocumentStore* store = m_session ? m_session->store() : nullptr;
    const UndoCenter* undo = store ? store->undoCenter() : nullptr;
    numberKey("undo")->setEnabled(undo && undo->canUndo());
    numberKey("redo")->setEnabled(undo && undo->canRedo());
}

QList<KeyButton*> KeypadView::namedValueKeys() const {
    return m_names->findChildren<KeyButton*>(Qt::FindDirectChildrenOnly);
}

void KeypadView::updateNamedValues() {
    // One key per name, with the answer of its last line, in the order the names first appear.
    std::vector<std::pair<std::string, std::string>> names;
    if (m_session) {
        for (const NamedValue& value : namedValues(m_session->results())) {
            if (value.isFailure)
                continue;
            const auto known = std::find_if(names.begin(), names.end(),
                                            [&](const auto& entry) { return entry.first == value.name; });
            if (known == names.end())
                names.emplace_back(value.name, value.answer);
            else
                known->second = value.answer;
        }
    }
    const QList<KeyButton*> current = namedValueKeys();
    bool same = int(current.size()) == int(names.size());
    for (int i = 0; same && i < int(names.size()); ++i)
        same = current[i]->key().id == names[i].first &&
               current[i]->key().name.english == names[i].first + " = " + names[i].second;
    if (!same) {
        for (KeyButton* button : current)
            delete button;
        while (QLayoutItem* item = m_namesRow->takeAt(0))
            delete item;
        KeypadMetrics chip = m_metrics;
        chip.keyHeight = m_metrics.keyHeight - 8;
        for (const auto& [name, answer] : names) {
            auto* button = new KeyButton(KeyCatalog::namedValueKey(name, answer), chip, m_names);
            const int labelWidth =
                QFontMetrics(button->font()).horizontalAdvance(QString::fromStdString(name));
            button->setFixedSize(std::max(chip.keyWidth, labelWidth + 2 * chip.fontPixels), chip.keyHeight);
            connect(button, &KeyButton::clicked, this, [this, button] { press(button->key()); });
            m_namesRow->addWidget(button);
        }
        m_namesRow->addStretch(1);
    }
    m_namesArea->setVisible(!names.empty());
}

void KeypadView::paintEvent(QPaintEvent* event) {
    // A hairline on the side that faces the sheet.
    QFrame::paintEvent(event);
    QPainter painter(this);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.12f);
    painter.setPen(line);
    const bool onLeft = parentWidget() && mapToParent(QPoint(0, 0)).x() < parentWidget()->width() / 2;
    const int x = onLeft ? width() - 1 : 0;
    painter.drawLine(x, 0, x, height());
}

} // namespace lumo
