#pragma once

#include <QString>

#include <chrono>
#include <functional>

#include "LumoKit/document/Timestamp.h"
#include "LumoUI/persistence/DocumentPersistence.h"

namespace lumo {

/// Where the document store's document comes from.
enum class StoreSource {
    file,    ///< the local file, or the starter document when there is none
    sample,  ///< in memory with the sample document ("-lumoFixture")
    starter, ///< in memory with the starter document ("-lumoStarter")
};

/// Where the store evaluates sheets.
enum class StoreEvaluation {
    synchronous, ///< inside the edit that asked for it, so results are there when it returns
    background,  ///< on worker threads; the latest results arrive later on the main thread
};

/// How a document store is set up; DocumentStore::Options names the same type.
struct DocumentStoreOptions {
    StoreSource source = StoreSource::file;
    /// The folder of the local "document.json"; empty when nothing is saved locally.
    QString storageDirectory;
    /// The folder kept in step by a sync client; empty when there is no cloud copy.
    QString cloudFolder;
    std::chrono::milliseconds saveDelay = DocumentPersistence::defaultSaveDelay;
    std::chrono::milliseconds mergeDelay = DocumentPersistence::defaultMergeDelay;
    /// The store's notion of now; the system clock when empty.
    std::function<Timestamp()> clock;
    /// The application evaluates in the background, so typing never waits for a slow sheet.
    StoreEvaluation evaluation = StoreEvaluation::synchronous;
};

} // namespace lumo
