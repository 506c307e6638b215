#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lumo {

struct MeasureUnit;
class CountedUnit;

/// Units are immutable and shared: values copy a pointer, not the unit. The count of holders
/// lives in the unit, so that the pointer is one word (every value holds one), and the
/// table's units, which live as long as the program, are not counted at all.
class UnitRef {
public:
    enum class Lifetime { counted, permanent };

    UnitRef() = default;
    UnitRef(std::nullptr_t) {}
    UnitRef(const UnitRef& other) : m_unit(other.m_unit) { retain(); }
    UnitRef(UnitRef&& other) noexcept : m_unit(std::exchange(other.m_unit, nullptr)) {}
    UnitRef& operator=(UnitRef other) noexcept {
        std::swap(m_unit, other.m_unit);
        return *this;
    }
    ~UnitRef() { release(); }

    /// Shares a unit just made.
    static UnitRef make(MeasureUnit unit, Lifetime lifetime = Lifetime::counted);

    const MeasureUnit* get() const;
    const MeasureUnit& operator*() const { return *get(); }
    const MeasureUnit* operator->() const { return get(); }
    explicit operator bool() const { return m_unit != nullptr; }
    friend bool operator==(const UnitRef& a, const UnitRef& b) { return a.m_unit == b.m_unit; }
    friend bool operator==(const UnitRef& a, std::nullptr_t) { return a.m_unit == nullptr; }

private:
    void retain() const;
    void release();

    const CountedUnit* m_unit = nullptr;
};

/// A unit with its dimensions, its factor and offset to the base unit, and, for compound
/// units, the table units it is made of.
struct MeasureUnit {
    struct Component {
        UnitRef unit;
        int exponent = 1;
    };

    std::string symbol;
    std::string display;
    std::map<std::string, int> dimensions; // dimension key -> exponent; no zero exponents
    double factor = 1;
    double offset = 0;
    bool tight = false;
    std::vector<Component> components; // empty for a table unit

    /// Canonical text of the dimensions, e.g. "length^1·time^-1"; equal signatures convert.
    std::string signature() const;
    bool sameDimensions(const MeasureUnit& other) const { return dimensions == other.dimensions; }

    bool operator==(const MeasureUnit& other) const;
};

/// A unit with the count of its holders, as UnitRef shares it.
class CountedUnit : public MeasureUnit {
public:
    CountedUnit(MeasureUnit unit, UnitRef::Lifetime lifetime)
        : MeasureUnit(std::move(unit)), m_permanent(lifetime == UnitRef::Lifetime::permanent) {}

    void retain() const {
        if (!m_permanent)
            m_holders.fetch_add(1, std::memory_order_relaxed);
    }
    /// True when the last holder let go.
    bool release() const { return !m_permanent && m_holders.fetch_sub(1, std::memory_order_acq_rel) == 1; }

private:
    mutable std::atomic<std::uint32_t> m_holders{0};
    const bool m_permanent;
};

inline const MeasureUnit* UnitRef::get() const {
    return m_unit;
}
inline void UnitRef::retain() const {
    if (m_unit)
        m_unit->retain();
}
inline void UnitRef::release() {
    if (m_unit && m_unit->release())
        delete m_unit;
    m_unit = nullptr;
}
inline UnitRef UnitRef::make(MeasureUnit unit, Lifetime lifetime) {
    UnitRef shared;
    shared.m_unit = new CountedUnit(std::move(unit), lifetime);
    shared.retain();
    return shared;
}

/// Two optional units are equal when both are absent or both describe the same unit.
bool sameUnit(const UnitRef& a, const UnitRef& b);

/// The result of multiplying or dividing two units: the new unit (absent when everything
/// cancelled) and the factor by which the product or quotient of the numbers is multiplied.
struct CombinedUnit {
    UnitRef unit;
    double factor = 1;
};

/// Hashes strings and string views alike, so that a map keyed by strings is searched with a
/// view and no copy.
struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

/// The fixed table of known units, built once on first use.
class UnitRegistry {
public:
    static const UnitRegistry& shared();

    /// Exact spelling lookup of a symbol or alias ("mm", "ミリ", "km/h", "°C").
    UnitRef lookup(std::string_view name) const;
    /// Products, quotients and powers of table units ("N/mm2", "kN/mm²", "mm^2", "kN·m").
    UnitRef parseCompound(std::string_view name) const;
    /// lookup, then parseCompound.
    UnitRef find(std::string_view name) const;

    /// Every symbol and alias the table knows (for catalogs and tests).
    std::vector<std::string> allNames() const;

    /// A unit of the table with every name it goes by, its symbol first.
    struct TableUnit {
        UnitRef unit;
        std::vector<std::string> names;
    };
    /// The table in its own order: the simple units, then those made of them (m², km/h).
    const std::vector<TableUnit>& tableUnits() const { return m_table; }

private:
    UnitRegistry();
    std::unordered_map<std::string, UnitRef, TextHash, std::equal_to<>> m_byName;
    std::vector<TableUnit> m_table;
};

/// The lexer's and parser's "is this a known unit?" question.
bool isKnownUnit(std::string_view name);

/// Converts x from one unit to another of the same dimensions, with factor and offset.
/// The dimensions must match; callers check with sameDimensions first and say why they differ.
double convert(double x, const MeasureUnit& from, const MeasureUnit& to);

/// Multiplies (exponentSign +1) or divides (-1) two optional units.
CombinedUnit combineUnits(const UnitRef& left, const UnitRef& right, int exponentSign);

/// Raises a unit to a whole power (|power| <= 9 is checked by the caller). Units with an
/// offset can't be raised; the caller reports that.
CombinedUnit raiseUnit(const UnitRef& unit, int power);

} // namespace lumo
