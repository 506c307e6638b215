#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "LumoKit/sheet/LineContext.h"
#include "LumoKit/sheet/LineResult.h"
#include "LumoKit/sheet/Program.h"

namespace lumo {

struct RunCheckpoint;

/// How a block's execution ended early.
struct ProgramFlow {
    enum class Kind { ret, breakLoop, continueLoop };

    Kind kind = Kind::ret;
    std::optional<Value> value; // for `ret`
};

/// One run of one sheet: executes its program tree over a fresh LineContext, within the
/// run's budget, and fills one LineResult per line. Other sheets lend their defs only.
class ProgramRunner {
public:
    /// `others` and `parses` must outlive the runner; `parses` may be null.
    ProgramRunner(SheetLines lines, const std::vector<SharedSheet>& others, const EvaluationOptions& options,
                  BudgetLimits limits = {}, SheetParseCache* parses = nullptr);
    ProgramRunner(std::vector<std::string> lines, const std::vector<SharedSheet>& others,
                  const EvaluationOptions& options, BudgetLimits limits = {},
                  SheetParseCache* parses = nullptr);

    ProgramRunner(const ProgramRunner&) = delete;
    ProgramRunner& operator=(const ProgramRunner&) = delete;

    /// Parses and executes the sheet; returns its results, one per line.
    std::vector<LineResult> run();

    const LineContext& context() const { return m_context; }

private:
    using SharedDefinitions = std::vector<std::pair<std::string, FunctionTable>>;

    /// The parse cache's checkpoint if the lines above it are among the `sameLinesAbove`
    /// unchanged lines and the options are the same; else it is dropped.
    const RunCheckpoint* usableCheckpoint(std::size_t sameLinesAbove);
    /// Starts the run where the checkpoint stands: its state, and the results above it.
    void takeUp(const RunCheckpoint& checkpoint);
    /// Keeps the run's state before `line` in the parse cache for the next run.
    void keepCheckpoint(std::size_t line);

    std::optional<ProgramFlow> executeBlock(const ProgramBody& body, LineCounting counting);
    std::optional<ProgramFlow> executeNode(const ProgramNode& node, LineCounting counting);
    std::optional<ProgramFlow> executeIf(const Program::IfChain& chain, LineCounting counting);
    std::optional<ProgramFlow> executeFor(const Program::ForLoop& loop);
    std::optional<ProgramFlow> executeWhile(const Program::WhileLoop& loop);
    std::optional<ProgramFlow> executeReturn(const Program::Return& statement);
    /// Runs one pass of a loop body; true when the loop is to end.
    bool runPass(std::int64_t headerIndex, const ProgramBody& body, std::optional<ProgramFlow>& flow);
    std::vector<Value> iterationItems(const Expr& iterable);
    std::vector<Value> rangeItems(const expr::Call& call);

    const ProgramFunction* findFunction(const std::string& name);
    Value runFunction(const ProgramFunction& function, const std::vector<Value>& args);
    Value runBody(const ProgramFunction& function);
    const SharedDefinitions& sharedDefinitions();

    LineOwner currentOwner() const;
    /// Where the result of line `index` goes: null for a line of another sheet's function.
    LineResult* resultOf(std::int64_t index);
    void setResult(std::int64_t index, LineResult result);
    void failLine(std::int64_t index, const Message& message);
    void markVisited(const ProgramNode& node);
    void markLine(std::int64_t index);
    void showStructure(const ProgramNode& node);
    void showStructure(const ProgramBody& body);
    void fillUnreached();
    void stopIfExhausted() const;

    SheetLines m_lines;
    LineContext m_context;
    std::vector<LineResult> m_results;
    std::vector<bool> m_visited;
    const std::vector<SharedSheet>& m_others;
    std::optional<SharedDefinitions> m_sharedCache;
    std::vector<SheetLines> m_sharedLines; // the lines the shared definitions' bodies view
    // The home sheet of each function being run, innermost last; absent for this sheet's own.
    std::vector<std::optional<std::string>> m_homeStack;
};

} // namespace lumo
