#pragma once

// Helpers for engine tests: evaluate one line and compare its answer text or its message.
//
//   expectAnswer("2 in to cm", "5.08 cm");
//   expectError("5 / 0", "Cannot divide by zero");
//
// Both run in English and restore the language afterwards; answers are formatted without
// digit grouping. An optional context supplies names, line answers and user functions.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/language/Parser.h"
#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo::test {

/// Sets the language for one scope and puts the previous one back.
class ScopedLanguage {
public:
    explicit ScopedLanguage(AppLanguage language) : m_previous(L10n::current()) {
        L10n::setCurrent(language);
    }
    ~ScopedLanguage() { L10n::setCurrent(m_previous); }
    ScopedLanguage(const ScopedLanguage&) = delete;
    ScopedLanguage& operator=(const ScopedLanguage&) = delete;

private:
    AppLanguage m_previous;
};

enum class Angles { radians, degrees };

/// Sets the angle mode for one scope and puts the previous one back.
class ScopedAngleMode {
public:
    explicit ScopedAngleMode(Angles angles) : m_previous(AngleMode::degrees()) {
        AngleMode::setDegrees(angles == Angles::degrees);
    }
    ~ScopedAngleMode() { AngleMode::setDegrees(m_previous); }
    ScopedAngleMode(const ScopedAngleMode&) = delete;
    ScopedAngleMode& operator=(const ScopedAngleMode&) = delete;

private:
    bool m_previous;
};

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

/// The message `action` fails with, or "(no error)" when it succeeds.
template <typename Action> std::string messageOf(Action&& action) {
    try {
        action();
    } catch (const CalcError& error) {
        return error.message();
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
inline Value evaluateLine(std::string_view line, EvalContext* context = nullptr) {
    return Evaluator(context).evaluate(parseStatement(line).expr);
}

/// The answer column's text for one line (no grouping); throws CalcError.
inline std::string answerOf(std::string_view line, EvalContext* context = nullptr) {
    return ValueFormatter::format(evaluateLine(line, context), Grouping::none);
}

inline void expectAnswer(std::string_view line, std::string_view expected, EvalContext* context = nullptr) {
    ScopedLanguage english(AppLanguage::english);
    try {
        EXPECT_EQ(answerOf(line, context), expected) << "line: " << line;
    } catch (const CalcError& error) {
        ADD_FAILURE() << "line: " << line << "\n  expected answer: " << expected
                      << "\n  failed with: " << error.message();
    }
}

/// Expects the line to fail with exactly this message, in the given language (English by default).
inline void expectError(std::string_view line, std::string_view message, EvalContext* context = nullptr,
                        AppLanguage language = AppLanguage::english) {
    ScopedLanguage scoped(language);
    try {
        const std::string answer = answerOf(line, context);
        ADD_FAILURE() << "line: " << line << "\n  expected error: " << message << "\n  answered: " << answer;
    } catch (const CalcError& error) {
        EXPECT_EQ(error.message(), message) << "line: " << line;
    }
}

/// A table row: a line and what it must show, an answer or a message.
struct LineCase {
    std::string_view line;
    std::string_view expected;
};

inline void expectAnswers(std::initializer_list<LineCase> cases, EvalContext* context = nullptr) {
    for (const LineCase& c : cases)
        expectAnswer(c.line, c.expected, context);
}

inline void expectErrors(std::initializer_list<LineCase> cases, EvalContext* context = nullptr,
                         AppLanguage language = AppLanguage::english) {
    for (const LineCase& c : cases)
        expectError(c.line, c.expected, context, language);
}

} // namespace lumo::test
