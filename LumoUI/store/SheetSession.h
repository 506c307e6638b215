#pragma once

#include <QObject>
#include <QPointer>

#include <optional>
#include <vector>

#include "LumoKit/document/Document.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoUI/store/SharedResults.h"

namespace lumo {

class DocumentStore;

/// What one window shows: a sheet of the shared document and that sheet's results. The store
/// holds sessions weakly; a window owns its session.
class SheetSession : public QObject {
    Q_OBJECT

public:
    /// Registers with `store`, showing the document's selected sheet.
    explicit SheetSession(DocumentStore* store, QObject* parent = nullptr);

    DocumentStore* store() const { return m_store; }
    const std::optional<Uuid>& sheetID() const { return m_sheetID; }
    const std::vector<LineResult>& results() const { return *m_results; }
    const SharedResults& sharedResults() const { return m_results; }

    /// Shows another sheet; the store evaluates it.
    void showSheet(const Uuid& sheetID);
    /// Makes this the session of the key window.
    void activate();

signals:
    void sheetIDChanged();
    void resultsChanged();

private:
    friend class DocumentStore;
    friend class ResultRouter;
    void assignSheet(std::optional<Uuid> sheetID);
    void assignResults(SharedResults results);

    QPointer<DocumentStore> m_store;
    std::optional<Uuid> m_sheetID;
    SharedResults m_results = noResults();
};

} // namespace lumo
