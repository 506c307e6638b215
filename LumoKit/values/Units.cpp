#include "LumoKit/values/Units.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <utility>

#include "LumoKit/base/CalcError.h"

namespace lumo {

namespace {

using Dimensions = std::map<std::string, int>;
using Components = std::vector<MeasureUnit::Component>;

// Exponents beyond this are surely runaway loops; refusing them keeps display strings and
// factors bounded.
constexpr int maxUnitExponent = 1000;
// The caches below are cleared when they grow past this many entries.
constexpr std::size_t maxCacheEntries = 4096;

const Dimensions length{{"length", 1}};
const Dimensions mass{{"mass", 1}};
const Dimensions time{{"time", 1}};
const Dimensions data{{"data", 1}};
const Dimensions temperature{{"temperature", 1}};
const Dimensions angle{{"angle", 1}};
const Dimensions area{{"length", 2}};
const Dimensions volume{{"length", 3}};
const Dimensions force{{"mass", 1}, {"length", 1}, {"time", -2}};
const Dimensions pressure{{"mass", 1}, {"length", -1}, {"time", -2}};

// 255.372222222222… K, computed rather than written out: the rounded decimal leaves
// 32 °F a hair below 0 °C, which would show as -1.7e-13.
constexpr double fahrenheitOffset = 273.15 - 32 * (5.0 / 9.0);

enum class Spacing { spaced, tight };

// A unit of the table. The first name is the symbol and the display; the rest are aliases.
struct UnitRow {
    std::vector<std::string> names;
    Dimensions dimensions;
    double factor;
    double offset = 0;
    Spacing spacing = Spacing::spaced;
};

// A table entry made of other table units; its factor follows from its components.
struct CompoundRow {
    std::vector<std::string> names;
    std::vector<std::pair<std::string, int>> components;
};

const std::vector<UnitRow>& unitRows() {
    static const std::vector<UnitRow> rows{
        {{"mm", "ミリ"}, length, 0.001},
        {{"cm", "センチ"}, length, 0.01},
        {{"m", "メートル"}, length, 1},
        {{"km"}, length, 1000},
        {{"in", "inch", "inches", "インチ"}, length, 0.0254},
        {{"ft", "feet", "foot", "フィート"}, length, 0.3048},
        {{"yd", "yard", "yards", "ヤード"}, length, 0.9144},
        {{"mi", "mile", "miles", "マイル"}, length, 1609.344},
        {{"nmi", "海里"}, length, 1852},
        {{"mg", "ミリグラム"}, mass, 0.000001},
        {{"g", "グラム"}, mass, 0.001},
        {{"kg", "キログラム"}, mass, 1},
        {{"t", "ton", "tons", "トン"}, mass, 1000},
        {{"oz", "ounce", "オンス"}, mass, 0.028349523125},
        {{"lb", "lbs", "pound", "ポンド"}, mass, 0.45359237},
        {{"ms", "ミリ秒"}, time, 0.001},
        {{"s", "sec", "secs", "second", "seconds", "秒"}, time, 1},
        {{"min", "mins", "minute", "minutes", "分"}, time, 60},
        {{"h", "hr", "hrs", "hour", "hours", "時間"}, time, 3600},
        {{"day", "days", "日", "日間"}, time, 86400},
        {{"week", "weeks", "週", "週間"}, time, 604800},
        {{"month", "months", "ヶ月", "カ月", "か月"}, time, 2629800},
        {{"year", "years", "年"}, time, 31557600},
        {{"B", "byte", "bytes", "バイト"}, data, 1},
        {{"KB", "kb"}, data, 1000},
        {{"MB", "mb"}, data, 1000000},
        {{"GB", "gb"}, data, 1000000000},
        {{"TB", "tb"}, data, 1000000000000},
        {{"KiB"}, data, 1024},
        {{"MiB"}, data, 1048576},
        {{"GiB"}, data, 1073741824},
        {{"°C", "℃", "C", "celsius", "摂氏"}, temperature, 1, 273.15, Spacing::tight},
        {{"°F", "℉", "F", "fahrenheit", "華氏"}, temperature, 5.0 / 9.0, fahrenheitOffset, Spacing::tight},
        {{"K", "kelvin"}, temperature, 1},
        {{"deg", "°", "度"}, angle, 0.017453292519943295},
        {{"rad", "radian", "ラジアン"}, angle, 1},
        {{"ha", "ヘクタール"}, area, 10000},
        {{"are", "アール"}, area, 100},
        {{"坪", "tsubo"}, area, 400.0 / 121.0, 0, Spacing::tight},
        {{"畳", "jo"}, area, 1.62, 0, Spacing::tight},
        {{"acre", "acres", "エーカー"}, area, 4046.8564224},
        {{"gal", "gallon", "ガロン"}, volume, 0.003785411784},
        {{"ml", "mL", "cc"}, volume, 0.000001},
        {{"l", "L", "liter", "litre", "リットル"}, volume, 0.001},
        {{"kgf"}, force, 9.80665},
        {{"tf", "tonf"}, force, 9806.65},
        {{"N", "ニュートン"}, force, 1},
        {{"kN"}, force, 1000},
        {{"MN"}, force, 1000000},
        {{"Pa", "パスカル"}, pressure, 1},
        {{"hPa", "ヘクトパスカル"}, pressure, 100},
        {{"kPa"}, pressure, 1000},
        {{"MPa"}, pressure, 1000000},
        {{"GPa"}, pressure, 1000000000},
        {{"円", "yen", "JPY", "¥", "￥"}, {{"currency.JPY", 1}}, 1, 0, Spacing::tight},
        {{"USD", "$", "ドル"}, {{"currency.USD", 1}}, 1, 0, Spacing::tight},
        {{"EUR", "€", "ユーロ"}, {{"currency.EUR", 1}}, 1, 0, Spacing::tight},
    };
    return rows;
}

const std::vector<CompoundRow>& compoundRows() {
    static const std::vector<CompoundRow> rows{
        {{"mm²", "mm2"}, {{"mm", 2}}},
        {{"cm²", "cm2"}, {{"cm", 2}}},
        {{"m²", "m2", "平米"}, {{"m", 2}}},
        {{"km²", "km2"}, {{"km", 2}}},
        {{"mm³", "mm3"}, {{"mm", 3}}},
        {{"cm³", "cm3"}, {{"cm", 3}}},
        {{"m³", "m3"}, {{"m", 3}}},
        {{"mm⁴", "mm4"}, {{"mm", 4}}},
        {{"cm⁴", "cm4"}, {{"cm", 4}}},
        {{"m/s", "mps"}, {{"m", 1}, {"s", -1}}},
        {{"km/h", "kph", "キロ毎時"}, {{"km", 1}, {"h", -1}}},
        {{"mph"}, {{"mi", 1}, {"h", -1}}},
        {{"knot", "knots", "ノット"}, {{"nmi", 1}, {"h", -1}}},
    };
    return rows;
}

std::string superscript(int exponent) {
    static const char* const digits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    std::string out = exponent < 0 ? "⁻" : "";
    for (char c : std::to_string(std::abs(exponent)))
        out += digits[c - '0'];
    return out;
}

std::string componentText(const MeasureUnit::Component& component, int exponent) {
    return exponent == 1 ? component.unit->display : component.unit->display + superscript(exponent);
}

std::string joinComponents(const Components& components, int sign) {
    std::string out;
    for (const auto& component : components) {
        if (!out.empty())
            out += "·";
        out += componentText(component, component.exponent * sign);
    }
    return out;
}

// "kN·m", "kN/mm²", "kg/(m·s²)", and "s⁻¹" when nothing is above the line.
std::string displayOf(const Components& components) {
    Components above, below;
    for (const auto& component : components)
        (component.exponent > 0 ? above : below).push_back(component);
    if (above.empty())
        return joinComponents(below, 1);
    std::string out = joinComponents(above, 1);
    if (below.size() == 1)
        out += "/" + joinComponents(below, -1);
    else if (below.size() > 1)
        out += "/(" + joinComponents(below, -1) + ")";
    return out;
}

Dimensions dimensionsOf(const Components& components) {
    Dimensions out;
    for (const auto& component : components) {
        for (const auto& [key, exponent] : component.unit->dimensions)
            out[key] += exponent * component.exponent;
    }
    std::erase_if(out, [](const auto& entry) { return entry.second == 0; });
    return out;
}

double factorOf(const Components& components) {
    double factor = 1;
    for (const auto& component : components)
        factor *= std::pow(component.unit->factor, component.exponent);
    return factor;
}

// A compound unit is spelled out by its components; a table unit is its own single one.
Components componentsOf(const UnitRef& unit) {
    if (!unit)
        return {};
    if (!unit->components.empty())
        return unit->components;
    return {{unit, 1}};
}

std::string internKey(const Components& components) {
    std::string key;
    for (const auto& component : components)
        key += component.unit->symbol + "^" + std::to_string(component.exponent) + ";";
    return key;
}

void checkExponent(int exponent) {
    if (std::abs(exponent) > maxUnitExponent)
        throw CalcError(MessageKind::cannotCalculateResult);
}

UnitRef makeCompound(const Components& components, std::string name,
                     UnitRef::Lifetime lifetime = UnitRef::Lifetime::counted) {
    MeasureUnit unit;
    unit.symbol = std::move(name);
    unit.display = unit.symbol;
    unit.dimensions = dimensionsOf(components);
    unit.factor = factorOf(components);
    unit.components = components;
    // A compound reads as tight when its leading unit does: 1200円/kg, 3000円/坪.
    auto leading = std::find_if(components.begin(), components.end(),
                                [](const auto& component) { return component.exponent > 0; });
    if (leading == components.end())
        leading = components.begin();
    unit.tight = leading != components.end() && leading->unit->tight;
    return UnitRef::make(std::move(unit), lifetime);
}

// Compound units are interned, so equal compounds share one object and the combination
// cache below finds them again by pointer.
class CompoundInterner {
public:
    // Table compounds stay for good; only units made on the way are ever dropped.
    void seed(const Components& components, UnitRef unit) {
        std::lock_guard lock(m_mutex);
        m_seeded[internKey(components)] = std::move(unit);
    }

