#include "LumoKit/sheet/ProgramRunner.h"

#include <algorithm>
#include <cmath>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Overloaded.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/sheet/ProgramReader.h"
#include "LumoKit/sheet/RunCheckpoint.h"
#include "LumoKit/sheet/SheetParseCache.h"
#include "LumoKit/values/builtins/Builtins.h"

namespace lumo {

namespace {

// Thrown between the runner's own frames once the budget is exhausted; it never crosses the
// evaluator (a function call turns it into the CalcError of the stop message).
struct RunStopped {};

// A failure that already names the other sheet it came from, so that callers further out
// don't name a sheet again.
class OtherSheetError final : public CalcError {
public:
    using CalcError::CalcError;
};

// A range bound cut to a whole number; far-out values are clamped so the counting stays exact.
std::int64_t wholeBound(double number) {
    constexpr double limit = 9.0e18;
    if (std::isnan(number))
        return 0;
    return static_cast<std::int64_t>(std::trunc(std::clamp(number, -limit, limit)));
}

// Puts back what a function call changed in the context, however the call ends.
class CallScope {
public:
    CallScope(LineContext& context, std::vector<std::optional<std::string>>& homeStack, NameTable arguments,
              const std::optional<std::string>& home)
        : m_context(context), m_homeStack(homeStack), m_previous(context.previous),
          m_mixedUnits(context.mixedUnits) {
        m_context.budget.enterCall();
        m_context.locals.push_back(std::move(arguments));
        m_homeStack.push_back(home);
    }
    ~CallScope() {
        m_homeStack.pop_back();
        m_context.locals.pop_back();
        m_context.previous = std::move(m_previous);
        m_context.mixedUnits = m_mixedUnits;
        m_context.budget.leaveCall();
    }
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

private:
    LineContext& m_context;
    std::vector<std::optional<std::string>>& m_homeStack;
    std::optional<Value> m_previous;
    bool m_mixedUnits;
};

// Whether a node is a plain line, a blank or a note: over a run of them at the top, node i is
// line i, and their answers depend only on each other.
bool isPlain(const ProgramNode& node) {
    return node.is<Program::Line>() || node.is<Program::Blank>() || node.is<Program::Comment>();
}

} // namespace

ProgramRunner::ProgramRunner(SheetLines lines, const std::vector<SharedSheet>& others,
                             const EvaluationOptions& options, BudgetLimits limits, SheetParseCache* parses)
    : m_lines(std::move(lines)), m_context(options, limits), m_visited(m_lines.size(), false),
      m_others(others) {
    m_context.parses = parses;
}

ProgramRunner::ProgramRunner(std::vector<std::string> lines, const std::vector<SharedSheet>& others,
                             const EvaluationOptions& options, BudgetLimits limits, SheetParseCache* parses)
    : ProgramRunner(SheetLines(std::move(lines)), others, options, limits, parses) {}

std::vector<LineResult> ProgramRunner::run() {
    m_context.findFunction = [this](const std::string& name) { return findFunction(name); };
    m_context.runFunction = [this](const ProgramFunction& function, const std::vector<Value>& args) {
        return runFunction(function, args);
    };
    std::optional<std::size_t> sameAbove;
    const RunCheckpoint* checkpoint = nullptr;
    if (m_context.parses) {
        sameAbove = m_context.parses->beginRun(m_lines);
        checkpoint = usableCheckpoint(*sameAbove);
    }
    // The lines above a checkpoint are plain lines that open no block, so the rest reads alone.
    const std::size_t from = checkpoint ? checkpoint->line : 0;
    ProgramReader program(m_lines, from);
    m_context.expectLines(m_lines.size());
    // Results are made as the run reaches their lines, in room made for all of them at once.
    m_results.reserve(m_lines.size());
    if (checkpoint)
        takeUp(*checkpoint);
    // A run after a keystroke defines about the names the last one did: room for them is
    // made once rather than by growing the table again and again.
    if (m_context.parses)
        m_context.names.reserve(m_context.parses->lastRunsNameCount());
    try {
        // The line a later run may start at: the first one that changed, or the end of the
        // plain lines at the top if that comes first. Over those, node i is line from + i.
        bool plainSoFar = true;
        for (std::size_t i = 0; std::optional<ProgramNode> node = program.next(); ++i) {
            const bool plain = isPlain(*node);
            if (sameAbove && plainSoFar && (from + i == *sameAbove || (!plain && from + i < *sameAbove)))
                keepCheckpoint(from + i);
            plainSoFar = plainSoFar && plain;
            showStructure(*node);
            // A break, continue or return that reaches the top level ends nothing.
            executeNode(*node, LineCounting::counted);
            stopIfExhausted();
        }
        m_results.resize(m_lines.size());
    } catch (const RunStopped&) {
        m_results.resize(m_lines.size());
        fillUnreached();
    }
    if (m_context.parses) {
        m_context.parses->setNameCount(m_context.names.size());
        m_context.parses->endRun();
    }
    return std::move(m_results);
}

const RunCheckpoint* ProgramRunner::usableCheckpoint(std::size_t sameLinesAbove) {
    SheetParseCache& parses = *m_context.parses;
    const RunCheckpoint* checkpoint = parses.checkpoint();
    if (checkpoint && checkpoint->line <= sameLinesAbove && checkpoint->options == m_context.options())
        return checkpoint;
    parses.dropCheckpoint();
    return nullptr;
}

void ProgramRunner::takeUp(const RunCheckpoint& checkpoint) {
    m_context.restore(checkpoint.state);
    m_results = checkpoint.results;
    std::fill_n(m_visited.begin(), checkpoint.line, true);
    m_context.parses->resumeAt(checkpoint);
}

void ProgramRunner::keepCheckpoint(std::size_t line) {
    SheetParseCache& parses = *m_context.parses;
    // A call reads other sheets and spends budget, which a later run could not see again.
    if (line == 0 || m_context.calledFunctions || (parses.checkpoint() && parses.checkpoint()->line == line))
        return;
    if (m_results.size() < line)
        m_results.resize(line); // blank lines at the end of those above
    const auto above = m_results.begin() + static_cast<std::ptrdiff_t>(line);
    parses.keepCheckpoint(std::make_unique<RunCheckpoint>(RunCheckpoint{
        line, m_context.options(), m_context.state(), std::vector<LineResult>(m_results.begin(), above)}));
}

std::optional<ProgramFlow> ProgramRunner::executeBlock(const ProgramBody& body, LineCounting counting) {
    for (const auto& node : body) {
        auto flow = executeNode(node, counting);
        stopIfExhausted();
        if (flow)
            return flow;
    }
    return std::nullopt;
}

std::optional<ProgramFlow> ProgramRunner::executeNode(const ProgramNode& node, LineCounting counting) {
    markVisited(node);
    return std::visit(
        overloaded{
            [&](const Program::Line& line) -> std::optional<ProgramFlow> {
                if (LineResult* result = resultOf(line.index);
                    result && m_context.answerFromMemo(line, counting, currentOwner(), *result))
                    return std::nullopt;
                setResult(line.index, m_context.evaluateLine(line, counting, currentOwner()));
                // A loop's pass can be slow however few passes it makes (a list that
                // doubles), so its lines read the clock; a line of the sheet itself
                // never does, so no plain line is cut however long the sheet.
                if (counting == LineCounting::uncounted) {
                    m_context.budget.checkClock();
                } else {
                    // Outside loops and defs a line runs once: its parse can go now,
                    // so a long sheet never holds the trees of all its lines.
                    line.cache.release();
                }
                return std::nullopt;
            },
            [&](const Program::Blank&) -> std::optional<ProgramFlow> {
                if (m_context.locals.empty())
                    m_context.endBlock();
                return std::nullopt;
            },
            [&](const Program::Comment&) -> std::optional<ProgramFlow> { return std::nullopt; },
            [&](const Program::Invalid&) -> std::optional<ProgramFlow> { return std::nullopt; },
            [&](const Program::IfChain& chain) { return executeIf(chain, counting); },
            [&](const Program::ForLoop& loop) { return executeFor(loop); },
            [&](const Program::WhileLoop& loop) { return executeWhile(loop); },
            [&](const Program::Define& define) -> std::optional<ProgramFlow> {
                // Defs met inside another sheet's function stay with that sheet.
                if (currentOwner() == LineOwner::thisSheet)
                    m_context.functions.insert_or_assign(
                        std::string(define.name),
                        ProgramFunction{std::string(define.name), define.params, define.body, std::nullopt});
                return std::nullopt;
            },
            [&](const Program::Return& statement) { return executeReturn(statement); },
            [&](const Program::BreakLoop&) -> std::optional<ProgramFlow> {
                return ProgramFlow{ProgramFlow::Kind::breakLoop, std::nullopt};
            },
            [&](const Program::ContinueLoop&) -> std::optional<ProgramFlow> {
                return ProgramFlow{ProgramFlow::Kind::continueLoop, std::nullopt};
            },
        },
        node.node);
}

std::optional<ProgramFlow> ProgramRunner::executeIf(const Program::IfChain& chain, LineCounting counting) {
    for (const auto& branch : chain.branches) {
        markLine(branch.index);
        if (branch.condition) {
            bool holds = false;
            try {
                holds = truthiness(Evaluator(m_context.options(), &m_context).evaluate(*branch.condition));
            } catch (const CalcError& error) {
                failLine(branch.index, error.message());
                return std::nullopt;
            }
            setResult(branch.index, {});
            if (!holds)
                continue;
        }
        return executeBlock(branch.body, counting);
    }
    return std::nullopt;
}

bool ProgramRunner::runPass(std::int64_t headerIndex, const ProgramBody& body,
                            std::optional<ProgramFlow>& flow) {
    try {
        flow = executeBlock(body, LineCounting::uncounted);
    } catch (const RunStopped&) {
        failLine(headerIndex, m_context.budget.stopMessage());
        throw;
    }
    if (!flow || flow->kind == ProgramFlow::Kind::continueLoop) {
        flow.reset();
        return false;
    }
    if (flow->kind == ProgramFlow::Kind::breakLoop)
        flow.reset();
    return true;
}

std::optional<ProgramFlow> ProgramRunner::executeFor(const Program::ForLoop& loop) {
    std::vector<Value> items;
    try {
        items = iterationItems(*loop.iterable);
    } catch (const CalcError& error) {
        failLine(loop.index, error.message());
        stopIfExhausted();
        return std::nullopt;
    }
    setResult(loop.index, {});
    std::optional<ProgramFlow> flow;
    for (auto& item : items) {
        m_context.assign(std::string(loop.name), std::move(item));
        try {
            m_context.budget.takeStep();
        } catch (const CalcError& error) {
            failLine(loop.index, error.message());
            throw RunStopped{};
        }
        if (runPass(loop.index, loop.body, flow))
            break;
    }
    return flow;
}

std::optional<ProgramFlow> ProgramRunner::executeWhile(const Program::WhileLoop& loop) {
    setResult(loop.index, {});
    std::optional<ProgramFlow> flow;
    while (true) {
        try {
            if (!truthiness(Evaluator(m_context.options(), &m_context).evaluate(*loop.condition)))
                break;
            m_context.budget.takeStep();
        } catch (const CalcError& error) {
            failLine(loop.index, error.message());
            stopIfExhausted();
            break;
        }
        if (runPass(loop.index, loop.body, flow))
            break;
    }
    return flow;
}

std::optional<ProgramFlow> ProgramRunner::executeReturn(const Program::Return& statement) {
    if (m_context.locals.empty()) {
        failLine(statement.index, MessageKind::returnOutsideDef);
        return std::nullopt;
    }
    ProgramFlow flow{ProgramFlow::Kind::ret, std::nullopt};
    if (statement.value) {
        try {
            flow.value = Evaluator(m_context.options(), &m_context).evaluate(*statement.value);
        } catch (const CalcError& error) {
            failLine(statement.index, error.message());
            throw;
        }
        setResult(statement.index, {LineOutcome::makeValue(*flow.value), std::nullopt});
    }
    return flow;
}

std::vector<Value> ProgramRunner::iterationItems(const Expr& iterable) {
    if (const auto* call = iterable.as<expr::Call>();
        call && unicode::toLower(call->name) == keywords::rangeWord)
        return rangeItems(*call);
    Value value = Evaluator(m_context.options(), &m_context).evaluate(iterable);
    if (value.isList())
        return std::move(value.editItems()); // taken, unless a name still shares them
    if (value.isText()) {
        std::vector<Value> characters;
        for (auto& character : unicode::graphemes(value.text()))
            characters.push_back(Value::makeText(std::move(character)));
        return characters;
    }
    throw CalcError(MessageKind::notIterable);
}

std::vector<Value> ProgramRunner::rangeItems(const expr::Call& call) {
    if (call.args.empty() || call.args.size() > 3)
        throw CalcError(MessageKind::rangeUsage);
    std::vector<std::int64_t> bounds;
    for (const auto& argument : call.args) {
        const Value value = withoutPercent(Evaluator(m_context.options(), &m_context).evaluate(argument));
        if (!value.isNumber())
            throw CalcError(MessageKind::rangeKind, {kindName(value)});
        if (value.unit)
            throw CalcError(MessageKind::rangeUnit);
        bounds.push_back(wholeBound(value.number));
    }
    const std::int64_t start = bounds.size() == 1 ? 0 : bounds[0];
    const std::int64_t end = bounds.size() == 1 ? bounds[0] : bounds[1];
    const std::int64_t step = bounds.size() == 3 ? bounds[2] : 1;
    if (step == 0)
        throw CalcError(MessageKind::rangeZeroStep);
    // Passes beyond what the budget still allows would fail anyway; one more is enough to fail it.
    const ProgramBudget& budget = m_context.budget;
    const auto passLimit =
        static_cast<std::size_t>(std::max<std::int64_t>(budget.limits().maxSteps - budget.steps(), 0)) + 1;
    std::vector<Value> items;
    for (std::int64_t value = start; step > 0 ? value < end : value > end;) {
        items.push_back(Value::plain(static_cast<double>(value)));
        if (items.size() >= passLimit || __builtin_add_overflow(value, step, &value))
            break;
    }
    return items;
}

const ProgramFunction* ProgramRunner::findFunction(const std::string& name) {
    const auto lookIn = [&name](const FunctionTable& table) -> const ProgramFunction* {
        const auto found = table.find(name);
        return found == table.end() ? nullptr : &found->second;
    };
    if (!m_homeStack.empty() && m_homeStack.back()) {
        for (const auto& [sheet, table] : sharedDefinitions()) {
            if (sheet == *m_homeStack.back()) {
                if (const auto* function = lookIn(table))
                    return function;
                break;
            }
        }
    }
    if (const auto* function = lookIn(m_context.functions))
        return function;
    if (isBuiltinFunction(unicode::toLower(name)))
        return nullptr;
    for (const auto& [sheet, table] : sharedDefinitions()) {
        if (const auto* function = lookIn(table))
            return function;
    }
    return nullptr;
}

Value ProgramRunner::runFunction(const ProgramFunction& function, const std::vector<Value>& args) {
    if (args.size() != function.params.size())
        throw CalcError(
            MessageKind::argumentCount,
            {function.name, std::to_string(function.params.size()),
             function.params.size() == 1 ? MessageKind::argumentWord : MessageKind::argumentsWord});
    // The table entry may be replaced while the body runs (a def of the same name inside it).
    const ProgramFunction called = function;
    NameTable arguments;
    for (std::size_t i = 0; i < args.size(); ++i)
        arguments.insert_or_assign(called.params[i], args[i]);
    try {
        CallScope scope(m_context, m_homeStack, std::move(arguments), called.home);
        return runBody(called);
    } catch (const OtherSheetError&) {
        throw;
    } catch (const CalcError& error) {
        if (called.home)
            throw OtherSheetError(MessageKind::fromSheet, {error.message(), *called.home});
        throw;
    }
}

Value ProgramRunner::runBody(const ProgramFunction& function) {
    std::optional<ProgramFlow> flow;
    try {
        flow = executeBlock(*function.body, LineCounting::uncounted);
    } catch (const RunStopped&) {
        throw CalcError(m_context.budget.stopMessage());
    }
    if (flow && flow->kind == ProgramFlow::Kind::ret && flow->value)
        return std::move(*flow->value);
    throw CalcError(MessageKind::noReturnValue, {function.name});
}

const ProgramRunner::SharedDefinitions& ProgramRunner::sharedDefinitions() {
    if (!m_sharedCache) {
        m_sharedCache.emplace();
        m_sharedLines.reserve(m_others.size());
        for (const auto& sheet : m_others) {
            const ProgramBody nodes = Program::parse(m_sharedLines.emplace_back(sheet.text));
            m_sharedCache->emplace_back(sheet.name, Program::collectDefinitions(nodes, sheet.name));
        }
    }
    return *m_sharedCache;
}

LineOwner ProgramRunner::currentOwner() const {
    return !m_homeStack.empty() && m_homeStack.back() ? LineOwner::otherSheet : LineOwner::thisSheet;
}

LineResult* ProgramRunner::resultOf(std::int64_t index) {
    if (currentOwner() != LineOwner::thisSheet || index < 0 ||
        static_cast<std::size_t>(index) >= m_lines.size())
        return nullptr;
    const auto line = static_cast<std::size_t>(index);
    // Made when first reached, so each result is written once; the room was made at the start,
    // so results never move.
    if (line == m_results.size())
        m_results.emplace_back();
    else if (line > m_results.size())
        m_results.resize(line + 1);
    return &m_results[line];
}

void ProgramRunner::setResult(std::int64_t index, LineResult result) {
    if (LineResult* slot = resultOf(index))
        *slot = std::move(result);
}

void ProgramRunner::failLine(std::int64_t index, const Message& message) {
    setResult(index, {LineOutcome::makeFailure(message, m_context.options().language), std::nullopt});
}

// Only the line a node stands on is reached by executing it: the lines of a body are reached
// when the body runs, and an if chain's headers as the chain comes to them.
void ProgramRunner::markVisited(const ProgramNode& node) {
    std::visit(overloaded{
                   [](const Program::IfChain&) {},
                   [&](const auto& simple) { markLine(simple.index); },
               },
               node.node);
}

void ProgramRunner::markLine(std::int64_t index) {
    if (currentOwner() == LineOwner::thisSheet && index >= 0 &&
        static_cast<std::size_t>(index) < m_visited.size())
        m_visited[static_cast<std::size_t>(index)] = true;
}

// Notes and structural mistakes show wherever they stand, even in code that never runs: a
// node's are shown as the run comes to it.
void ProgramRunner::showStructure(const ProgramNode& node) {
    std::visit(overloaded{
                   [&](const Program::Comment& comment) {
                       if (LineResult* result = resultOf(comment.index))
                           result->outcome = LineOutcome::makeComment();
                   },
                   [&](const Program::Invalid& invalid) {
                       failLine(invalid.index, *invalid.message);
                       showStructure(invalid.body);
                   },
                   [&](const Program::IfChain& chain) {
                       for (const auto& branch : chain.branches)
                           showStructure(branch.body);
                   },
                   [&](const Program::ForLoop& loop) { showStructure(loop.body); },
                   [&](const Program::WhileLoop& loop) { showStructure(loop.body); },
                   [&](const Program::Define& define) { showStructure(*define.body); },
                   [&](const auto&) {},
               },
               node.node);
}

void ProgramRunner::showStructure(const ProgramBody& body) {
    for (const auto& node : body)
        showStructure(node);
}

void ProgramRunner::fillUnreached() {
    const LineOutcome stopped =
        LineOutcome::makeFailure(m_context.budget.stopMessage(), m_context.options().language);
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        if (!m_visited[i] && !unicode::trimView(m_lines[i]).empty())
            m_results[i] = {stopped, std::nullopt};
    }
}

void ProgramRunner::stopIfExhausted() const {
    if (m_context.budget.exhausted())
        throw RunStopped{};
}

} // namespace lumo
