#include "LumoKit/values/Evaluator.h"

#include <array>
#include <atomic>
#include <cmath>
#include <utility>

#include <absl/container/inlined_vector.h>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Overloaded.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/values/builtins/Builtins.h"
#include "LumoKit/values/Units.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

namespace {

UnitRef findUnit(std::string_view name) {
    return UnitRegistry::shared().find(name);
}

[[noreturn]] void throwUnknownUnit(std::string_view name) {
    throw CalcError(MessageKind::unknownUnit, {std::string(name)});
}

[[noreturn]] void throwUndefinedName(std::string_view name) {
    // A lower-case letter that names a unit in upper case (b, k, n, j …) is most likely that unit.
    if (unicode::graphemeCount(name) == 1) {
        const std::string upper = unicode::toUpper(name);
        if (upper != name) {
            if (const UnitRef unit = findUnit(upper)) {
                throw CalcError(MessageKind::undefinedNameLikeUnit,
                                {std::string(name), unit->display, upper});
            }
        }
    }
    throw CalcError(MessageKind::undefinedName, {std::string(name)});
}

bool isOrdering(std::string_view op) {
    return op != "==" && op != "!=";
}

Value boolValue(bool truth) {
    return Value::plain(truth ? 1 : 0);
}

bool compareNumbers(std::string_view op, double a, double b) {
    if (op == "==")
        return a == b;
    if (op == "!=")
        return a != b;
    if (op == "<")
        return a < b;
    if (op == "<=")
        return a <= b;
    if (op == ">")
        return a > b;
    return a >= b;
}

bool orderSays(std::string_view op, int order) {
    if (op == "==")
        return order == 0;
    if (op == "!=")
        return order != 0;
    if (op == "<")
        return order < 0;
    if (op == "<=")
        return order <= 0;
    if (op == ">")
        return order > 0;
    return order >= 0;
}

bool listsEqual(const Value& left, const Value& right) {
    const std::vector<Value>& lefts = left.items();
    const std::vector<Value>& rights = right.items();
    if (lefts.size() != rights.size())
        return false;
    for (std::size_t i = 0; i < lefts.size(); ++i) {
        if (compareValues("==", lefts[i], rights[i]).number == 0)
            return false;
    }
    return true;
}

// Walks one expression tree; holds only the evaluator it serves.
class TreeWalker {
public:
    explicit TreeWalker(const Evaluator& evaluator) : m_evaluator(evaluator) {}

    Value walk(const Expr& expression) const {
        return expression.visit(overloaded{
            [](const expr::Number& node) { return Value::plain(node.value); },
            [](const expr::Text& node) { return Value::makeText(std::string(node.value)); },
            [this](const expr::List& node) { return list(node); },
            [this](const expr::Index& node) {
                const Value target = walk(*node.target);
                return indexValue(target, walk(*node.position));
            },
            [this](const expr::Identifier& node) { return identifier(std::string(node.name)); },
            [this](const expr::Ref& node) { return ref(node.line); },
            [this](const expr::Unary& node) { return unary(node); },
            [this](const expr::Chain& node) { return chain(node); },
            [this](const expr::Percent& node) { return percent(node); },
            [this](const expr::UnitApply& node) {
                return applyUnit(walk(*node.operand), node.operand, node.unit);
            },
            [this](const expr::Measure& node) {
                return applyUnit(Value::plain(node.value), nullptr, node.unit);
            },
            [this](const expr::PoweredMeasure& node) {
                // The product 3 * x^2 it stands for, in the same steps.
                const Value base = identifier(std::string(node.unit->name));
                return multiply(Value::plain(node.value), power(base, Value::plain(node.unit->exponent)));
            },
            [this](const expr::Call& node) { return call(node); },
            [this](const expr::Convert& node) { return convertTo(node); },
            [this](const expr::PercentOf& node) { return percentOf(node); },
        });
    }

private:
    EvalContext& context() const { return m_evaluator.context(); }

    // A list's items and a call's arguments, counted and weighed as they are walked: millions
    // of them are refused before their values take more memory than the line's text could.
    std::vector<Value> walkAll(ExprList nodes) const {
        if (nodes.size() > maxListItems)
            throw CalcError(MessageKind::listTooBig);
        std::vector<Value> values;
        values.reserve(nodes.size());
        std::size_t weight = 1;
        for (const Expr& node : nodes) {
            values.push_back(walk(node));
            weight += valueWeight(values.back());
            if (weight > maxValueWeight())
                throw CalcError(MessageKind::listTooBig);
        }
        return values;
    }

