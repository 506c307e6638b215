#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <absl/container/flat_hash_map.h>

#include "LumoKit/sheet/LineMemo.h"
#include "LumoKit/sheet/LineResult.h"
#include "LumoKit/sheet/Program.h"
#include "LumoKit/sheet/ProgramBudget.h"
#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/Value.h"

namespace lumo {

class SheetParseCache;

/// Whether a line's answer goes into sum and total: lines inside loops and def bodies don't.
enum class LineCounting { counted, uncounted };

/// Whose line is being run: a line of the sheet being evaluated, or a line of a function
/// that another sheet defines (which must not touch this sheet's line answers).
enum class LineOwner { thisSheet, otherSheet };

/// The left-to-right sum of a run of answers, kept as the answers arrive so that reading
/// sum or total costs nothing. Units convert into the first answer's unit.
class RunningSum {
public:
    void add(const Value& answer);
    void clear() { *this = RunningSum(); }
    /// The plain 0 for no answers; nothing when units of different kinds met.
    std::optional<Value> value() const;

private:
    std::optional<Value> m_sum;
    bool m_mixed = false;
};

/// Names and their values, in one scope. An open-addressing table: a long sheet defines
/// thousands of names, and a chained table costs a cache miss per link.
using NameTable = absl::flat_hash_map<std::string, Value>;

/// What the lines of a sheet have built up at one point of a run, outside any function.
struct SheetState {
    NameTable names;
    std::optional<Value> previous;
    RunningSum block;
    RunningSum all;
    std::vector<std::optional<Value>> byLine;
    std::vector<std::size_t> retainedByLine;
    std::size_t retained = 0;
};

/// The state of one run of a sheet, and the surroundings its lines are evaluated in.
class LineContext final : public EvalContext {
public:
    using RunFunction = std::function<Value(const ProgramFunction&, const std::vector<Value>&)>;
    using FindFunction = std::function<const ProgramFunction*(const std::string&)>;

    explicit LineContext(const EvaluationOptions& options, BudgetLimits limits = {});

    // The run's state, in the order the lines build it up.
    NameTable names;
    std::optional<Value> previous;
    RunningSum block;                         // counted answers since the last blank line
    RunningSum all;                           // counted answers since the top of the sheet
    std::vector<std::optional<Value>> byLine; // by 0-based line index, grown as answers arrive
    bool mixedUnits = false;
    FunctionTable functions;
    std::vector<NameTable> locals; // innermost last
    ProgramBudget budget;
    RunFunction runFunction;
    FindFunction findFunction;
    SheetParseCache* parses = nullptr; // kept between runs when the caller has one
    /// Set once a line calls a function: from then on the run depends on other sheets' defs
    /// and has spent budget.
    bool calledFunctions = false;

    std::optional<Value> valueOf(const std::string& name) override;
    std::optional<Value> answerOnLine(std::int64_t line) override;
    std::optional<Value> callUserFunction(const std::string& name, const std::vector<Value>& args) override;

    const EvaluationOptions& options() const { return m_options; }

    /// Binds a name where a line or loop of the current scope puts it: the innermost local
    /// scope while a function runs, else the sheet's names.
    void assign(const std::string& name, Value value);

    /// Makes room for the answers of a sheet of `count` lines at once: growing the tables line
    /// by line would move every answer kept so far each time they fill up.
    void expectLines(std::size_t count);

    /// The sheet's state between two lines outside any function, and putting it back.
    SheetState state() const;
    void restore(const SheetState& state);

    /// A blank line ends the block that sum adds up.
    void endBlock() { block.clear(); }

    /// Evaluates one ordinary line: prepares its text, parses it (once per cache), refuses
    /// built-in words as names, builds plots, evaluates, and on success records the answer.
    /// A failure leaves the context as it was.
    LineResult evaluateLine(const Program::Line& line, LineCounting counting, LineOwner owner);

    /// Answers a line the way evaluateLine would, into `result`, when the line is unchanged
    /// since the last run and every read of its memo gives the same value again: the state
    /// moves on as the evaluation would have moved it. False, with nothing changed, when the
    /// line has to be evaluated. Most lines below a keystroke are answered here.
    bool answerFromMemo(const Program::Line& line, LineCounting counting, LineOwner owner,
                        LineResult& result);

private:
    /// Whether the line is calculated as a continuation of the previous answer ("prev " in front).
    bool continues(const Program::Line& line);
    const ParsedLine& parsed(const Program::Line& line, bool continued, LineOwner owner);
    LineOutcome evaluateStatement(const Program::Line& line, const ParsedLine& parsedLine, bool continued,
                                  LineCounting counting, LineOwner owner);
    /// The answer of a line of this sheet outside any function, from its memo when every read
    /// recorded there reads the same now, else evaluated and recorded.
    Value memoizedAnswer(const ParsedLine& parsedLine, bool canContinue, std::unique_ptr<LineMemo>& memo);
    /// Whether a line's answer may come from, and go into, a memo.
    bool usesMemos(LineCounting counting, LineOwner owner) const {
        return parses && owner == LineOwner::thisSheet && counting == LineCounting::counted && locals.empty();
    }
    /// What a line's answer does to the run: its weight, prev, its line answer, sum and total,
    /// and its name.
    void keepAnswer(const Program::Line& line, LineCounting counting, LineOwner owner, const Value& answer,
                    const std::optional<std::string>& name);
    bool memoHolds(const LineMemo& memo);
    bool readsTheSame(const LineMemo::Read& read) const;
    void record(LineMemo::Read read);
    std::optional<Value> lookUp(const std::string& name);
    void retain(const Program::Line& line, LineOwner owner, const Value& answer);

    EvaluationOptions m_options;
    std::vector<std::size_t> m_retainedByLine; // by 0-based line index
    std::size_t m_retained = 0;
    LineMemo* m_recording = nullptr; // where the reads of the line being evaluated go
    bool m_recordingHolds = false;   // false once the line called a function
};

} // namespace lumo