    UnitRef intern(const Components& components) {
        if (components.empty())
            return nullptr;
        if (components.size() == 1 && components.front().exponent == 1)
            return components.front().unit;
        std::string key = internKey(components);
        std::lock_guard lock(m_mutex);
        if (auto it = m_seeded.find(key); it != m_seeded.end())
            return it->second;
        if (auto it = m_units.find(key); it != m_units.end())
            return it->second;
        if (m_units.size() > maxCacheEntries)
            m_units.clear();
        UnitRef unit = makeCompound(components, displayOf(components));
        m_units.emplace(std::move(key), unit);
        return unit;
    }

private:
    std::mutex m_mutex;
    std::unordered_map<std::string, UnitRef> m_seeded;
    std::unordered_map<std::string, UnitRef> m_units;
};

CompoundInterner& interner() {
    static CompoundInterner instance;
    return instance;
}

// Adds one component into a list, merging with a component of the same unit, or else of the
// same dimensions (whose scale difference goes into the factor). Merging by dimension keeps
// the unit that is already there, so the units the user wrote first survive.
enum class MergeRule { sameUnitOnly, sameDimensions };

void mergeComponent(Components& components, const MeasureUnit::Component& incoming, MergeRule rule,
                    double& factor) {
    for (auto& present : components) {
        if (present.unit == incoming.unit || *present.unit == *incoming.unit) {
            present.exponent += incoming.exponent;
            checkExponent(present.exponent);
            return;
        }
    }
    if (rule == MergeRule::sameDimensions) {
        for (auto& present : components) {
            if (present.unit->sameDimensions(*incoming.unit)) {
                factor *= std::pow(incoming.unit->factor / present.unit->factor, incoming.exponent);
                present.exponent += incoming.exponent;
                checkExponent(present.exponent);
                return;
            }
        }
    }
    checkExponent(incoming.exponent);
    components.push_back(incoming);
}

void dropCancelled(Components& components) {
    std::erase_if(components, [](const auto& component) { return component.exponent == 0; });
}

// Turns merged components into the combined unit; a dimensionless remainder (l/m³) becomes
// a plain number with its factor.
CombinedUnit finishCombination(Components components, double factor) {
    dropCancelled(components);
    if (components.empty())
        return {nullptr, factor};
    if (dimensionsOf(components).empty())
        return {nullptr, factor * factorOf(components)};
    return {interner().intern(components), factor};
}

CombinedUnit combineUncached(const UnitRef& left, const UnitRef& right, int exponentSign) {
    Components components = componentsOf(left);
    double factor = 1;
    for (auto component : componentsOf(right)) {
        component.exponent *= exponentSign;
        mergeComponent(components, component, MergeRule::sameDimensions, factor);
    }
    return finishCombination(std::move(components), factor);
}

struct CombinationKey {
    const MeasureUnit* left;
    const MeasureUnit* right;
    int sign;
    bool operator==(const CombinationKey&) const = default;
};

struct CombinationKeyHash {
    std::size_t operator()(const CombinationKey& key) const {
        std::size_t h = std::hash<const void*>()(key.left);
        h = h * 31 + std::hash<const void*>()(key.right);
        return h * 31 + static_cast<std::size_t>(key.sign + 1);
    }
};

// Every multiplication of two values with units combines their units, so results are cached
// by the units' addresses. Each entry holds both operands, which keeps the addresses from
// being reused by other units while the entry lives.
class CombinationCache {
public:
    CombinedUnit combine(const UnitRef& left, const UnitRef& right, int sign) {
        CombinationKey key{left.get(), right.get(), sign};
        {
            std::lock_guard lock(m_mutex);
            if (auto it = m_entries.find(key); it != m_entries.end())
                return it->second.result;
        }
        CombinedUnit result = combineUncached(left, right, sign);
        std::lock_guard lock(m_mutex);
        if (m_entries.size() > maxCacheEntries)
            m_entries.clear();
        m_entries.emplace(key, Entry{left, right, result});
        return result;
    }

private:
    struct Entry {
        UnitRef left;
        UnitRef right;
        CombinedUnit result;
    };
    std::mutex m_mutex;
    std::unordered_map<CombinationKey, Entry, CombinationKeyHash> m_entries;
};

CombinationCache& combinationCache() {
    static CombinationCache instance;
    return instance;
}

// Splits "mm^2", "s²", "s⁻²", "mm2" into the unit name and its exponent. Without a written
// exponent the whole text is the name and the exponent is 1.
bool splitExponent(std::string_view term, std::string_view& name, int& exponent) {
    static const std::vector<std::string_view> superscripts = {"⁰", "¹", "²", "³", "⁴",
                                                               "⁵", "⁶", "⁷", "⁸", "⁹"};
    name = term;
    exponent = 1;
    if (auto caret = term.find('^'); caret != std::string_view::npos) {
        std::string_view digits = term.substr(caret + 1);
        int sign = 1;
        if (!digits.empty() && digits.front() == '-') {
            sign = -1;
            digits.remove_prefix(1);
        }
        if (digits.size() != 1 || digits.front() < '1' || digits.front() > '9')
            return false;
        name = term.substr(0, caret);
        exponent = sign * (digits.front() - '0');
        return true;
    }
    for (std::size_t i = 1; i < superscripts.size(); ++i) {
        if (!term.ends_with(superscripts[i]))
            continue;
        name = term.substr(0, term.size() - superscripts[i].size());
        exponent = static_cast<int>(i);
        if (name.ends_with("⁻")) {
            name.remove_suffix(std::string_view("⁻").size());
            exponent = -exponent;
        }
        return true;
    }
    if (term.size() > 1 && term.back() >= '1' && term.back() <= '9') {
        name = term.substr(0, term.size() - 1);
        exponent = term.back() - '0';
    }
    return true;
}

// Splits a compound name at "/", "*", "·" and "⋅". Every term after the first "/" is below
// the line, so "kg/m·s²" reads as kg/(m·s²).
struct Term {
    std::string_view text;
    int sign;
};

std::vector<Term> splitTerms(std::string_view name) {
    static const std::vector<std::string_view> separators = {"/", "*", "·", "⋅"};
    std::vector<Term> terms;
    int sign = 1;
    std::size_t start = 0;
    std::size_t i = 0;
    while (i < name.size()) {
        std::size_t matched = 0;
        for (auto separator : separators) {
            if (name.substr(i).starts_with(separator))
                matched = separator.size();
        }
        if (matched == 0) {
            ++i;
            continue;
        }
        terms.push_back({name.substr(start, i - start), sign});
        if (name[i] == '/')
            sign = -1;
        i += matched;
        start = i;
    }
    terms.push_back({name.substr(start), sign});
    return terms;
}

} // namespace

std::string MeasureUnit::signature() const {
    std::string out;
    for (const auto& [key, exponent] : dimensions) {
        if (!out.empty())
            out += "·";
        out += key + "^" + std::to_string(exponent);
    }
    return out;
}

bool MeasureUnit::operator==(const MeasureUnit& other) const {
    return display == other.display && dimensions == other.dimensions && factor == other.factor &&
           offset == other.offset;
}

bool sameUnit(const UnitRef& a, const UnitRef& b) {
    if (!a || !b)
        return !a && !b;
    return a == b || *a == *b;
}

const UnitRegistry& UnitRegistry::shared() {
    // Never destroyed: its units are not counted, and values may outlive static destruction.
    static const UnitRegistry* const registry = new UnitRegistry;
    return *registry;
}

UnitRegistry::UnitRegistry() {
    for (const auto& row : unitRows()) {
        MeasureUnit made;
        made.symbol = row.names.front();
        made.display = made.symbol;
        made.dimensions = row.dimensions;
        made.factor = row.factor;
        made.offset = row.offset;
        made.tight = row.spacing == Spacing::tight;
        // The table lives as long as the program: its units are never counted.
        const UnitRef unit = UnitRef::make(std::move(made), UnitRef::Lifetime::permanent);
        for (const auto& name : row.names)
            m_byName.emplace(name, unit);
        m_table.push_back({unit, row.names});
    }
    for (const auto& row : compoundRows()) {
        Components components;
        for (const auto& [symbol, exponent] : row.components)
            components.push_back({m_byName.at(symbol), exponent});
        UnitRef unit = makeCompound(components, row.names.front(), UnitRef::Lifetime::permanent);
        // Speeds such as 100 mi ÷ 2 h come back under the table's own name (mph).
        interner().seed(components, unit);
        for (const auto& name : row.names)
            m_byName.emplace(name, unit);
        m_table.push_back({unit, row.names});
    }
}

UnitRef UnitRegistry::lookup(std::string_view name) const {
    auto it = m_byName.find(name);
    return it == m_byName.end() ? nullptr : it->second;
}

namespace {

// Reads a product, quotient or power of table units; absent when a term is unknown or
// everything cancels.
UnitRef readCompound(const UnitRegistry& registry, std::string_view name) {
    Components components;
    double unusedFactor = 1;
    for (const auto& term : splitTerms(name)) {
        std::string_view base;
        int exponent = 1;
        UnitRef unit = registry.lookup(term.text);
        if (!unit) {
            if (!splitExponent(term.text, base, exponent) || base.empty())
                return nullptr;
            unit = registry.lookup(base);
        }
        if (!unit)
            return nullptr;
        for (auto component : componentsOf(unit)) {
            component.exponent *= exponent * term.sign;
            mergeComponent(components, component, MergeRule::sameUnitOnly, unusedFactor);
        }
    }
    dropCancelled(components);
    if (components.empty() || dimensionsOf(components).empty())
        return nullptr;
    return interner().intern(components);
}

// The lexer asks whether "N/mm2" is a unit and the conversion reads it again on every run, so
// compound names are read once; unknown names are remembered as absent.
class CompoundNameCache {
public:
    UnitRef find(const UnitRegistry& registry, std::string_view name) {
        {
            std::lock_guard lock(m_mutex);
            if (auto it = m_units.find(name); it != m_units.end())
                return it->second;
        }
        UnitRef unit = readCompound(registry, name);
        std::lock_guard lock(m_mutex);
        if (m_units.size() > maxCacheEntries)
            m_units.clear();
        m_units.emplace(std::string(name), unit);
        return unit;
    }

private:
    std::mutex m_mutex;
    std::unordered_map<std::string, UnitRef, TextHash, std::equal_to<>> m_units;
};

CompoundNameCache& compoundNameCache() {
    static CompoundNameCache instance;
    return instance;
}

} // namespace

UnitRef UnitRegistry::parseCompound(std::string_view name) const {
    // Unit names come from single tokens; anything longer is not worth reading.
    if (name.empty() || name.size() > 64)
        return nullptr;
    return compoundNameCache().find(*this, name);
}

UnitRef UnitRegistry::find(std::string_view name) const {
    if (UnitRef unit = lookup(name))
        return unit;
    return parseCompound(name);
}

std::vector<std::string> UnitRegistry::allNames() const {
    std::vector<std::string> names;
    names.reserve(m_byName.size());
    for (const auto& entry : m_byName)
        names.push_back(entry.first);
    return names;
}

bool isKnownUnit(std::string_view name) {
    return UnitRegistry::shared().find(name) != nullptr;
}

double convert(double x, const MeasureUnit& from, const MeasureUnit& to) {
    if (&from == &to)
        return x;
    const double base = x * from.factor + from.offset;
    return (base - to.offset) / to.factor;
}

// Offset units (°C, °F) inside a product count as degree-sized steps, their offset set aside:
// 20 °C ÷ 10 °C is 2 and W/(m·°C) is a usable unit. Only a unit standing alone keeps its offset.
CombinedUnit combineUnits(const UnitRef& left, const UnitRef& right, int exponentSign) {
    if (!right)
        return {left, 1};
    if (!left && exponentSign > 0)
        return {right, 1};
    return combinationCache().combine(left, right, exponentSign);
}

CombinedUnit raiseUnit(const UnitRef& unit, int power) {
    if (!unit || power == 1)
        return {unit, 1};
    Components components = componentsOf(unit);
    for (auto& component : components) {
        component.exponent *= power;
        checkExponent(component.exponent);
    }
    return finishCombination(std::move(components), 1);
}

} // namespace lumo
