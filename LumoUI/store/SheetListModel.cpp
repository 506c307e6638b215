#include "LumoUI/store/SheetListModel.h"

#include <QMimeData>

#include <algorithm>

#include "LumoUI/store/DocumentStore.h"

namespace lumo {

SheetListModel::SheetListModel(DocumentStore* store, QObject* parent)
    : QAbstractListModel(parent), m_store(store) {
    if (!m_store)
        return;
    for (const Sheet& sheet : m_store->document().sheets)
        m_rows.push_back({sheet.id, QString::fromStdString(sheet.name)});
    connect(m_store, &DocumentStore::documentChanged, this, &SheetListModel::follow);
}

int SheetListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant SheetListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Row& row = m_rows[std::size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
    case Qt::ToolTipRole:
        return row.name;
    case sheetIDRole:
        return QString::fromStdString(row.id.toString());
    default:
        return {};
    }
}

bool SheetListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !m_store ||
        !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return false;
    const QString name = value.toString().trimmed();
    if (name.isEmpty())
        return false;
    // The store's change comes back through follow(), which announces the new name.
    m_store->renameSheet(m_rows[std::size_t(index.row())].id, name.toStdString());
    return true;
}

Qt::ItemFlags SheetListModel::flags(const QModelIndex& index) const {
    // Dropping between rows only: a sheet dropped onto another is placed before it instead.
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled |
           Qt::ItemNeverHasChildren;
}

QStringList SheetListModel::mimeTypes() const {
    return {QString::fromLatin1(sheetIDMimeType)};
}

QMimeData* SheetListModel::mimeData(const QModelIndexList& indexes) const {
    // One sheet moves at a time; the first index names it.
    for (const QModelIndex& index : indexes) {
        if (const std::optional<Uuid> id = sheetID(index.row()); id && index.model() == this) {
            auto* data = new QMimeData;
            data->setData(QString::fromLatin1(sheetIDMimeType), QByteArray::fromStdString(id->toString()));
            data->setText(index.data().toString());
            return data;
        }
    }
    return nullptr;
}

Qt::DropActions SheetListModel::supportedDragActions() const {
    return Qt::MoveAction;
}

Qt::DropActions SheetListModel::supportedDropActions() const {
    return Qt::MoveAction;
}

std::optional<Uuid> SheetListModel::sheetIDFrom(const QMimeData* data) {
    if (!data || !data->hasFormat(QString::fromLatin1(sheetIDMimeType)))
        return std::nullopt;
    return Uuid::fromString(data->data(QString::fromLatin1(sheetIDMimeType)).trimmed().toStdString());
}

bool SheetListModel::canDropMimeData(const QMimeData* data, Qt::DropAction action, int, int,
                                     const QModelIndex&) const {
    const std::optional<Uuid> id = sheetIDFrom(data);
    return action == Qt::MoveAction && id && rowOf(*id) >= 0;
}

bool SheetListModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                  const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent) || !m_store)
        return false;
    const Uuid id = *sheetIDFrom(data);
    // The place the sheet is dropped at counts the sheet itself, which leaves its old place.
    int before = row >= 0 ? row : parent.isValid() ? parent.row() : int(m_rows.size());
    const int from = rowOf(id);
    if (before > from)
        --before;
    m_store->moveSheet(id, before);
    emit sheetDropped(id);
    // The move is done; a view must not remove the dragged row as it would after a move
    // between two models.
    return false;
}

bool SheetListModel::moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                              const QModelIndex& destinationParent, int destinationChild) {
    const std::optional<Uuid> id = sheetID(sourceRow);
    if (!m_store || !id || count != 1 || sourceParent.isValid() || destinationParent.isValid() ||
        destinationChild < 0 || destinationChild > int(m_rows.size()))
        return false;
    if (destinationChild == sourceRow || destinationChild == sourceRow + 1)
        return true;
    m_store->moveSheet(*id, destinationChild > sourceRow ? destinationChild - 1 : destinationChild);
    return true;
}

std::optional<Uuid> SheetListModel::sheetID(int row) const {
    if (row < 0 || row >= int(m_rows.size()))
        return std::nullopt;
    return m_rows[std::size_t(row)].id;
}

int SheetListModel::rowOf(const Uuid& sheetID) const {
    const auto found =
        std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return row.id == sheetID; });
    return found == m_rows.end() ? -1 : int(found - m_rows.begin());
}

QModelIndex SheetListModel::indexOf(const Uuid& sheetID) const {
    const int row = rowOf(sheetID);
    return row < 0 ? QModelIndex() : index(row);
}

void SheetListModel::follow() {
    if (!m_store)
        return;
    const std::vector<Sheet>& sheets = m_store->document().sheets;
    const auto inDocument = [&](const Uuid& id) {
        return std::any_of(sheets.begin(), sheets.end(), [&](const Sheet& sheet) { return sheet.id == id; });
    };

    for (int row = int(m_rows.size()) - 1; row >= 0; --row) {
        if (inDocument(m_rows[std::size_t(row)].id))
            continue;
        beginRemoveRows({}, row, row);
        m_rows.erase(m_rows.begin() + row);
        endRemoveRows();
    }

    // The sheets that were already here, in their new order; rows are moved up into place.
    std::vector<Uuid> kept;
    for (const Sheet& sheet : sheets) {
        if (rowOf(sheet.id) >= 0)
            kept.push_back(sheet.id);
    }
    for (int target = 0; target < int(kept.size()); ++target) {
        const int from = rowOf(kept[std::size_t(target)]);
        if (from == target)
            continue;
        beginMoveRows({}, from, from, {}, target);
        Row moved = std::move(m_rows[std::size_t(from)]);
        m_rows.erase(m_rows.begin() + from);
        m_rows.insert(m_rows.begin() + target, std::move(moved));
        endMoveRows();
    }

    for (int row = 0; row < int(sheets.size()); ++row) {
        const Sheet& sheet = sheets[std::size_t(row)];
        const QString name = QString::fromStdString(sheet.name);
        if (row < int(m_rows.size()) && m_rows[std::size_t(row)].id == sheet.id) {
            if (m_rows[std::size_t(row)].name != name) {
                m_rows[std::size_t(row)].name = name;
                emit dataChanged(index(row), index(row), {Qt::DisplayRole, Qt::EditRole, Qt::ToolTipRole});
            }
            continue;
        }
        beginInsertRows({}, row, row);
        m_rows.insert(m_rows.begin() + row, Row{sheet.id, name});
        endInsertRows();
    }
}

} // namespace lumo
