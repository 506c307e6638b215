#include "LumoKit/values/Value.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Unicode.h"

namespace lumo {

namespace {

// The largest power a value with a unit may be raised to, either way.
constexpr double maxUnitPower = 9;
// Repetition counts are clamped to one past the largest size, which is enough to fail.
constexpr double maxRepeatCount = 100001;
// Texts are measured in characters, but one character may hold any number of combining
// marks; this bound on bytes keeps such texts from growing without limit all the same.
constexpr std::size_t maxTextBytes = maxTextLength * 64;

[[noreturn]] void throwTextTooLong() {
    throw CalcError(MessageKind::textTooLong);
}

[[noreturn]] void throwListTooBig() {
    throw CalcError(MessageKind::listTooBig);
}

// Sums that come out this close to zero relative to their operands are decimal noise:
// 0.1 + 0.2 − 0.3 is 0, not 5.55e-17.
double cancelNoise(double result, double left, double right) {
    const double largest = std::max(std::fabs(left), std::fabs(right));
    if (largest != 0 && std::fabs(result) < largest * 1e-14)
        return 0;
    return result;
}

enum class Sign { plus, minus };

double addOrSubtract(double left, double right, Sign sign) {
    return cancelNoise(sign == Sign::plus ? left + right : left - right, left, right);
}

// Add and subtract share their percent rules and their unit alignment.
Value addNumbers(const Value& left, const Value& right, Sign sign) {
    if (left.isPercent() && right.isPercent())
        return Value::percent(addOrSubtract(left.number, right.number, sign));
    if (right.isPercent()) {
        // 200 + 10% is 220: the percent is taken of the left operand, in its unit.
        const double change = left.number * right.number / 100;
        Value result = left;
        result.number = addOrSubtract(left.number, change, sign);
        return result;
    }
    // Sums of a sheet come through here on every line: the left side is copied only when it
    // is a percent that must become a plain number first.
    const AlignedNumbers aligned =
        left.isPercent() ? alignUnits(withoutPercent(left), right) : alignUnits(left, right);
    return Value::withUnit(addOrSubtract(aligned.left, aligned.right, sign), aligned.unit);
}

[[noreturn]] void throwCannotJoin(const Value& other) {
    throw CalcError(MessageKind::textJoin, {kindName(other)});
}

} // namespace

std::size_t valueWeight(const Value& value, std::size_t limit) {
    if (value.isText())
        return 1 + value.text().size() / 64;
    if (!value.isList())
        return 1;
    std::size_t weight = 1;
    for (const auto& item : value.items()) {
        weight += valueWeight(item, limit);
        if (weight > limit)
            break;
    }
    return weight;
}

Message kindName(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::list:
        return MessageKind::aList;
    case Value::Kind::text:
        return MessageKind::aText;
    case Value::Kind::number:
        break;
    }
    return MessageKind::aNumber;
}

namespace {

Value joinTexts(const Value& left, const Value& right) {
    if (unicode::graphemeCount(left.text()) + unicode::graphemeCount(right.text()) > maxTextLength ||
        left.text().size() + right.text().size() > maxTextBytes)
        throwTextTooLong();
    return Value::makeText(left.text() + right.text());
}

Value joinLists(const Value& left, const Value& right) {
    if (left.items().size() + right.items().size() > maxListItems ||
        valueWeight(left) + valueWeight(right) > maxValueWeight())
        throwListTooBig();
    std::vector<Value> items;
    items.reserve(left.items().size() + right.items().size());
    items.insert(items.end(), left.items().begin(), left.items().end());
    items.insert(items.end(), right.items().begin(), right.items().end());
    return Value::list(std::move(items));
}

std::size_t repeatCount(const Value& repeated, const Value& count) {
    const bool whole = count.isNumber() && !count.unit && std::isfinite(count.number) &&
                       count.number == std::round(count.number);
    if (!whole)
        throw CalcError(MessageKind::repeatCountNotWhole, {kindName(repeated)});
    return static_cast<std::size_t>(std::clamp(count.number, 0.0, maxRepeatCount));
}

// The size limit is checked by division before anything is built, so a huge count never
// overflows or allocates.
Value repeat(const Value& repeated, const Value& countValue) {
    const std::size_t count = repeatCount(repeated, countValue);
    if (repeated.isList()) {
        const std::size_t size = repeated.items().size();
        if (size != 0 && (maxListItems / size < count || maxValueWeight() / valueWeight(repeated) < count))
            throwListTooBig();
        std::vector<Value> items;
        items.reserve(size * count);
        for (std::size_t i = 0; i < count; ++i)
            items.insert(items.end(), repeated.items().begin(), repeated.items().end());
        return Value::list(std::move(items));
    }
    const std::size_t length = unicode::graphemeCount(repeated.text());
    if (length != 0 && (maxTextLength / length < count || maxTextBytes / repeated.text().size() < count))
        throwTextTooLong();
    std::string text;
    text.reserve(repeated.text().size() * count);
    for (std::size_t i = 0; i < count; ++i)
        text += repeated.text();
    return Value::makeText(std::move(text));
}

bool isRepeatable(const Value& value) {
    return value.isList() || value.isText();
}

Value combineNumbers(const Value& left, const Value& right, double number, int exponentSign) {
    const CombinedUnit combined = combineUnits(left.unit, right.unit, exponentSign);
    return Value::withUnit(number * combined.factor, combined.unit);
}

void requireWholeUnitPower(double exponent) {
    // std::round takes halves away from zero, as the rule for unit powers wants.
    if (exponent != std::round(exponent) || std::fabs(exponent) > maxUnitPower)
        throw CalcError(MessageKind::wholePowersOnly);
}

} // namespace

