#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "LumoKit/document/DocumentJson.h"
#include "LumoUI/persistence/DocumentFile.h"
#include "LumoUI/store/DocumentStore.h"

namespace lumo::test {

constexpr double startSeconds = 1'700'000'000;

inline const Uuid sheetX = *Uuid::fromString("AAAAAAAA-0000-4000-8000-000000000001");
inline const Uuid sheetY = *Uuid::fromString("AAAAAAAA-0000-4000-8000-000000000002");

/// Whole seconds, as the file stores them, so that copies compare equal after a round trip.
struct FakeClock {
    double seconds = startSeconds;
    std::function<Timestamp()> function() {
        return [this] { return Timestamp{seconds}; };
    }
};

/// Sheets X ("1\n") and Y ("2\n"), X selected.
inline LumoDocument baseDocument(Timestamp at = Timestamp{startSeconds}) {
    LumoDocument document;
    document.sheets = {{sheetX, "X", "1\n", at, {}}, {sheetY, "Y", "2\n", at, {}}};
    document.selectedSheetID = sheetX;
    return document;
}

inline void writeDocument(const QString& path, const LumoDocument& document) {
    ASSERT_TRUE(
        documentFile::writeAtomically(path, QByteArray::fromStdString(encodeDocument(document))).isEmpty());
}

inline LumoDocument readDocument(const QString& path) {
    return decodeDocument(documentFile::read(path).value_or(QByteArray()).toStdString());
}

inline std::vector<std::string> sortedNames(const LumoDocument& document) {
    std::vector<std::string> names;
    for (const Sheet& sheet : document.sheets)
        names.push_back(sheet.name);
    std::sort(names.begin(), names.end());
    return names;
}

/// The same sheets, whatever their order.
inline bool sameSheets(const LumoDocument& a, const LumoDocument& b) {
    auto sorted = [](std::vector<Sheet> sheets) {
        std::sort(sheets.begin(), sheets.end(), [](const Sheet& l, const Sheet& r) { return l.id < r.id; });
        return sheets;
    };
    return sorted(a.sheets) == sorted(b.sheets);
}

/// A store that syncs through `cloudFolder` with short delays, so that tests run on the real
/// event loop.
inline DocumentStore::Options
syncingOptions(const QString& storageDirectory, const QString& cloudFolder, std::function<Timestamp()> clock,
               std::chrono::milliseconds saveDelay = std::chrono::milliseconds(40),
               std::chrono::milliseconds mergeDelay = std::chrono::milliseconds(30)) {
    DocumentStore::Options options;
    options.storageDirectory = storageDirectory;
    options.cloudFolder = cloudFolder;
    options.saveDelay = saveDelay;
    options.mergeDelay = mergeDelay;
    options.clock = std::move(clock);
    return options;
}

} // namespace lumo::test
