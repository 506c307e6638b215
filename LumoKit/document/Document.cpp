#include "LumoKit/document/Document.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>

#include "LumoKit/base/Language.h"
#include "LumoKit/base/Messages.h"

namespace lumo {

namespace {

// Tombstone keys are compared in canonical form, so a lower-case key from a hand-edited
// file still matches its sheet.
std::string canonicalTombstoneKey(const std::string& key) {
    const auto uuid = Uuid::fromString(key);
    return uuid ? uuid->toString() : key;
}

void recordTombstone(std::map<std::string, Timestamp>& tombstones, const std::string& key, Timestamp date) {
    const auto [entry, inserted] = tombstones.emplace(canonicalTombstoneKey(key), date);
    if (!inserted && entry->second < date)
        entry->second = date;
}

std::map<std::string, Timestamp> unitedTombstones(const std::map<std::string, Timestamp>& first,
                                                  const std::map<std::string, Timestamp>& second) {
    std::map<std::string, Timestamp> united;
    for (const auto& [key, date] : first)
        recordTombstone(united, key, date);
    for (const auto& [key, date] : second)
        recordTombstone(united, key, date);
    return united;
}

bool isDeleted(const Sheet& sheet, const std::map<std::string, Timestamp>& tombstones) {
    const auto entry = tombstones.find(sheet.id.toString());
    return entry != tombstones.end() && entry->second >= sheet.updatedAt;
}

// Every identifier of the order-giving copy in its order, then those only the other copy
// has, in that copy's order.
std::vector<Uuid> mergedOrder(const std::vector<Sheet>& primary, const std::vector<Sheet>& secondary) {
    std::vector<Uuid> order;
    std::unordered_map<Uuid, bool> seen;
    for (const auto* sheets : {&primary, &secondary}) {
        for (const Sheet& sheet : *sheets) {
            if (seen.emplace(sheet.id, true).second)
                order.push_back(sheet.id);
        }
    }
    return order;
}

Sheet replacementSheet(Timestamp now) {
    return Sheet{Uuid::random(), Message(MessageKind::newSheetName).text(L10n::resolved()), "", now, {}};
}

std::string contentKey(const Sheet& sheet) {
    std::string key = sheet.name;
    key += '\0';
    key += sheet.text;
    return key;
}

// Sheets sharing an identifier would make every later lookup ambiguous. The latest edit
// survives, in the place of the first occurrence.
std::vector<Sheet> withUniqueIdentifiers(const std::vector<Sheet>& sheets) {
    std::vector<Sheet> unique;
    std::unordered_map<Uuid, std::size_t> indexOfId;
    for (const Sheet& sheet : sheets) {
        const auto [entry, inserted] = indexOfId.emplace(sheet.id, unique.size());
        if (inserted)
            unique.push_back(sheet);
        else if (sheet.updatedAt > unique[entry->second].updatedAt)
            unique[entry->second] = sheet;
    }
    return unique;
}

} // namespace

LumoDocument LumoDocument::merged(const LumoDocument& other, Timestamp now) const {
    LumoDocument result;
    result.selectedSheetID = selectedSheetID;
    result.deletedSheets = unitedTombstones(deletedSheets, other.deletedSheets);

    std::unordered_map<Uuid, Sheet> newest;
    for (const auto* copy : {&sheets, &other.sheets}) {
        for (const Sheet& sheet : *copy) {
            const auto [entry, inserted] = newest.emplace(sheet.id, sheet);
            if (!inserted && sheet.updatedAt > entry->second.updatedAt)
                entry->second = sheet;
        }
    }

    // std::optional orders an absent date before every present one: the distant past.
    const bool otherOrderIsNewer = other.sheetOrderUpdatedAt > sheetOrderUpdatedAt;
    const auto order =
        otherOrderIsNewer ? mergedOrder(other.sheets, sheets) : mergedOrder(sheets, other.sheets);
    for (const Uuid& id : order) {
        const Sheet& sheet = newest.at(id);
        if (!isDeleted(sheet, result.deletedSheets))
            result.sheets.push_back(sheet);
    }
    result.sheetOrderUpdatedAt = std::max(sheetOrderUpdatedAt, other.sheetOrderUpdatedAt);

    const bool otherLayoutsAreNewer = other.keyLayoutsUpdatedAt > keyLayoutsUpdatedAt;
    result.keyLayouts = otherLayoutsAreNewer ? other.keyLayouts : keyLayouts;
    result.keyLayoutsUpdatedAt = otherLayoutsAreNewer ? other.keyLayoutsUpdatedAt : keyLayoutsUpdatedAt;

    const Timestamp cutoff{now.seconds - tombstoneLifetimeSeconds};
    std::erase_if(result.deletedSheets, [&](const auto& entry) { return entry.second <= cutoff; });

    if (result.sheets.empty()) {
        result.sheets.push_back(replacementSheet(now));
        result.selectedSheetID = result.sheets.front().id;
    }
    return result;
}

LumoDocument LumoDocument::normalized(Timestamp now) const {
    LumoDocument result = *this;
    const std::vector<Sheet> unique = withUniqueIdentifiers(sheets);

    // The earliest copy is the one every device is most likely to have kept as well.
    std::unordered_map<std::string, std::size_t> keeperOfKey;
    for (std::size_t i = 0; i < unique.size(); ++i) {
        const auto [entry, inserted] = keeperOfKey.emplace(contentKey(unique[i]), i);
        // Equal dates fall to the smaller identifier, not the document order, so that devices
        // whose orders differ keep the same sheet.
        const Sheet& keeper = unique[entry->second];
        if (!inserted && std::tie(unique[i].updatedAt, unique[i].id) < std::tie(keeper.updatedAt, keeper.id))
            entry->second = i;
    }

    result.sheets.clear();
    for (std::size_t i = 0; i < unique.size(); ++i) {
        if (keeperOfKey.at(contentKey(unique[i])) == i)
            result.sheets.push_back(unique[i]);
        else
            recordTombstone(result.deletedSheets, unique[i].id.toString(), now);
    }

    const bool selectionExists =
        selectedSheetID && std::any_of(result.sheets.begin(), result.sheets.end(),
                                       [&](const Sheet& sheet) { return sheet.id == *selectedSheetID; });
    if (!selectionExists)
        result.selectedSheetID =
            result.sheets.empty() ? std::nullopt : std::optional<Uuid>(result.sheets.front().id);
    return result;
}

} // namespace lumo
