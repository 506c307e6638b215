#include "LumoCalc/sheets/NamedValuesPanel.h"

#include <QBoxLayout>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QStyledItemDelegate>
#include <QTreeWidget>

#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

namespace {

// Names and answers kept off the panel's edges, with some air between rows.
class InsetCellDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem cell(option);
        cell.rect.adjust(index.column() == 0 ? 10 : 6, 0, index.column() == 0 ? 0 : -10, 0);
        QStyledItemDelegate::paint(painter, cell, index);
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QSize size = QStyledItemDelegate::sizeHint(option, index);
        return {size.width() + 16, size.height() + 8};
    }
};

} // namespace

NamedValuesPanel::NamedValuesPanel(SheetSession* session, NotificationCenter* notifications, QWidget* parent)
    : QWidget(parent), m_session(session), m_notifications(notifications) {
    setObjectName(QStringLiteral("namedValues"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    m_title = new QLabel(this);
    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    m_title->setContentsMargins(10, 8, 8, 4);
    column->addWidget(m_title);

    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("namedValueList"));
    m_list->setColumnCount(2);
    m_list->setHeaderHidden(true);
    m_list->setRootIsDecorated(false);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setUniformRowHeights(true);
    // The panel never scrolls sideways: a long answer is cut short with "…" and shown whole in
    // its tooltip, and names take at most about half of the width.
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->header()->setStretchLastSection(true);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Interactive);
    m_list->viewport()->installEventFilter(this);
    m_list->setCursor(Qt::PointingHandCursor);
    m_list->setIndentation(0);
    m_list->setItemDelegate(new InsetCellDelegate(m_list));
    connect(m_list, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) { insert(item); });
    column->addWidget(m_list, 1);

    m_placeholder = new QLabel(this);
    m_placeholder->setObjectName(QStringLiteral("namedValuesPlaceholder"));
    m_placeholder->setWordWrap(true);
    m_placeholder->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_placeholder->setContentsMargins(10, 4, 10, 8);
    m_placeholder->setForegroundRole(QPalette::PlaceholderText);
    column->addWidget(m_placeholder, 1);

    if (m_session)
        connect(m_session, &SheetSession::resultsChanged, this, &NamedValuesPanel::refresh);
    if (m_notifications)
        m_notifications->observe(notification::languageChanged, this, [this] { retranslate(); });
    retranslate();
    refresh();
}

void NamedValuesPanel::refresh() {
    std::vector<NamedValue> values =
        m_session ? namedValues(m_session->results()) : std::vector<NamedValue>{};
    if (values == m_values && m_list->topLevelItemCount() == int(values.size()))
        return;
    m_values = std::move(values);
    // Rows are reused so that a re-evaluation while the pointer rests on a row does not flicker.
    while (m_list->topLevelItemCount() > int(m_values.size()))
        delete m_list->takeTopLevelItem(m_list->topLevelItemCount() - 1);
    while (m_list->topLevelItemCount() < int(m_values.size()))
        m_list->addTopLevelItem(new QTreeWidgetItem);
    const QColor failureColour = palette().color(QPalette::Disabled, QPalette::Text);
    for (int row = 0; row < int(m_values.size()); ++row) {
        const NamedValue& value = m_values[std::size_t(row)];
        QTreeWidgetItem* item = m_list->topLevelItem(row);
        const QString name = QString::fromStdString(value.name);
        const QString answer = QString::fromStdString(value.answer);
        item->setText(0, name);
        item->setText(1, answer);
        item->setData(0, Qt::UserRole, name);
        item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        item->setToolTip(0, name);
        item->setToolTip(1, answer);
        item->setForeground(1, value.isFailure ? QBrush(failureColour) : QBrush());
        QFont answerFont = item->font(1);
        answerFont.setItalic(value.isFailure);
        item->setFont(1, answerFont);
    }
    m_list->setVisible(!m_values.empty());
    m_placeholder->setVisible(m_values.empty());
    fitNameColumn();
}

void NamedValuesPanel::fitNameColumn() {
    m_list->resizeColumnToContents(0);
    const int widest = m_list->viewport()->width() * 11 / 20;
    if (m_list->columnWidth(0) > widest)
        m_list->setColumnWidth(0, widest);
}

bool NamedValuesPanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_list->viewport() && event->type() == QEvent::Resize)
        fitNameColumn();
    return QWidget::eventFilter(watched, event);
}

void NamedValuesPanel::insert(QTreeWidgetItem* item) {
    if (!item || !m_notifications || !m_session)
        return;
    // The editor takes snippets only in the active window, which is this panel's window.
    m_session->activate();
    m_notifications->post(QString::fromLatin1(notification::insertSnippet),
                          QVariantMap{{QStringLiteral("text"), item->data(0, Qt::UserRole).toString()},
                                      {QStringLiteral("isNamedValue"), true}});
}

void NamedValuesPanel::retranslate() {
    m_title->setText(pickText("名前付きの値", "Named Values"));
    m_list->setAccessibleName(m_title->text());
    m_placeholder->setText(pickText(
        "「価格 = 1200」のように名前を付けた行が、ここに答えと並びます。クリックすると名前を入力します。",
        "Lines you name, such as “price = 1200”, are listed here with their answers. Click a "
        "name to type it."));
}

} // namespace lumo