Value Value::plain(double number) {
    Value value;
    value.number = number;
    return value;
}

Value Value::withUnit(double number, UnitRef unit) {
    Value value;
    value.number = number;
    value.unit = std::move(unit);
    return value;
}

Value Value::percent(double figure) {
    Value value;
    value.number = figure;
    value.m_word = percentTag;
    return value;
}

Value Value::list(std::vector<Value> items) {
    Value value;
    value.m_word = listTag;
    if (!items.empty())
        value.hold(new CountedItems{{}, std::move(items)}, listTag);
    return value;
}

Value Value::makeText(std::string text) {
    Value value;
    value.m_word = textTag;
    if (!text.empty())
        value.hold(new CountedText{{}, std::move(text)}, textTag);
    return value;
}

void Value::releasePayload() {
    Counted* held = counted();
    if (held->holders.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    if (isList())
        delete payload<CountedItems>();
    else
        delete payload<CountedText>();
}

// The payload is changed in place only when this value is its one holder.
std::vector<Value>& Value::editItems() {
    assert(isList());
    if (m_word <= tagMask || counted()->holders.load(std::memory_order_acquire) > 1)
        hold(new CountedItems{{}, items()}, listTag);
    return payload<CountedItems>()->items;
}

std::string& Value::editText() {
    assert(isText());
    if (m_word <= tagMask || counted()->holders.load(std::memory_order_acquire) > 1)
        hold(new CountedText{{}, text()}, textTag);
    return payload<CountedText>()->text;
}

bool Value::operator==(const Value& other) const {
    if (kind() != other.kind())
        return false;
    switch (kind()) {
    case Kind::list:
        return items() == other.items();
    case Kind::text:
        return text() == other.text();
    case Kind::number:
        break;
    }
    return number == other.number && isPercent() == other.isPercent() && sameUnit(unit, other.unit);
}

bool isPercentNumber(const Value& value) {
    return value.isPercent();
}

Value withoutPercent(const Value& value) {
    if (!isPercentNumber(value))
        return value;
    return Value::plain(value.number / 100);
}

AlignedNumbers alignUnits(const Value& left, const Value& right) {
    if (!left.isNumber() || !right.isNumber())
        throwKindMismatch(left, right, MessageKind::thisCalculation);
    if (!left.unit || !right.unit)
        return {left.number, right.number, left.unit ? left.unit : right.unit};
    if (!left.unit->sameDimensions(*right.unit)) {
        throw CalcError(MessageKind::unitsNotAddable, {left.unit->display, right.unit->display});
    }
    return {left.number, convert(right.number, *right.unit, *left.unit), left.unit};
}

void throwKindMismatch(const Value& left, const Value& right, Message operation) {
    throw CalcError(MessageKind::kindsNotCombinable, {kindName(left), kindName(right), std::move(operation)});
}

Value add(const Value& left, const Value& right) {
    if (left.isText() && right.isText())
        return joinTexts(left, right);
    if (left.isText() || right.isText())
        throwCannotJoin(left.isText() ? right : left);
    if (left.isList() && right.isList())
        return joinLists(left, right);
    if (!left.isNumber() || !right.isNumber())
        throwKindMismatch(left, right, "+");
    return addNumbers(left, right, Sign::plus);
}

void addInto(Value& left, const Value& right) {
    if (left.isNumber() && right.isNumber() && !left.isPercent() && !right.isPercent() &&
        left.unit == right.unit) {
        left.number = addOrSubtract(left.number, right.number, Sign::plus);
        return;
    }
    left = add(left, right);
}

Value subtract(const Value& left, const Value& right) {
    if (!left.isNumber() || !right.isNumber())
        throwKindMismatch(left, right, "-");
    return addNumbers(left, right, Sign::minus);
}

Value multiply(const Value& left, const Value& right) {
    // Percentages take part as their fractions; everything else is used as it is, uncopied.
    if (isPercentNumber(left) || isPercentNumber(right))
        return multiply(withoutPercent(left), withoutPercent(right));
    if (left.isNumber() && right.isNumber())
        return combineNumbers(left, right, left.number * right.number, 1);
    if (isRepeatable(left) && right.isNumber())
        return repeat(left, right);
    if (left.isNumber() && isRepeatable(right))
        return repeat(right, left);
    throwKindMismatch(left, right, "*");
}

Value divide(const Value& left, const Value& right) {
    if (isPercentNumber(left) || isPercentNumber(right))
        return divide(withoutPercent(left), withoutPercent(right));
    if (!left.isNumber() || !right.isNumber())
        throwKindMismatch(left, right, "/");
    if (right.number == 0)
        throw CalcError(MessageKind::divisionByZero);
    return combineNumbers(left, right, left.number / right.number, -1);
}

Value power(const Value& base, const Value& exponent) {
    if (isPercentNumber(base) || isPercentNumber(exponent))
        return power(withoutPercent(base), withoutPercent(exponent));
    if (!base.isNumber() || !exponent.isNumber())
        throwKindMismatch(base, exponent, "^");
    if (exponent.unit)
        throw CalcError(MessageKind::exponentWithUnit);
    const double result = std::pow(base.number, exponent.number);
    if (!std::isfinite(result))
        throw CalcError(MessageKind::cannotCalculateResult);
    if (!base.unit)
        return Value::plain(result);
    requireWholeUnitPower(exponent.number);
    if (base.unit->offset != 0) {
        throw CalcError(MessageKind::unitNotRaisable, {base.unit->display});
    }
    const CombinedUnit raised = raiseUnit(base.unit, static_cast<int>(exponent.number));
    return Value::withUnit(result * raised.factor, raised.unit);
}

} // namespace lumo