    // A built-in answers first; any other name is asked of the context (user functions).
    Value call(const expr::Call& node) const {
        const std::vector<Value> args = walkAll(node.args);
        const std::string name(node.name);
        if (auto answer = callBuiltin(name, args, m_evaluator.options()))
            return std::move(*answer);
        if (auto answer = context().callUserFunction(name, args))
            return std::move(*answer);
        throw CalcError(MessageKind::noSuchFunction, {name});
    }

    Value list(const expr::List& node) const { return Value::list(walkAll(node.items)); }

    Value identifier(const std::string& name) const {
        if (auto value = context().valueOf(name))
            return std::move(*value);
        if (auto constant = constantValue(name))
            return std::move(*constant);
        if (const UnitRef unit = findUnit(name))
            return Value::withUnit(1, unit);
        throwUndefinedName(name);
    }

    Value ref(std::int64_t line) const {
        if (auto value = context().answerOnLine(line))
            return std::move(*value);
        throw CalcError(MessageKind::lineNotFound, {std::to_string(line)});
    }

    Value unary(const expr::Unary& node) const {
        Value operand = walk(*node.operand);
        if (node.op == expr::UnaryOperator::notWord)
            return boolValue(!truthiness(operand));
        negate(operand);
        return operand;
    }

    static void negate(Value& operand) {
        if (!operand.isNumber()) {
            throw CalcError(MessageKind::cannotNegate, {kindName(operand)});
        }
        operand.number = -operand.number;
    }

    // A chain (1+2+3…) is applied left to right in a loop, however long it is. In one of
    // terms, factors and powers, each term's factors are multiplied out before it is added, and
    // each factor's powers are raised first, from the right. Values are worked on in place:
    // most chains are short, and a value is too big to move about for nothing.
    Value chain(const expr::Chain& node) const {
        LinkCursor link{node.links.begin(), node.links.end()};
        Value value = walk(*node.first);
        multiplyOut(value, link);
        while (!link.atEnd()) {
            const expr::Link& joining = link.take();
            if (!expr::isTermOperator(joining.op())) {
                value = applyLink(joining, std::move(value));
                continue;
            }
            Value term = operandOf(joining);
            multiplyOut(term, link);
            if (joining.op() == expr::Operator::plus)
                addInto(value, term);
            else
                value = subtract(value, term);
        }
        return value;
    }

    struct LinkCursor {
        expr::LinkList::iterator next;
        expr::LinkList::iterator end;

        bool atEnd() const { return next == end; }
        bool at(expr::Operator op) const { return next != end && next->op() == op; }
        const expr::Link& take() { return *next++; }
    };

    // A term's first factor times the factors after it.
    void multiplyOut(Value& value, LinkCursor& link) const {
        raise(value, link);
        while (link.at(expr::Operator::times) || link.at(expr::Operator::divide)) {
            const expr::Link& joining = link.take();
            Value factor = operandOf(joining);
            raise(factor, link);
            value = joining.op() == expr::Operator::times ? multiply(value, factor) : divide(value, factor);
        }
    }

    // A base raised to the powers after it: 2^3^2 is 2^(3^2).
    void raise(Value& base, LinkCursor& link) const {
        if (!link.at(expr::Operator::power))
            return;
        absl::InlinedVector<Value, 2> exponents;
        while (link.at(expr::Operator::power))
            exponents.push_back(operandOf(link.take()));
        Value exponent = std::move(exponents.back());
        for (std::size_t i = exponents.size() - 1; i-- > 0;)
            exponent = power(exponents[i], exponent);
        base = power(base, exponent);
    }

    Value operandOf(const expr::Link& link) const {
        Value operand = link.holds() == expr::Link::Holds::node ? walk(*link.node()) : heldOperand(link);
        if (link.negated())
            negate(operand);
        return operand;
    }

