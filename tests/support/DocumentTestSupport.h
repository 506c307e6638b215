#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "LumoKit/document/Document.h"

namespace lumo::test {

/// Sheets named by one hex digit: sheet 'A' has the identifier AAAAAAAA-AAAA-….
inline Uuid idOf(char letter) {
    std::string text(36, letter);
    for (std::size_t hyphen : {8, 13, 18, 23})
        text[hyphen] = '-';
    return *Uuid::fromString(text);
}

inline Sheet sheet(char letter, double updatedAt, std::string text = "") {
    return Sheet{idOf(letter), std::string(1, letter), std::move(text), Timestamp{updatedAt}, {}};
}

inline LumoDocument document(std::vector<Sheet> sheets, std::map<std::string, Timestamp> tombstones = {},
                             std::optional<double> orderTime = std::nullopt) {
    LumoDocument d;
    d.sheets = std::move(sheets);
    d.deletedSheets = std::move(tombstones);
    if (orderTime)
        d.sheetOrderUpdatedAt = Timestamp{*orderTime};
    return d;
}

/// A tombstone for sheet `letter`, deleted at `at`.
inline std::pair<std::string, Timestamp> tomb(char letter, double at) {
    return {idOf(letter).toString(), Timestamp{at}};
}

} // namespace lumo::test
