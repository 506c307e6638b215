#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "LumoUI/keypad/KeyDefinition.h"

namespace lumo {

/// The tabs whose keys the user arranges. The raw values ("functions", "units") are the kinds
/// of the stored layouts, "lumo.keyLayout.<kind>".
enum class KeyKind { functions, units };

const std::vector<KeyKind>& allKeyKinds();
std::string_view rawValue(KeyKind kind);
std::optional<KeyKind> keyKindFromRaw(std::string_view raw);

/// Where a key of the number tab sits. The grid has ten half columns, so that a row can hold
/// five full keys or the six narrow cursor keys beside a wide return key.
struct KeyPlace {
    std::string id;
    int row = 0;
    int column = 0;
    int rowSpan = 1;
    int columnSpan = 2;
};

/// Every key the keypad offers. The function tab is built from the engine's built-in functions
/// and program words, the unit tab from the unit table, grouped by dimension.
namespace KeyCatalog {

const std::vector<KeyDefinition>& numberKeys();
const std::vector<KeyPlace>& numberPad();
const KeyDefinition* numberKey(std::string_view id);

const std::vector<KeyGroup>& functionGroups();
const std::vector<KeyGroup>& unitGroups();
const std::vector<KeyGroup>& groups(KeyKind kind);
const KeyGroup* group(KeyKind kind, std::string_view groupID);

/// The "in" key of the unit tab, which converts what precedes it.
const KeyDefinition& conversionKey();

/// A key that inserts the name of one of the sheet's values; `answer` is what its line shows.
KeyDefinition namedValueKey(const std::string& name, const std::string& answer);

} // namespace KeyCatalog

} // namespace lumo
