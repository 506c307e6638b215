#include "LumoCalc/sheets/SheetTabs.h"

#include <QApplication>
#include <QBoxLayout>
#include <QContextMenuEvent>
#include <QDrag>
#include <QFocusEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QShortcut>
#include <QToolButton>

#include "LumoCalc/sheets/SheetActions.h"
#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetListModel.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

SheetTabBar::SheetTabBar(SheetListModel* model, SheetActions* actions, QWidget* parent)
    : QTabBar(parent), m_model(model), m_actions(actions) {
    setObjectName(QStringLiteral("sheetTabBar"));
    setDocumentMode(true);
    setExpanding(false);
    setElideMode(Qt::ElideRight);
    setUsesScrollButtons(true);
    setAcceptDrops(true);
    setFocusPolicy(Qt::NoFocus);

    m_nameEditor = new QLineEdit(this);
    m_nameEditor->setObjectName(QStringLiteral("sheetNameEditor"));
    m_nameEditor->hide();
    connect(m_nameEditor, &QLineEdit::returnPressed, this, &SheetTabBar::finishRenaming);
    m_nameEditor->installEventFilter(this);
    auto* cancel =
        new QShortcut(QKeySequence(Qt::Key_Escape), m_nameEditor, nullptr, nullptr, Qt::WidgetShortcut);
    connect(cancel, &QShortcut::activated, this, [this] {
        m_renaming.reset();
        m_nameEditor->hide();
    });

    connect(m_model, &QAbstractItemModel::rowsInserted, this, &SheetTabBar::rebuild);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &SheetTabBar::rebuild);
    connect(m_model, &QAbstractItemModel::rowsMoved, this, &SheetTabBar::rebuild);
    connect(m_model, &QAbstractItemModel::dataChanged, this, &SheetTabBar::rebuild);
    connect(m_model, &QAbstractItemModel::modelReset, this, &SheetTabBar::rebuild);
    connect(m_actions->session(), &SheetSession::sheetIDChanged, this, &SheetTabBar::showCurrentSheet);
    connect(this, &QTabBar::currentChanged, this, [this](int index) {
        if (m_rebuilding || index < 0)
            return;
        if (const std::optional<Uuid> id = m_model->sheetID(index))
            m_actions->show(*id);
    });
    rebuild();
}

void SheetTabBar::rebuild() {
    m_rebuilding = true;
    const int rows = m_model->rowCount();
    while (count() > rows)
        removeTab(count() - 1);
    while (count() < rows)
        addTab(QString());
    for (int row = 0; row < rows; ++row) {
        const QString name = m_model->index(row).data().toString();
        // A tab's text takes '&' for a mnemonic.
        setTabText(row, QString(name).replace(QLatin1Char('&'), QLatin1String("&&")));
        setTabToolTip(row, name);
        setTabData(row, m_model->index(row).data(SheetListModel::sheetIDRole));
    }
    m_rebuilding = false;
    showCurrentSheet();
}

void SheetTabBar::showCurrentSheet() {
    const std::optional<Uuid>& shown = m_actions->session()->sheetID();
    const int row = shown ? m_model->rowOf(*shown) : -1;
    if (row < 0 || row == currentIndex())
        return;
    m_rebuilding = true;
    setCurrentIndex(row);
    m_rebuilding = false;
}

void SheetTabBar::startRenaming(int index) {
    const std::optional<Uuid> id = m_model->sheetID(index);
    if (!id)
        return;
    m_renaming = id;
    m_nameEditor->setGeometry(tabRect(index).adjusted(2, 2, -2, -2));
    m_nameEditor->setText(m_model->index(index).data(Qt::EditRole).toString());
    m_nameEditor->selectAll();
    m_nameEditor->show();
    m_nameEditor->setFocus(Qt::OtherFocusReason);
}

void SheetTabBar::finishRenaming() {
    if (!m_renaming)
        return;
    const Uuid id = *m_renaming;
    m_renaming.reset();
    m_nameEditor->hide();
    // An empty name is refused by the model and the tab keeps its name.
    m_model->setData(m_model->indexOf(id), m_nameEditor->text());
}

bool SheetTabBar::eventFilter(QObject* watched, QEvent* event) {
    // Clicking elsewhere ends the renaming; the window losing its activation (another
    // application, a menu) leaves the editor open, as it does for the sidebar's rows.
    if (watched == m_nameEditor && event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            finishRenaming();
    }
    return QTabBar::eventFilter(watched, event);
}

int SheetTabBar::dropRow(const QPoint& position) const {
    const int tab = tabAt(position);
    if (tab < 0)
        return count() > 0 && position.x() < tabRect(0).left() ? 0 : count();
    return position.x() > tabRect(tab).center().x() ? tab + 1 : tab;
}

