#include "LumoCalc/sheets/SheetSidebar.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QToolButton>

#include "LumoCalc/sheets/SheetActions.h"
#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetListModel.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

namespace {

// Rows drawn as in a desktop source list: the window's sheet on a rounded accent, the others
// plain, with air around the names.
class SheetRowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int inset = 6;
    static constexpr int padding = 8;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem item(option);
        initStyleOption(&item, index);
        const QRect pill = item.rect.adjusted(inset, 1, -inset, -1);
        const bool selected = item.state & QStyle::State_Selected;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        if (selected) {
            // The accent stays while the list does not have the focus: it marks the window's sheet.
            painter->setBrush(item.palette.color(QPalette::Active, QPalette::Highlight));
            painter->drawRoundedRect(pill, 5, 5);
        } else if (item.state & QStyle::State_MouseOver) {
            QColor hover = item.palette.color(QPalette::Active, QPalette::Highlight);
            hover.setAlpha(40);
            painter->setBrush(hover);
            painter->drawRoundedRect(pill, 5, 5);
        }
        painter->setPen(
            item.palette.color(QPalette::Active, selected ? QPalette::HighlightedText : QPalette::Text));
        const QRect textRect = pill.adjusted(padding, 0, -padding, 0);
        painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                          item.fontMetrics.elidedText(item.text, Qt::ElideRight, textRect.width()));
        painter->restore();
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        size.setHeight(option.fontMetrics.height() + 12);
        return size;
    }

    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex&) const override {
        editor->setGeometry(option.rect.adjusted(inset, 1, -inset, -1));
    }
};

} // namespace

SheetSidebar::SheetSidebar(SheetListModel* model, SheetActions* actions, NotificationCenter* notifications,
                           QWidget* parent)
    : QWidget(parent), m_model(model), m_actions(actions) {
    setObjectName(QStringLiteral("sheetSidebar"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    auto* header = new QHBoxLayout;
    header->setContentsMargins(10, 6, 4, 2);
    m_title = new QLabel(this);
    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    header->addWidget(m_title, 1);
    m_addButton = new QToolButton(this);
    m_addButton->setObjectName(QStringLiteral("addSheetButton"));
    m_addButton->setText(QStringLiteral("+"));
    m_addButton->setAutoRaise(true);
    m_addButton->setFocusPolicy(Qt::NoFocus);
    connect(m_addButton, &QToolButton::clicked, actions, &SheetActions::addSheet);
    header->addWidget(m_addButton);
    column->addLayout(header);

    m_list = new QListView(this);
    m_list->setObjectName(QStringLiteral("sheetList"));
    m_list->setModel(model);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    // Double-clicks are handled in eventFilter(): the view's own handling misses one whose first
    // click lands on a row that is not current yet.
    m_list->setEditTriggers(QAbstractItemView::EditKeyPressed);
    m_list->viewport()->installEventFilter(this);
    m_list->installEventFilter(this);
    m_list->setDragDropMode(QAbstractItemView::DragDrop);
    m_list->setDefaultDropAction(Qt::MoveAction);
    m_list->setDragDropOverwriteMode(false);
    m_list->setDropIndicatorShown(true);
    m_list->setUniformItemSizes(true);
    m_list->setItemDelegate(new SheetRowDelegate(m_list));
    m_list->setMouseTracking(true);
    m_list->viewport()->setAttribute(Qt::WA_Hover);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->setAttribute(Qt::WA_MacShowFocusRect, false);
    column->addWidget(m_list, 1);

    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) {
                if (m_following)
                    return;
                const std::optional<Uuid> id = m_model->sheetID(current.row());
                if (!id)
                    return;
                // Switched once the view is done with the click: switching sheets in the middle
                // of a press keeps a double-click on another row from renaming it.
                QMetaObject::invokeMethod(
                    this, [this, sheet = *id] { m_actions->show(sheet); }, Qt::QueuedConnection);
            });
    connect(m_list, &QWidget::customContextMenuRequested, this, [this](const QPoint& position) {
        const QModelIndex index = m_list->indexAt(position);
        const std::optional<Uuid> id = m_model->sheetID(index.row());
        QMenu* menu = nullptr;
        if (id) {
            menu = m_actions->contextMenu(
                *id, [this, sheet = *id] { m_list->edit(m_model->indexOf(sheet)); }, this);
        } else {
            menu = new QMenu(this);
            menu->setAttribute(Qt::WA_DeleteOnClose);
            menu->addAction(pickText("新規シート", "New Sheet"), m_actions, &SheetActions::addSheet);
        }
        menu->popup(m_list->viewport()->mapToGlobal(position));
    });
    connect(actions->session(), &SheetSession::sheetIDChanged, this, &SheetSidebar::showCurrentSheet);
    connect(model, &QAbstractItemModel::rowsInserted, this, &SheetSidebar::showCurrentSheet);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &SheetSidebar::showCurrentSheet);
    connect(model, &QAbstractItemModel::rowsMoved, this, &SheetSidebar::showCurrentSheet);

    if (notifications)
        notifications->observe(notification::languageChanged, this, [this] { retranslate(); });
    retranslate();
    showCurrentSheet();
}

bool SheetSidebar::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_list->viewport() && event->type() == QEvent::MouseButtonDblClick) {
        auto* click = static_cast<QMouseEvent*>(event);
        const QModelIndex index = m_list->indexAt(click->position().toPoint());
        if (click->button() == Qt::LeftButton && index.isValid()) {
            // The sheet is shown first, so that showing it does not end the editing.
            m_list->setCurrentIndex(index);
            if (const std::optional<Uuid> id = m_model->sheetID(index.row()))
                m_actions->show(*id);
            m_list->edit(index);
            return true;
        }
        if (click->button() == Qt::LeftButton) {
            // Below the last row, as on the tab bar, a double-click adds a sheet.
            m_actions->addSheet();
            return true;
        }
    }
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const std::optional<Uuid> id = m_model->sheetID(m_list->currentIndex().row());
        if ((key == Qt::Key_Delete || key == Qt::Key_Backspace) && id) {
            m_actions->askToDelete(*id);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void SheetSidebar::showCurrentSheet() {
    const std::optional<Uuid>& shown = m_actions->session()->sheetID();
    const QModelIndex index = shown ? m_model->indexOf(*shown) : QModelIndex();
    if (index == m_list->currentIndex() && m_list->selectionModel()->isSelected(index))
        return;
    m_following = true;
    m_list->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_following = false;
}

void SheetSidebar::retranslate() {
    m_title->setText(pickText("シート", "Sheets"));
    m_addButton->setToolTip(pickText("新規シート", "New Sheet"));
    m_addButton->setAccessibleName(m_addButton->toolTip());
    m_list->setAccessibleName(m_title->text());
}

} // namespace lumo
