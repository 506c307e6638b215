#include "Units.h"

#include "Language.h"

namespace lumo {

std::string MeasureUnit::signature() const { return {}; }
bool MeasureUnit::operator==(const MeasureUnit& other) const { return symbol == other.symbol; }

bool sameUnit(const UnitRef& a, const UnitRef& b)
{
    if (!a || !b)
        return !a && !b;
    return *a == *b;
}

const UnitRegistry& UnitRegistry::shared()
{
    static const UnitRegistry registry;
    return registry;
}

UnitRegistry::UnitRegistry() = default;

UnitRef UnitRegistry::lookup(std::string_view name) const
{
    auto it = m_byName.find(std::string(name));
    return it == m_byName.end() ? nullptr : it->second;
}

UnitRef UnitRegistry::parseCompound(std::string_view) const { return nullptr; }
UnitRef UnitRegistry::find(std::string_view name) const { return lookup(name); }
std::vector<std::string> UnitRegistry::allNames() const { return {}; }

bool isKnownUnit(std::string_view name) { return UnitRegistry::shared().find(name) != nullptr; }

double convert(double x, const MeasureUnit&, const MeasureUnit&) { return x; }
CombinedUnit combineUnits(const UnitRef& left, const UnitRef&, int) { return {left, 1}; }
CombinedUnit raiseUnit(const UnitRef& unit, int) { return {unit, 1}; }

} // namespace lumo