void SheetTabBar::mousePressEvent(QMouseEvent* event) {
    QTabBar::mousePressEvent(event);
    if (event->button() == Qt::LeftButton) {
        m_pressPosition = event->position().toPoint();
        m_pressedTab = tabAt(m_pressPosition);
    }
}

void SheetTabBar::mouseMoveEvent(QMouseEvent* event) {
    if (m_pressedTab < 0 || !(event->buttons() & Qt::LeftButton) ||
        (event->position().toPoint() - m_pressPosition).manhattanLength() <
            QApplication::startDragDistance()) {
        QTabBar::mouseMoveEvent(event);
        return;
    }
    QMimeData* carried = m_model->mimeData({m_model->index(m_pressedTab)});
    const QRect tab = tabRect(m_pressedTab);
    m_pressedTab = -1;
    if (!carried)
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(carried);
    drag->setPixmap(grab(tab));
    drag->setHotSpot(m_pressPosition - tab.topLeft());
    drag->exec(Qt::MoveAction, Qt::MoveAction);
}

void SheetTabBar::mouseReleaseEvent(QMouseEvent* event) {
    m_pressedTab = -1;
    QTabBar::mouseReleaseEvent(event);
}

void SheetTabBar::mouseDoubleClickEvent(QMouseEvent* event) {
    const int tab = tabAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && tab >= 0) {
        startRenaming(tab);
        return;
    }
    if (event->button() == Qt::LeftButton && tab < 0) {
        // A double-click on the empty part of the bar adds a sheet, as in most tabbed editors.
        m_actions->addSheet();
        return;
    }
    QTabBar::mouseDoubleClickEvent(event);
}

void SheetTabBar::contextMenuEvent(QContextMenuEvent* event) {
    const std::optional<Uuid> id = m_model->sheetID(tabAt(event->pos()));
    QMenu* menu = nullptr;
    if (id) {
        menu = m_actions->contextMenu(
            *id, [this, sheet = *id] { startRenaming(m_model->rowOf(sheet)); }, this);
    } else {
        menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->addAction(pickText("新規シート", "New Sheet"), m_actions, &SheetActions::addSheet);
    }
    menu->popup(event->globalPos());
}

void SheetTabBar::dragEnterEvent(QDragEnterEvent* event) {
    dragMoveEvent(event);
}

void SheetTabBar::dragMoveEvent(QDragMoveEvent* event) {
    const int row = dropRow(event->position().toPoint());
    if (!m_model->canDropMimeData(event->mimeData(), Qt::MoveAction, row, 0, {})) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::MoveAction);
    event->accept();
    if (m_dropMarker != row) {
        m_dropMarker = row;
        update();
    }
}

void SheetTabBar::dragLeaveEvent(QDragLeaveEvent* event) {
    m_dropMarker = -1;
    update();
    QTabBar::dragLeaveEvent(event);
}

void SheetTabBar::dropEvent(QDropEvent* event) {
    const int row = dropRow(event->position().toPoint());
    m_dropMarker = -1;
    update();
    if (!m_model->canDropMimeData(event->mimeData(), Qt::MoveAction, row, 0, {})) {
        event->ignore();
        return;
    }
    m_model->dropMimeData(event->mimeData(), Qt::MoveAction, row, 0, {});
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void SheetTabBar::paintEvent(QPaintEvent* event) {
    QTabBar::paintEvent(event);
    if (m_dropMarker < 0 || count() == 0)
        return;
    const QRect near = tabRect(std::min(m_dropMarker, count() - 1));
    const int x = m_dropMarker < count() ? near.left() : near.right();
    QPainter painter(this);
    painter.fillRect(QRect(x - 1, near.top() + 3, 3, near.height() - 6),
                     palette().color(QPalette::Highlight));
}

SheetTabs::SheetTabs(SheetListModel* model, SheetActions* actions, NotificationCenter* notifications,
                     QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("sheetTabs"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(4, 2, 4, 0);
    row->setSpacing(2);
    m_tabBar = new SheetTabBar(model, actions, this);
    row->addWidget(m_tabBar, 0, Qt::AlignBottom);
    m_addButton = new QToolButton(this);
    m_addButton->setObjectName(QStringLiteral("addSheetButton"));
    m_addButton->setText(QStringLiteral("+"));
    m_addButton->setAutoRaise(true);
    m_addButton->setFocusPolicy(Qt::NoFocus);
    connect(m_addButton, &QToolButton::clicked, actions, &SheetActions::addSheet);
    row->addWidget(m_addButton, 0, Qt::AlignVCenter);
    row->addStretch(1);
    if (notifications)
        notifications->observe(notification::languageChanged, this, [this] { retranslate(); });
    retranslate();
}

void SheetTabs::retranslate() {
    m_addButton->setToolTip(pickText("新規シート", "New Sheet"));
    m_addButton->setAccessibleName(m_addButton->toolTip());
}

} // namespace lumo
