#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "LumoKit/document/Timestamp.h"
#include "LumoKit/document/Uuid.h"

namespace lumo {

/// One named page of calculation text.
struct Sheet {
    Uuid id;
    std::string name;
    std::string text;
    /// Last change of name, text or locked lines; the merge compares it.
    Timestamp updatedAt;
    /// Zero-based line numbers the user has locked.
    std::vector<std::int64_t> lockedLines;

    friend bool operator==(const Sheet&, const Sheet&) = default;
};

/// Keypad layouts as the key layout store keeps them: layout → tab → key identifiers.
using KeyLayouts = std::map<std::string, std::map<std::string, std::vector<std::string>>>;

/// The persisted document: sheets in tab order plus what merging two copies needs.
struct LumoDocument {
    std::vector<Sheet> sheets;
    std::optional<Uuid> selectedSheetID;
    /// Tombstones: the deleted sheet's canonical identifier → the moment of deletion.
    std::map<std::string, Timestamp> deletedSheets;
    KeyLayouts keyLayouts;
    std::optional<Timestamp> keyLayoutsUpdatedAt;
    std::optional<Timestamp> sheetOrderUpdatedAt;

    friend bool operator==(const LumoDocument&, const LumoDocument&) = default;

    /// This document merged with another copy of it (self wins ties): tombstones are
    /// united, the later edit of each sheet is kept, a deletion at or after a sheet's
    /// last edit removes it, the order and the key layouts come from the copy that
    /// changed them later, tombstones older than 60 days before `now` are dropped, and
    /// an empty result gets one empty "New Sheet".
    LumoDocument merged(const LumoDocument& other, Timestamp now) const;

    /// This document with duplicates removed and the selection repaired. Sheets that
    /// share an identifier collapse into the one with the latest `updatedAt` (the first
    /// on ties), in the place of the first. Sheets with the same name and text collapse
    /// into the one with the earliest `updatedAt` (the smaller identifier on equal dates); the
    /// others get tombstones dated `now`.
    /// A missing or dangling selection becomes the first sheet.
    LumoDocument normalized(Timestamp now) const;
};

/// The interval after which a tombstone is forgotten: 60 days.
inline constexpr double tombstoneLifetimeSeconds = 60.0 * 24 * 60 * 60;

} // namespace lumo
