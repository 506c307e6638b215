#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/language/Parser.h"
#include "LumoKit/values/Value.h"

namespace lumo {

/// What the evaluator asks of its surroundings.
class EvalContext {
public:
    virtual ~EvalContext() = default;
    /// The value of a name, or nothing.
    virtual std::optional<Value> valueOf(const std::string& name) = 0;
    /// The answer on line n (1-based, as written after #), or nothing.
    virtual std::optional<Value> answerOnLine(std::int64_t line) = 0;
    /// Calls a user function; nothing when no such function exists. May throw CalcError.
    virtual std::optional<Value> callUserFunction(const std::string& name,
                                                  const std::vector<Value>& args) = 0;
};

/// Answers nothing to all three questions.
class EmptyContext final : public EvalContext {
public:
    std::optional<Value> valueOf(const std::string&) override { return std::nullopt; }
    std::optional<Value> answerOnLine(std::int64_t) override { return std::nullopt; }
    std::optional<Value> callUserFunction(const std::string&, const std::vector<Value>&) override {
        return std::nullopt;
    }
};

/// The named constants (pi, π, PI, e, tau, τ, True, False), by exact spelling.
std::optional<Value> constantValue(std::string_view name);
bool isConstantName(std::string_view name);

/// Turns one expression tree into one value; everything it can't settle it asks the context.
class Evaluator {
public:
    explicit Evaluator(const EvaluationOptions& options, EvalContext* context = nullptr)
        : m_options(options), m_context(context) {}

    /// Evaluates left to right; the first failure throws CalcError.
    Value evaluate(const Expr& expression) const;
    Value evaluate(const ExprPtr& expression) const { return evaluate(*expression); }

    /// The context, or an empty one when none was given.
    EvalContext& context() const;
    const EvaluationOptions& options() const { return m_options; }

private:
    EvaluationOptions m_options;
    EvalContext* m_context = nullptr;
};

/// Lists are true with items, texts when not empty, numbers when not 0.
bool truthiness(const Value& value);

/// Applies a comparison operator ("==", "!=", "<", "<=", ">", ">=") to two values;
/// answers the plain number 1 or 0.
Value compareValues(std::string_view op, const Value& left, const Value& right);

/// Text ordering: scalar values after canonical normalisation. Negative, zero or positive.
int compareTexts(std::string_view a, std::string_view b);

/// Indexing a list or text by position (negative counts from the end).
Value indexValue(const Value& target, const Value& position);

} // namespace lumo
