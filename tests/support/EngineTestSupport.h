#pragma once

// Helpers for engine tests: evaluate one line and compare its answer text or its message.
//
//   expectAnswer("2 in to cm", "5.08 cm");
//   expectError("5 / 0", "Cannot divide by zero");
//
// Both run with English options unless told otherwise; answers are formatted without digit
// grouping. An optional context supplies names, line answers and user functions.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/language/Parser.h"
#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo::test {

/// The options the engine tests run with unless they say otherwise: English messages,
/// radians, 10 fraction digits.
inline EvaluationOptions englishOptions() {
    EvaluationOptions options;
    options.language = Language::english;
    return options;
}

inline EvaluationOptions optionsWith(Language language, AngleUnit angles = AngleUnit::radians) {
    EvaluationOptions options;
    options.language = language;
    options.angles = angles;
    return options;
}

/// A context filled by the test: named values, line answers and user functions.
class MapContext final : public EvalContext {
public:
    using Function = std::function<Value(const std::vector<Value>&)>;

    std::map<std::string, Value> names;
    std::map<std::int64_t, Value> lines;
    std::map<std::string, Function> functions;

    std::optional<Value> valueOf(const std::string& name) override { return find(names, name); }
    std::optional<Value> answerOnLine(std::int64_t line) override { return find(lines, line); }
    std::optional<Value> callUserFunction(const std::string& name, const std::vector<Value>& args) override {
        const auto it = functions.find(name);
        if (it == functions.end())
            return std::nullopt;
        return it->second(args);
    }

private:
    template <typename Map, typename Key> static std::optional<Value> find(const Map& map, const Key& key) {
        const auto it = map.find(key);
        return it == map.end() ? std::nullopt : std::optional<Value>(it->second);
    }
};

/// The message `action` fails with, in the given language, or "(no error)" when it succeeds.
template <typename Action> std::string messageOf(Action&& action, Language language = Language::english) {
    try {
        action();
    } catch (const CalcError& error) {
        return error.message().text(language);
    }
    return "(no error)";
}

/// Visits a variant with one lambda per case.
template <class... Fs> struct overloaded : Fs... { using Fs::operator()...; };
template <class... Fs> overloaded(Fs...) -> overloaded<Fs...>;

inline Value qty(double x, std::string_view unit) {
    return Value::withUnit(x, UnitRegistry::shared().find(unit));
}

/// Parses and evaluates one line; throws CalcError.
inline Value evaluateLine(std::string_view line, EvalContext* context = nullptr,
                          const EvaluationOptions& options = englishOptions()) {
    return Evaluator(options, context).evaluate(parseStatement(line).expr);
}

/// The answer column's text for one line (no grouping); throws CalcError.
inline std::string answerOf(std::string_view line, EvalContext* context = nullptr,
                            const EvaluationOptions& options = englishOptions()) {
    return ValueFormatter::format(evaluateLine(line, context, options), options, Grouping::none);
}

inline void expectAnswer(std::string_view line, std::string_view expected, EvalContext* context = nullptr,
                         const EvaluationOptions& options = englishOptions()) {
    try {
        EXPECT_EQ(answerOf(line, context, options), expected) << "line: " << line;
    } catch (const CalcError& error) {
        ADD_FAILURE() << "line: " << line << "\n  expected answer: " << expected
                      << "\n  failed with: " << error.message().text(Language::english);
    }
}

/// Expects the line to fail with exactly this message, in the options' language (English by default).
inline void expectError(std::string_view line, std::string_view message, EvalContext* context = nullptr,
                        const EvaluationOptions& options = englishOptions()) {
    try {
        const std::string answer = answerOf(line, context, options);
        ADD_FAILURE() << "line: " << line << "\n  expected error: " << message << "\n  answered: " << answer;
    } catch (const CalcError& error) {
        EXPECT_EQ(error.message().text(options.language), message) << "line: " << line;
    }
}

inline void expectError(std::string_view line, std::string_view message, EvalContext* context,
                        Language language) {
    expectError(line, message, context, optionsWith(language));
}

/// A table row: a line and what it must show, an answer or a message.
struct LineCase {
    std::string_view line;
    std::string_view expected;
};

inline void expectAnswers(std::initializer_list<LineCase> cases, EvalContext* context = nullptr,
                          const EvaluationOptions& options = englishOptions()) {
    for (const LineCase& c : cases)
        expectAnswer(c.line, c.expected, context, options);
}

inline void expectErrors(std::initializer_list<LineCase> cases, EvalContext* context = nullptr,
                         const EvaluationOptions& options = englishOptions()) {
    for (const LineCase& c : cases)
        expectError(c.line, c.expected, context, options);
}

inline void expectErrors(std::initializer_list<LineCase> cases, EvalContext* context, Language language) {
    expectErrors(cases, context, optionsWith(language));
}

} // namespace lumo::test
