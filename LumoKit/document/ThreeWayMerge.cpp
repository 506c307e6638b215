#include "LumoKit/document/ThreeWayMerge.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/base/Messages.h"

namespace lumo {

// MARK: - Clock

namespace {

std::int64_t toMilliseconds(Timestamp time) {
    if (!std::isfinite(time.seconds))
        return 0;
    return std::llround(time.seconds * 1000.0);
}

Timestamp fromMilliseconds(std::int64_t milliseconds) {
    return Timestamp{double(milliseconds) / 1000.0};
}

} // namespace

Timestamp roundedToMilliseconds(Timestamp time) {
    return fromMilliseconds(toMilliseconds(time));
}

Timestamp HybridClock::tick(Timestamp wall) {
    const std::int64_t wallMilliseconds = toMilliseconds(wall);
    const bool seenAny = m_lastMilliseconds != std::numeric_limits<std::int64_t>::min();
    m_lastMilliseconds = seenAny ? std::max(wallMilliseconds, m_lastMilliseconds + 1) : wallMilliseconds;
    return fromMilliseconds(m_lastMilliseconds);
}

void HybridClock::observe(Timestamp time) {
    m_lastMilliseconds = std::max(m_lastMilliseconds, toMilliseconds(time));
}

void HybridClock::observe(const LumoDocument& document) {
    for (const Sheet& sheet : document.sheets)
        observe(sheet.updatedAt);
    for (const auto& [key, date] : document.deletedSheets)
        observe(date);
    for (const auto& date : {document.sheetOrderUpdatedAt, document.keyLayoutsUpdatedAt}) {
        if (date)
            observe(*date);
    }
}

LumoDocument cappedAt(LumoDocument document, Timestamp limit) {
    const auto cap = [&](Timestamp& date) { date = std::min(date, limit); };
    for (Sheet& sheet : document.sheets)
        cap(sheet.updatedAt);
    for (auto& [key, date] : document.deletedSheets)
        cap(date);
    for (auto* date : {&document.sheetOrderUpdatedAt, &document.keyLayoutsUpdatedAt}) {
        if (*date)
            cap(**date);
    }
    return document;
}

// MARK: - Merging

namespace {

using Tombstones = std::map<std::string, Timestamp>;

Tombstones canonicalTombstones(const Tombstones& tombstones) {
    Tombstones canonical;
    for (const auto& [key, date] : tombstones) {
        const auto uuid = Uuid::fromString(key);
        const auto [entry, inserted] = canonical.emplace(uuid ? uuid->toString() : key, date);
        if (!inserted)
            entry->second = std::max(entry->second, date);
    }
    return canonical;
}

std::optional<Timestamp> find(const Tombstones& tombstones, const std::string& key) {
    const auto entry = tombstones.find(key);
    return entry == tombstones.end() ? std::nullopt : std::optional(entry->second);
}

// One copy's sheets by identifier, the first of a repeated identifier winning.
class SheetIndex {
public:
    explicit SheetIndex(const LumoDocument* document) {
        if (!document)
            return;
        for (const Sheet& sheet : document->sheets)
            m_sheets.emplace(sheet.id, &sheet);
    }
    const Sheet* find(const Uuid& id) const {
        const auto entry = m_sheets.find(id);
        return entry == m_sheets.end() ? nullptr : entry->second;
    }

private:
    std::unordered_map<Uuid, const Sheet*> m_sheets;
};

// What a user sees of a sheet; its date is bookkeeping that capping may move.
bool sameContent(const Sheet* first, const Sheet* second) {
    if (!first || !second)
        return first == second;
    return first->name == second->name && first->text == second->text &&
           first->lockedLines == second->lockedLines;
}

enum class Side { local, remote, undecided };

// The side that alone changed since the base; undecided when both or neither did, or there is
// no base.
template <typename T>
Side soleChange(bool hasBase, const T& local, const T& remote, const T& base, bool same(const T&, const T&)) {
    if (!hasBase)
        return Side::undecided;
    const bool localSame = same(local, base);
    const bool remoteSame = same(remote, base);
    if (localSame != remoteSame)
        return localSame ? Side::remote : Side::local;
    return Side::undecided;
}

bool sameSheet(const Sheet* const& first, const Sheet* const& second) {
    return sameContent(first, second);
}

template <typename T> bool equal(const T& first, const T& second) {
    return first == second;
}

// The later of two versions of one sheet; on equal dates the greater content, so that every
// device picks the same one.
bool remoteWins(const Sheet& local, const Sheet& remote) {
    if (local.updatedAt != remote.updatedAt)
        return remote.updatedAt > local.updatedAt;
    return std::tie(remote.text, remote.name, remote.lockedLines) >
           std::tie(local.text, local.name, local.lockedLines);
}

// The conflict copy of a sheet gets an identifier derived from what it holds, so two devices that
// find the same conflict make the same sheet.
Uuid conflictIdentifier(const Sheet& loser) {
    std::uint64_t first = 0xcbf29ce484222325ULL;
    std::uint64_t second = 0x84222325cbf29ce4ULL;
    const auto mix = [&](unsigned char byte) {
        first = (first ^ byte) * 0x100000001b3ULL;
        second = (second ^ byte) * 0x100000001b3ULL + 0x9E3779B97F4A7C15ULL;
    };
    for (const std::uint8_t byte : loser.id.bytes())
        mix(byte);
    for (const char c : loser.text)
        mix(static_cast<unsigned char>(c));
    std::array<std::uint8_t, 16> bytes{};
    for (std::size_t i = 0; i < 8; ++i) {
        bytes[i] = static_cast<std::uint8_t>(first >> (8 * i));
        bytes[i + 8] = static_cast<std::uint8_t>(second >> (8 * i));
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    return Uuid(bytes);
}

Sheet conflictSheet(const Sheet& loser) {
    Sheet copy = loser;
    copy.id = conflictIdentifier(loser);
    copy.name = Message(MessageKind::conflictCopyName, {loser.name}).text(L10n::resolved());
    return copy;
}

std::vector<Uuid> identifiers(const std::vector<Sheet>& sheets) {
    std::vector<Uuid> ids;
    ids.reserve(sheets.size());
    for (const Sheet& sheet : sheets)
        ids.push_back(sheet.id);
    return ids;
}

struct KeyLayoutState {
    KeyLayouts layouts;
    std::optional<Timestamp> updatedAt;
    friend bool operator==(const KeyLayoutState&, const KeyLayoutState&) = default;
};

KeyLayoutState keyLayoutState(const LumoDocument& document) {
    return {document.keyLayouts, document.keyLayoutsUpdatedAt};
}

Tombstones mergedTombstones(const LumoDocument& local, const LumoDocument& remote, const LumoDocument& capped,
                            const LumoDocument* base) {
    const Tombstones mine = canonicalTombstones(local.deletedSheets);
    const Tombstones theirs = canonicalTombstones(capped.deletedSheets);
    const Tombstones theirsAsRead = canonicalTombstones(remote.deletedSheets);
    const Tombstones common = base ? canonicalTombstones(base->deletedSheets) : Tombstones{};
    std::set<std::string> keys;
    for (const Tombstones* map : {&mine, &theirs})
        for (const auto& [key, date] : *map)
            keys.insert(key);

    Tombstones merged;
    for (const std::string& key : keys) {
        const auto l = find(mine, key);
        const auto r = find(theirs, key);
        std::optional<Timestamp> kept;
        switch (soleChange<std::optional<Timestamp>>(base != nullptr, l, find(theirsAsRead, key),
                                                     find(common, key), equal)) {
        case Side::remote:
            kept = r;
            break;
        case Side::local:
            kept = l;
            break;
        case Side::undecided:
            kept = std::max(l, r);
            break;
        }
        if (kept)
            merged.emplace(key, *kept);
    }
    return merged;
}

} // namespace

ThreeWayMergeResult threeWayMerged(const LumoDocument& local, const LumoDocument& remote,
                                   const LumoDocument* base, Timestamp now) {
    const LumoDocument capped = cappedAt(remote, now);
    const Tombstones myTombstones = canonicalTombstones(local.deletedSheets);
    const Tombstones theirTombstones = canonicalTombstones(remote.deletedSheets);
    const SheetIndex mine(&local);
    const SheetIndex theirs(&capped);
    const SheetIndex theirsAsRead(&remote);
    const SheetIndex common(base);

    ThreeWayMergeResult result;
    LumoDocument& merged = result.document;
    merged.selectedSheetID = local.selectedSheetID;
    merged.deletedSheets = mergedTombstones(local, remote, capped, base);

    // Each identifier's surviving version, and the conflict copies keyed by their original.
    std::unordered_map<Uuid, Sheet> kept;
    std::vector<std::pair<Uuid, Sheet>> conflicts;
    std::vector<Uuid> seen;
    std::unordered_set<Uuid> known;
    for (const auto* sheets : {&local.sheets, &capped.sheets})
        for (const Sheet& sheet : *sheets)
            if (known.insert(sheet.id).second)
                seen.push_back(sheet.id);

    for (const Uuid& id : seen) {
        const Sheet* l = mine.find(id);
        const Sheet* r = theirs.find(id);
        const Sheet* chosen = nullptr;
        // A sheet leaves a copy only with a tombstone; a copy without either never knew it.
        const std::string key = id.toString();
        Side side =
            soleChange<const Sheet*>(base != nullptr, l, theirsAsRead.find(id), common.find(id), sameSheet);
        // Neither changed what the user sees: the dates follow the copy being synced, so that a
        // date capped on one device is taken by the other instead of being argued back and forth.
        if (base && side == Side::undecided && sameSheet(l, common.find(id)) && sameSheet(r, l))
            side = Side::remote;
        if (!r && !theirTombstones.count(key))
            side = Side::local;
        else if (!l && !myTombstones.count(key))
            side = Side::remote;
        switch (side) {
        case Side::remote:
            chosen = r;
            break;
        case Side::local:
            chosen = l;
            break;
        case Side::undecided: {
            const Sheet* loser = nullptr;
            if (l && r) {
                chosen = remoteWins(*l, *r) ? r : l;
                loser = chosen == r ? l : r;
            } else {
                chosen = l ? l : r;
            }
            // A deletion at or after the surviving edit removes the sheet.
            const auto deletedAt = find(merged.deletedSheets, key);
            if (chosen && deletedAt && *deletedAt >= chosen->updatedAt)
                chosen = nullptr;
            if (chosen && loser && base && loser->text != chosen->text)
                conflicts.emplace_back(id, conflictSheet(*loser));
            break;
        }
        }
        if (chosen)
            kept.emplace(id, *chosen);
    }

    // The order comes from the copy that alone changed it, or else from the later one; equal
    // dates fall back on comparing the orders themselves, so both devices choose alike.
    const auto& l = local.sheetOrderUpdatedAt;
    const auto& r = capped.sheetOrderUpdatedAt;
    Side giver = soleChange<std::optional<Timestamp>>(base != nullptr, l, remote.sheetOrderUpdatedAt,
                                                      base ? base->sheetOrderUpdatedAt : std::nullopt, equal);
    if (giver == Side::undecided) {
        merged.sheetOrderUpdatedAt = std::max(l, r);
        if (l != r)
            giver = r > l ? Side::remote : Side::local;
        else
            giver = identifiers(capped.sheets) > identifiers(local.sheets) ? Side::remote : Side::local;
    } else {
        merged.sheetOrderUpdatedAt = giver == Side::remote ? r : l;
    }
    const LumoDocument& first = giver == Side::remote ? capped : local;
    const LumoDocument& second = giver == Side::remote ? local : capped;
    for (const auto* sheets : {&first.sheets, &second.sheets}) {
        for (const Sheet& sheet : *sheets) {
            const auto entry = kept.find(sheet.id);
            if (entry == kept.end())
                continue;
            merged.sheets.push_back(std::move(entry->second));
            kept.erase(entry);
            for (auto& [original, copy] : conflicts) {
                if (original == sheet.id)
                    merged.sheets.push_back(copy);
            }
        }
    }
    for (const auto& conflict : conflicts) {
        const Sheet& copy = conflict.second;
        const bool placed = std::any_of(merged.sheets.begin(), merged.sheets.end(),
                                        [&](const Sheet& sheet) { return sheet.id == copy.id; });
        if (!placed)
            merged.sheets.push_back(copy);
    }
    result.conflicts = int(conflicts.size());
    // The place of a conflict copy is new order information that every device should take.
    if (!conflicts.empty())
        merged.sheetOrderUpdatedAt = now;

    const KeyLayoutState mineLayouts = keyLayoutState(local);
    const KeyLayoutState theirLayouts = keyLayoutState(capped);
    Side layoutGiver = soleChange<KeyLayoutState>(base != nullptr, mineLayouts, keyLayoutState(remote),
                                                  base ? keyLayoutState(*base) : KeyLayoutState{}, equal);
    if (layoutGiver == Side::undecided) {
        const bool remoteLater = theirLayouts.updatedAt != mineLayouts.updatedAt
                                     ? theirLayouts.updatedAt > mineLayouts.updatedAt
                                     : theirLayouts.layouts > mineLayouts.layouts;
        layoutGiver = remoteLater ? Side::remote : Side::local;
    }
    const KeyLayoutState& layouts = layoutGiver == Side::remote ? theirLayouts : mineLayouts;
    merged.keyLayouts = layouts.layouts;
    merged.keyLayoutsUpdatedAt = layouts.updatedAt;

    const Timestamp cutoff{now.seconds - tombstoneLifetimeSeconds};
    std::erase_if(merged.deletedSheets, [&](const auto& entry) { return entry.second <= cutoff; });

    if (merged.sheets.empty()) {
        merged.sheets.push_back(
            Sheet{Uuid::random(), Message(MessageKind::newSheetName).text(L10n::resolved()), "", now, {}});
        merged.selectedSheetID = merged.sheets.front().id;
    }
    return result;
}

NormalizedDocument normalizedWithTwins(const LumoDocument& document, Timestamp now) {
    NormalizedDocument result{document.normalized(now), {}};
    result.twins = twinsRemoved(document, result.document);
    return result;
}

std::map<Uuid, Uuid> twinsRemoved(const LumoDocument& before, const LumoDocument& after) {
    std::map<Uuid, Uuid> twins;
    const SheetIndex remaining(&after);
    for (const Sheet& sheet : before.sheets) {
        if (remaining.find(sheet.id))
            continue;
        const auto twin = std::find_if(after.sheets.begin(), after.sheets.end(), [&](const Sheet& kept) {
            return kept.name == sheet.name && kept.text == sheet.text;
        });
        if (twin != after.sheets.end())
            twins.emplace(sheet.id, twin->id);
    }
    return twins;
}

} // namespace lumo
