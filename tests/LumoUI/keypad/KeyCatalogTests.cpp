#include <gtest/gtest.h>

#include <QGuiApplication>

#include <map>
#include <memory>
#include <set>
#include <stdexcept>

#include "LumoKit/values/builtins/Builtins.h"
#include "LumoKit/values/Units.h"
#include "LumoUI/keypad/KeyCatalog.h"
#include "support/QtTestSupport.h"

using namespace lumo;

namespace {

const auto* const environment =
    ::testing::AddGlobalTestEnvironment(new lumo::test::GuiEnvironment("KeyCatalogTests"));

// Which group of a tab holds a key, or "" when none does.
std::string groupOf(KeyKind kind, const std::string& keyID) {
    for (const KeyGroup& group : KeyCatalog::groups(kind)) {
        if (group.key(keyID))
            return group.id;
    }
    return "";
}

const KeyDefinition& keyOf(KeyKind kind, const std::string& keyID) {
    const KeyGroup* group = KeyCatalog::group(kind, groupOf(kind, keyID));
    if (!group)
        throw std::runtime_error("no key " + keyID);
    return *group->key(keyID);
}

TEST(KeyCatalog, EveryBuiltinFunctionHasADescribedKey) {
    for (const std::string& function : builtinFunctionNames()) {
        SCOPED_TRACE(function);
        const std::string group = groupOf(KeyKind::functions, function);
        ASSERT_FALSE(group.empty());
        const KeyDefinition& key = keyOf(KeyKind::functions, function);
        // A function the keypad does not know yet is named after itself.
        EXPECT_NE(key.name.english, function);
        EXPECT_NE(key.description.japanese, key.description.english);
        EXPECT_EQ(key.snippet.text, function + "()");
        EXPECT_EQ(key.snippet.caretBack, 1);
    }
}

TEST(KeyCatalog, EveryTableUnitHasOneKeyInItsDimensionsGroup) {
    std::map<std::string, int> keys;
    for (const KeyGroup& group : KeyCatalog::unitGroups()) {
        EXPECT_FALSE(group.keys.empty()) << group.id;
        for (const KeyDefinition& key : group.keys)
            ++keys[key.id];
    }
    for (const auto& entry : UnitRegistry::shared().tableUnits())
        EXPECT_EQ(keys[entry.unit->symbol], 1) << entry.unit->symbol;
    EXPECT_EQ(keys.size(), UnitRegistry::shared().tableUnits().size());

    const std::pair<const char*, const char*> expected[] = {
        {"mm", "length"},    {"in", "length"},      {"坪", "area"},    {"畳", "area"},    {"m²", "area"},
        {"l", "volume"},     {"kg", "mass"},        {"month", "time"}, {"km/h", "speed"}, {"kN", "force"},
        {"MPa", "pressure"}, {"°C", "temperature"}, {"deg", "angle"},  {"GiB", "data"},   {"円", "currency"},
        {"USD", "currency"}, {"mm⁴", "other"},
    };
    for (const auto& [unit, group] : expected)
        EXPECT_EQ(groupOf(KeyKind::units, unit), group) << unit;
}

TEST(KeyCatalog, UnitDescriptionsComeFromTheTable) {
    const std::pair<const char*, const char*> expected[] = {
        {"mm", "1 mm = 0.001 m; also ミリ"},
        {"km/h", "1 km/h = 0.2777777778 m/s; also kph, キロ毎時"},
        {"°C", "0°C = 273.15 K; also ℃, C, celsius, 摂氏"},
        {"m", "The base unit; also メートル"},
        {"坪", "1坪 = 3.305785124 m²; also tsubo"},
        {"円", "A currency, never converted to another; also yen, JPY, ¥, ￥"},
        {"cm⁴", "1 cm⁴ = 10,000 mm⁴; also cm4"},
    };
    for (const auto& [unit, description] : expected)
        EXPECT_EQ(keyOf(KeyKind::units, unit).description.english, description) << unit;
}

TEST(KeyCatalog, KeyIdentifiersAreUniqueOnEachTab) {
    for (KeyKind kind : allKeyKinds()) {
        std::set<std::string> seen;
        for (const KeyGroup& group : KeyCatalog::groups(kind)) {
            for (const KeyDefinition& key : group.keys)
                EXPECT_TRUE(seen.insert(key.id).second) << key.id;
            for (const std::string& hidden : group.hiddenByDefault)
                EXPECT_NE(group.key(hidden), nullptr) << hidden << " is hidden but not in " << group.id;
        }
    }
}

TEST(KeyCatalog, NumberPadPlacesEveryKeyOnceWithoutOverlap) {
    std::set<std::pair<int, int>> cells;
    std::set<std::string> placed;
    for (const KeyPlace& place : KeyCatalog::numberPad()) {
        ASSERT_NE(KeyCatalog::numberKey(place.id), nullptr) << place.id;
        EXPECT_TRUE(placed.insert(place.id).second) << place.id;
        for (int row = place.row; row < place.row + place.rowSpan; ++row) {
            for (int column = place.column; column < place.column + place.columnSpan; ++column) {
                EXPECT_TRUE(column >= 0 && column < 10) << place.id;
                EXPECT_TRUE(cells.insert({row, column}).second) << place.id << " overlaps";
            }
        }
    }
    EXPECT_EQ(placed.size(), KeyCatalog::numberKeys().size());
}

} // namespace