    Value heldOperand(const expr::Link& link) const {
        switch (link.holds()) {
        case expr::Link::Holds::number:
            return Value::plain(link.number());
        case expr::Link::Holds::percent:
            return Value::percent(link.number());
        case expr::Link::Holds::ref:
            return ref(link.line());
        case expr::Link::Holds::name:
        case expr::Link::Holds::node:
            break;
        }
        return identifier(std::string(link.name()));
    }

    // A link of a chain of comparisons, of "and" or of "or".
    Value applyLink(const expr::Link& link, Value left) const {
        using Op = expr::Operator;
        const Op op = link.op();
        if (op == Op::andWord || op == Op::orWord) {
            // Short-circuit: the right side is not even looked at once the left decides.
            if (truthiness(left) == (op == Op::orWord))
                return left;
            return operandOf(link);
        }
        return compareValues(expr::spelling(op), left, operandOf(link));
    }

    Value percent(const expr::Percent& node) const {
        Value operand = walk(*node.operand);
        if (!operand.isNumber()) {
            throw CalcError(MessageKind::percentOnKind, {kindName(operand)});
        }
        if (operand.unit) {
            throw CalcError(MessageKind::percentOnUnit);
        }
        return Value::percent(operand.number);
    }

    // True for a name the context knows, or a juxtaposition made only of such names.
    bool isKnownNameChain(const Expr& expression) const {
        if (const auto* name = expression.as<expr::Identifier>())
            return context().valueOf(std::string(name->name)).has_value();
        if (const auto* apply = expression.as<expr::UnitApply>()) {
            return isKnownNameChain(*apply->operand) &&
                   context().valueOf(std::string(apply->unit)).has_value();
        }
        return false;
    }

    // `operandNode` is null when the operand was a plain number.
    Value applyUnit(const Value& operand, const Expr* operandNode, std::string_view unitName) const {
        if (auto named = context().valueOf(std::string(unitName))) {
            // "rent food" lists amounts to be summed; "3 x" is a coefficient times a variable.
            if (operandNode && isKnownNameChain(*operandNode))
                return add(operand, *named);
            return multiply(operand, *named);
        }
        const UnitRef unit = findUnit(unitName);
        if (!unit) {
            // "2 pi" means 2π: a constant after a number is a factor, never a unit.
            if (auto constant = constantValue(unitName))
                return multiply(operand, *constant);
            throwUnknownUnit(unitName);
        }
        return attachUnit(operand, unit);
    }

    static Value attachUnit(const Value& operand, const UnitRef& unit) {
        if (!operand.isNumber()) {
            throw CalcError(MessageKind::unitOnKind, {kindName(operand)});
        }
        if (operand.isPercent()) {
            throw CalcError(MessageKind::unitOnPercentage, {unit->display});
        }
        if (!operand.unit)
            return Value::withUnit(operand.number, unit);
        if (operand.unit->sameDimensions(*unit)) {
            throw CalcError(MessageKind::unitOnUnit, {operand.unit->display, unit->display});
        }
        return multiply(operand, Value::withUnit(1, unit));
    }

    Value convertTo(const expr::Convert& node) const {
        const Value operand = withoutPercent(walk(*node.operand));
        const UnitRef target = findUnit(node.target);
        if (!target)
            throwUnknownUnit(node.target);
        if (!operand.isNumber()) {
            throw CalcError(MessageKind::unitOnKind, {kindName(operand)});
        }
        // A plain number is read as already being in the target unit, as addition does.
        if (!operand.unit)
            return Value::withUnit(operand.number, target);
        if (!operand.unit->sameDimensions(*target)) {
            const std::string value =
                ValueFormatter::formatNumber(operand.number, m_evaluator.options(), Grouping::none) +
                (operand.unit->tight ? "" : " ") + operand.unit->display;
            throw CalcError(MessageKind::cannotConvert, {value, target->display});
        }
        return Value::withUnit(convert(operand.number, *operand.unit, *target), target);
    }

    Value percentOf(const expr::PercentOf& node) const {
        const Value left = walk(*node.percentage);
        const Value right = walk(*node.base);
        if (!left.isNumber() || !right.isNumber())
            throwKindMismatch(left, right, "of");
        if (!left.isPercent())
            return multiply(left, right);
        const double figure = left.number * right.number / 100;
        if (right.isPercent())
            return Value::percent(figure);
        return right.unit ? Value::withUnit(figure, right.unit) : Value::plain(figure);
    }

    const Evaluator& m_evaluator;
};

} // namespace

