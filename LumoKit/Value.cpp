#include "Value.h"

#include "Language.h"

namespace lumo {

Value Value::plain(double number) { Value v; v.number = number; return v; }
Value Value::withUnit(double number, UnitRef unit) { Value v; v.number = number; v.unit = std::move(unit); return v; }
Value Value::percent(double figure) { Value v; v.number = figure; v.isPercent = true; return v; }
Value Value::list(std::vector<Value> items) { Value v; v.kind = Kind::list; v.items = std::move(items); return v; }
Value Value::makeText(std::string text) { Value v; v.kind = Kind::text; v.text = std::move(text); return v; }

bool Value::operator==(const Value& other) const
{
    return kind == other.kind && number == other.number && sameUnit(unit, other.unit) && isPercent == other.isPercent
        && items == other.items && text == other.text;
}

std::string kindName(const Value&) { return {}; }
Value withoutPercent(const Value& value) { return value; }
Value add(const Value& left, const Value&) { return left; }
Value subtract(const Value& left, const Value&) { return left; }
Value multiply(const Value& left, const Value&) { return left; }
Value divide(const Value& left, const Value&) { return left; }
Value power(const Value& base, const Value&) { return base; }
AlignedNumbers alignUnits(const Value& left, const Value& right) { return {left.number, right.number, left.unit}; }
void throwKindMismatch(const Value&, const Value&, std::string_view op) { throw CalcError(std::string(op)); }
void throwKindMismatch(const Value&, const Value&, std::string_view op, std::string_view)
{
    throw CalcError(std::string(op));
}

} // namespace lumo
