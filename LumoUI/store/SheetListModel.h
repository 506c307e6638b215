#pragma once

#include <QAbstractListModel>
#include <QPointer>
#include <QStringList>

#include <optional>
#include <vector>

#include "LumoKit/document/Uuid.h"

namespace lumo {

class DocumentStore;

/// The document's sheets in document order, one row each, for the tab bar and the sidebar of a
/// window. Both views of a window share one model so they cannot disagree. The model follows
/// the store: edits from other windows and merged remote copies move, insert and remove rows in
/// place, so selections and the current row in the views survive them.
///
/// Renaming through setData() trims the name and refuses an empty one. A drag carries the
/// sheet's identifier under sheetIDMimeType, and a drop, from this window or another, moves that
/// sheet to the place it was dropped.
class SheetListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { sheetIDRole = Qt::UserRole + 1 };
    static constexpr auto sheetIDMimeType = "application/x-lumo-sheet-id";

    explicit SheetListModel(DocumentStore* store, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    /// Moves one sheet (views moving a row within themselves use this rather than a drop).
    bool moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                  const QModelIndex& destinationParent, int destinationChild) override;

    /// The sheet on a row, or none for a row out of range.
    std::optional<Uuid> sheetID(int row) const;
    /// The row of a sheet, or -1.
    int rowOf(const Uuid& sheetID) const;
    QModelIndex indexOf(const Uuid& sheetID) const;
    /// The sheet a drag carries, if the data holds one.
    static std::optional<Uuid> sheetIDFrom(const QMimeData* data);

signals:
    /// A sheet was dropped on this model's views (and moved there).
    void sheetDropped(const lumo::Uuid& sheetID);

private:
    struct Row {
        Uuid id;
        QString name;
    };

    // Brings the rows in line with the document with the fewest changes: removals, then moves,
    // then insertions, then renamed rows.
    void follow();

    QPointer<DocumentStore> m_store;
    std::vector<Row> m_rows;
};

} // namespace lumo
