// The unit tab: every unit of the engine's table, grouped by what it measures. The units, their
// names and factors come from the table; this file only says which dimension makes which group
// and which units start in the catalog.

#include <algorithm>
#include <functional>

#include "LumoKit/language/Keywords.h"
#include "LumoKit/values/Units.h"
#include "LumoKit/values/ValueFormatter.h"
#include "LumoUI/keypad/KeyCatalog.h"

namespace lumo {

namespace {

using Dimensions = std::map<std::string, int>;

struct DimensionGroup {
    const char* id;
    KeyText title;
    std::function<bool(const Dimensions&)> holds;
    std::vector<std::string> hidden;
};

std::function<bool(const Dimensions&)> exactly(Dimensions dimensions) {
    return [dimensions = std::move(dimensions)](const Dimensions& unit) { return unit == dimensions; };
}

bool isCurrency(const Dimensions& dimensions) {
    return dimensions.size() == 1 && dimensions.begin()->first.starts_with("currency.");
}

const std::vector<DimensionGroup>& dimensionGroups() {
    static const std::vector<DimensionGroup> groups{
        {"length", {"長さ", "Length"}, exactly({{"length", 1}}), {"nmi"}},
        {"area", {"面積", "Area"}, exactly({{"length", 2}}), {"are", "acre"}},
        {"volume", {"体積", "Volume"}, exactly({{"length", 3}}), {"mm³", "gal"}},
        {"mass", {"重さ", "Mass"}, exactly({{"mass", 1}}), {"mg", "oz"}},
        {"time", {"時間", "Time"}, exactly({{"time", 1}}), {"ms"}},
        {"speed", {"速さ", "Speed"}, exactly({{"length", 1}, {"time", -1}}), {}},
        {"force", {"力", "Force"}, exactly({{"mass", 1}, {"length", 1}, {"time", -2}}), {"MN", "tf"}},
        {"pressure",
         {"圧力", "Pressure"},
         exactly({{"mass", 1}, {"length", -1}, {"time", -2}}),
         {"hPa", "GPa"}},
        {"temperature", {"温度", "Temperature"}, exactly({{"temperature", 1}}), {}},
        {"angle", {"角度", "Angle"}, exactly({{"angle", 1}}), {}},
        {"data", {"データ量", "Data"}, exactly({{"data", 1}}), {"TB", "KiB", "MiB", "GiB"}},
        {"currency", {"通貨", "Currency"}, isCurrency, {}},
        // Second moments of area (mm⁴) and whatever else the table learns.
        {"other", {"その他", "Other"}, [](const Dimensions&) { return true; }, {}},
    };
    return groups;
}

std::string format(double number, const UnitRef& unit) {
    EvaluationOptions options;
    options.maxFractionDigits = 10;
    return ValueFormatter::format(Value::withUnit(number, unit), options);
}

std::string joined(const std::vector<std::string>& names, std::size_t from) {
    std::string out;
    for (std::size_t i = from; i < names.size(); ++i)
        out += (out.empty() ? "" : ", ") + names[i];
    return out;
}

// "1 mm = 0.001 m", "0 °C = 273.15 K", "Base unit"; then the other names it goes by.
KeyText describe(const UnitRegistry::TableUnit& entry, const UnitRef& reference, const KeyText& groupTitle) {
    const MeasureUnit& unit = *entry.unit;
    KeyText text;
    if (isCurrency(unit.dimensions)) {
        text = {"通貨（ほかの通貨には換算しません）", "A currency, never converted to another"};
    } else if (reference != entry.unit) {
        const double amount = unit.offset != 0 ? 0 : 1;
        const std::string sentence =
            format(amount, entry.unit) + " = " + format(convert(amount, unit, *reference), reference);
        text = {sentence, sentence};
    } else if (unit.factor == 1 && unit.offset == 0) {
        text = {groupTitle.japanese + "の基準の単位", "The base unit"};
    }
    if (entry.names.size() > 1) {
        const std::string aliases = joined(entry.names, 1);
        text.japanese += (text.japanese.empty() ? "" : "。") + aliases + " とも書けます";
        text.english += (text.english.empty() ? "Also " : "; also ") + aliases;
    }
    return text;
}

// The name a key types: the symbol, unless the symbol is also a word of the language ("in"
// converts), in which case the first other name that is not.
const std::string& typedName(const UnitRegistry::TableUnit& entry) {
    const auto plain = std::find_if(entry.names.begin(), entry.names.end(),
                                    [](const std::string& name) { return !keywords::isReservedWord(name); });
    return plain == entry.names.end() ? entry.names.front() : *plain;
}

KeyDefinition unitKey(const UnitRegistry::TableUnit& entry, const UnitRef& reference,
                      const KeyText& groupTitle) {
    KeyDefinition key;
    key.id = entry.unit->symbol;
    key.label = typedName(entry);
    key.name = {key.label, key.label};
    key.description = describe(entry, reference, groupTitle);
    key.snippet = snippetOf(key.label);
    key.style = KeyStyle::unit;
    return key;
}

std::vector<KeyGroup> buildUnitGroups() {
    const auto& table = UnitRegistry::shared().tableUnits();
    std::vector<KeyGroup> groups;
    for (const DimensionGroup& dimension : dimensionGroups()) {
        std::vector<const UnitRegistry::TableUnit*> members;
        for (const auto& entry : table) {
            const auto first =
                std::find_if(dimensionGroups().begin(), dimensionGroups().end(),
                             [&](const DimensionGroup& g) { return g.holds(entry.unit->dimensions); });
            if (first->id == std::string_view(dimension.id))
                members.push_back(&entry);
        }
        if (members.empty())
            continue;
        // Amounts are described in the unit that counts one base unit (m, kg, s, m², N …), or
        // in the group's first unit when none does.
        UnitRef reference = members.front()->unit;
        for (const auto* entry : members) {
            if (entry->unit->factor == 1 && entry->unit->offset == 0) {
                reference = entry->unit;
                break;
            }
        }
        if (isCurrency(reference->dimensions))
            reference = nullptr;
        KeyGroup group{dimension.id, dimension.title, {}, dimension.hidden};
        for (const auto* entry : members)
            group.keys.push_back(unitKey(*entry, reference, dimension.title));
        groups.push_back(std::move(group));
    }
    return groups;
}

} // namespace

const std::vector<KeyGroup>& KeyCatalog::unitGroups() {
    static const std::vector<KeyGroup> groups = buildUnitGroups();
    return groups;
}

} // namespace lumo
