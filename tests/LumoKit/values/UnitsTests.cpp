#include <gtest/gtest.h>

#include "LumoKit/values/Units.h"
#include "support/EngineTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

UnitRef unit(std::string_view name) {
    return UnitRegistry::shared().find(name);
}

std::string displayOf(const UnitRef& u) {
    return u ? u->display : "";
}

} // namespace

TEST(Units, Conversions) {
    struct Case {
        double x;
        const char* from;
        const char* to;
        double expected;
    };
    const Case cases[] = {
        {100, "°C", "°F", 212},
        {0, "°F", "°C", -17.77777777778},
        {300, "K", "°C", 26.85},
        {1, "month", "s", 2629800},
        {1, "year", "days", 365.25},
        {1, "坪", "m²", 3.305785123967},
        {1, "畳", "m2", 1.62},
        {1, "KiB", "B", 1024},
        {1, "KB", "B", 1000},
        {100, "km/h", "m/s", 27.77777777778},
        {1, "l", "cm³", 1000},
        {1, "MPa", "N/mm2", 1},
        {180, "deg", "rad", 3.14159265359},
        {1, "kN·m", "N*mm", 1000000},
        {1, "m^4", "cm4", 1e8},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.from) + " → " + c.to);
        ASSERT_TRUE(unit(c.from) && unit(c.to));
        EXPECT_DOUBLE_EQ(ValueFormatter::roundSignificant(convert(c.x, *unit(c.from), *unit(c.to))),
                         c.expected);
    }
}

TEST(Units, LookupByExactSpelling) {
    const std::pair<const char*, const char*> cases[] = {
        {"ミリ", "mm"},     {"C", "°C"},    {"celsius", "°C"}, {"B", "B"},    {"kb", "KB"},
        {"kph", "km/h"},    {"平米", "m²"}, {"mm2", "mm²"},    {"$", "USD"},  {"￥", "円"},
        {"ドル", "USD"},    {"€", "EUR"},   {"°", "deg"},      {"分", "min"}, {"リットル", "l"},
        {"ノット", "knot"}, {"c", ""},      {"b", ""},         {"kib", ""},   {"", ""},
        {"Mm", ""},
    };
    for (const auto& [name, display] : cases)
        EXPECT_EQ(displayOf(UnitRegistry::shared().lookup(name)), display) << name;
    for (const auto& name : UnitRegistry::shared().allNames())
        EXPECT_TRUE(isKnownUnit(name)) << name;
}

TEST(Units, CompoundNames) {
    const std::pair<const char*, const char*> cases[] = {
        {"N/mm2", "N/mm²"}, {"kN/mm²", "kN/mm²"}, {"mm^2", "mm²"},
        {"m/s²", "m/s²"},   {"m/s2", "m/s²"},     {"kN·m", "kN·m"},
        {"kN*m", "kN·m"},   {"kN⋅m", "kN·m"},     {"kg/m·s²", "kg/(m·s²)"},
        {"m^-1", "m⁻¹"},    {"s⁻¹", "s⁻¹"},       {"mm·mm", "mm²"},
        {"円/坪", "円/坪"}, {"m^0", ""},          {"mm^10", ""},
        {"foo/s", ""},      {"m/", ""},           {"/s", ""},
        {"m/m", ""},        {"x2", ""},
    };
    // The second pass reads names already seen, known or not, and must answer alike.
    for (int pass = 0; pass < 2; ++pass) {
        for (const auto& [name, display] : cases)
            EXPECT_EQ(displayOf(UnitRegistry::shared().parseCompound(name)), display) << name << " " << pass;
    }
    EXPECT_EQ(unit("N/mm²")->signature(), unit("MPa")->signature());
    EXPECT_EQ(unit("m/s")->signature(), "length^1·time^-1");
    EXPECT_FALSE(isKnownUnit("a/b"));
}

TEST(Units, CombiningKeepsTheUnitsWritten) {
    struct Case {
        const char* left;
        const char* right;
        int sign;
        const char* display;
        double factor;
    };
    const Case cases[] = {
        {"km/h", "h", 1, "km", 1},      {"km/h", "min", 1, "km", 1.0 / 60}, {"mm", "m", 1, "mm²", 1000},
        {"kN", "mm²", -1, "kN/mm²", 1}, {"kN/mm²", "mm2", 1, "kN", 1},      {"m", "s²", -1, "m/s²", 1},
        {"円/kg", "kg", 1, "円", 1},    {"mi", "h", -1, "mph", 1},          {"°C", "°C", -1, "", 1},
        {"°F", "K", -1, "", 5.0 / 9},   {"l", "m³", -1, "", 0.001},         {"", "s", -1, "s⁻¹", 1},
        {"USD", "円", -1, "USD/円", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.left) + (c.sign > 0 ? " × " : " ÷ ") + c.right);
        const CombinedUnit combined = combineUnits(unit(c.left), unit(c.right), c.sign);
        EXPECT_EQ(displayOf(combined.unit), c.display);
        EXPECT_DOUBLE_EQ(combined.factor, c.factor);
    }
    // Equal compounds come back as one shared object, whichever way they were made.
    EXPECT_EQ(combineUnits(unit("kN"), unit("m"), 1).unit, unit("kN·m"));
    EXPECT_TRUE(sameUnit(combineUnits(unit("km"), unit("h"), -1).unit, unit("kph")));
}

TEST(Units, Powers) {
    const std::tuple<const char*, int, const char*> cases[] = {
        {"mm", 2, "mm²"}, {"km/h", 2, "km²/h²"}, {"m", -1, "m⁻¹"},
        {"m", 0, ""},     {"m²", 9, "m¹⁸"},      {"kN", 1, "kN"},
    };
    for (const auto& [name, power, display] : cases)
        EXPECT_EQ(displayOf(raiseUnit(unit(name), power).unit), display) << name << "^" << power;
    UnitRef runaway = unit("m");
    EXPECT_THROW(for (int i = 0; i < 10; ++i) runaway = raiseUnit(runaway, 9).unit;, CalcError);
}

TEST(Units, TightUnits) {
    for (const char* name : {"°C", "°F", "円", "USD", "EUR", "坪", "畳", "円/kg"})
        EXPECT_TRUE(unit(name)->tight) << name;
    for (const char* name : {"mm", "K", "km/h", "kN/mm²"})
        EXPECT_FALSE(unit(name)->tight) << name;
}