std::optional<Value> constantValue(std::string_view name) {
    struct Constant {
        std::string_view name;
        double value;
    };
    static constexpr Constant constants[] = {
        {"pi", 3.141592653589793},
        {"π", 3.141592653589793},
        {"PI", 3.141592653589793},
        {"e", 2.718281828459045},
        {"tau", 6.283185307179586},
        {"τ", 6.283185307179586},
        {"True", 1},
        {"False", 0},
    };
    for (const Constant& constant : constants) {
        if (constant.name == name)
            return Value::plain(constant.value);
    }
    return std::nullopt;
}

bool isConstantName(std::string_view name) {
    return constantValue(name).has_value();
}

Value Evaluator::evaluate(const Expr& expression) const {
    return TreeWalker(*this).walk(expression);
}

EvalContext& Evaluator::context() const {
    // Stateless, so one shared instance serves every evaluator built without a context.
    static EmptyContext empty;
    return m_context ? *m_context : empty;
}

bool truthiness(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::list:
        return !value.items().empty();
    case Value::Kind::text:
        return !value.text().empty();
    case Value::Kind::number:
        return value.number != 0;
    }
    return false;
}

Value compareValues(std::string_view op, const Value& left, const Value& right) {
    if (left.isNumber() && right.isNumber()) {
        const Value a = withoutPercent(left);
        const Value b = withoutPercent(right);
        if (a.unit && b.unit && !a.unit->sameDimensions(*b.unit) && !isOrdering(op))
            return boolValue(op == "!=");
        const AlignedNumbers aligned = alignUnits(a, b); // throws the addition message for an ordering
        return boolValue(compareNumbers(op, aligned.left, aligned.right));
    }
    if (left.isText() && right.isText())
        return boolValue(orderSays(op, compareTexts(left.text(), right.text())));
    if (left.isList() && right.isList()) {
        if (isOrdering(op)) {
            throw CalcError(MessageKind::listsNotOrdered);
        }
        return boolValue(listsEqual(left, right) == (op == "=="));
    }
    if (isOrdering(op)) {
        throw CalcError(MessageKind::kindsNotOrdered, {kindName(left), kindName(right)});
    }
    return boolValue(op == "!=");
}

int compareTexts(std::string_view a, std::string_view b) {
    const std::u32string left = unicode::decode(unicode::nfc(a));
    const std::u32string right = unicode::decode(unicode::nfc(b));
    const int order = left.compare(right);
    return (order > 0) - (order < 0);
}

namespace {

// Checks a position and returns it as a whole number; the target's kind is checked after.
std::int64_t indexPosition(const Value& position) {
    const Value plain = withoutPercent(position);
    const bool whole = plain.isNumber() && !plain.unit && std::isfinite(plain.number) &&
                       plain.number == std::round(plain.number);
    if (!whole) {
        throw CalcError(MessageKind::indexNotWhole);
    }
    if (std::fabs(plain.number) > 1e9) {
        throw CalcError(MessageKind::indexTooLarge);
    }
    return static_cast<std::int64_t>(plain.number);
}

[[noreturn]] void throwNoItem(const Value& target, std::int64_t position, std::size_t count) {
    const bool isList = target.isList();
    const Message label = isList ? MessageKind::theList : MessageKind::theText;
    const std::string i = std::to_string(position);
    if (count == 0)
        throw CalcError(MessageKind::noItemInEmpty, {label, i});
    throw CalcError(MessageKind::noItem, {label, i, std::to_string(count - 1)});
}

} // namespace

Value indexValue(const Value& target, const Value& position) {
    const std::int64_t i = indexPosition(position);
    if (target.isNumber()) {
        throw CalcError(MessageKind::indexOnNumber);
    }
    std::vector<std::string> characters;
    if (target.isText())
        characters = unicode::graphemes(target.text());
    const std::size_t count = target.isList() ? target.items().size() : characters.size();
    const std::int64_t n = static_cast<std::int64_t>(count);
    const std::int64_t effective = i < 0 ? i + n : i;
    if (effective < 0 || effective >= n)
        throwNoItem(target, i, count);
    const auto at = static_cast<std::size_t>(effective);
    return target.isList() ? target.items()[at] : Value::makeText(characters[at]);
}

} // namespace lumo
