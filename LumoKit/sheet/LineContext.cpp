#include "LumoKit/sheet/LineContext.h"

#include <algorithm>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/PlotBuilder.h"
#include "LumoKit/sheet/SheetParseCache.h"

namespace lumo {

namespace {

// Answers kept by one run, weighed as values are. Far above any real sheet; it stops a loop
// like x = [x, x] from doubling until memory runs out, and many huge lists from piling up
// line after line.
constexpr std::size_t retainedItemLimit = maxValueWeight();
// The heaviest value a line's memo copies (see LineContext::record).
constexpr std::size_t memoWeightLimit = 64;

std::size_t weigh(const Value& value, std::size_t limit) {
    // Asked of every answer, and most answers are numbers.
    return value.isNumber() ? 1 : valueWeight(value, limit);
}

// Whether a line that is only a sum word, not shadowed by an argument, meets mixed units:
// the commonest failure of a sheet, answered without throwing through the evaluator.
bool isMixedSum(const ParsedLine& parsedLine, const LineContext& context) {
    if (!parsedLine.isBareSumWord)
        return false;
    const std::string_view name = parsedLine.statement->expr->as<expr::Identifier>()->name;
    if (!context.locals.empty() &&
        context.locals.back().contains(absl::string_view(name.data(), name.size())))
        return false;
    return !(*sheetWordOf(name) == SheetWord::blockSum ? context.block : context.all).value();
}

} // namespace

void RunningSum::add(const Value& answer) {
    if (m_mixed)
        return;
    if (!m_sum) {
        m_sum = answer;
        return;
    }
    if (m_sum->unit && answer.unit && m_sum->unit != answer.unit &&
        !m_sum->unit->sameDimensions(*answer.unit)) {
        m_mixed = true;
        return;
    }
    try {
        addInto(*m_sum, answer);
    } catch (const CalcError&) {
        m_mixed = true;
    }
}

std::optional<Value> RunningSum::value() const {
    if (m_mixed)
        return std::nullopt;
    return m_sum ? *m_sum : Value::plain(0);
}

LineContext::LineContext(const EvaluationOptions& options, BudgetLimits limits)
    : budget(limits), m_options(options) {}

void LineContext::expectLines(std::size_t count) {
    byLine.reserve(count);
    m_retainedByLine.reserve(count);
}

SheetState LineContext::state() const {
    return {names, previous, block, all, byLine, m_retainedByLine, m_retained};
}

void LineContext::restore(const SheetState& state) {
    names = state.names;
    previous = state.previous;
    block = state.block;
    all = state.all;
    // Assigned element by element, so that the room made for the whole sheet stays.
    byLine.assign(state.byLine.begin(), state.byLine.end());
    m_retainedByLine.assign(state.retainedByLine.begin(), state.retainedByLine.end());
    m_retained = state.retained;
}

std::optional<Value> LineContext::valueOf(const std::string& name) {
    std::optional<Value> value = lookUp(name);
    if (m_recording)
        record({name, 0, value});
    return value;
}

std::optional<Value> LineContext::lookUp(const std::string& name) {
    if (!locals.empty()) {
        const auto& scope = locals.back();
        if (const auto found = scope.find(name); found != scope.end())
            return found->second;
    }
    if (const auto word = sheetWordOf(name)) {
        if (*word == SheetWord::previous)
            return previous;
        auto sum = (*word == SheetWord::blockSum ? block : all).value();
        if (!sum) {
            mixedUnits = true;
            throw CalcError(MessageKind::unitsMixedInSum);
        }
        return sum;
    }
    if (const auto found = names.find(name); found != names.end())
        return found->second;
    return std::nullopt;
}

std::optional<Value> LineContext::answerOnLine(std::int64_t line) {
    std::optional<Value> value;
    if (line >= 1 && static_cast<std::uint64_t>(line) <= byLine.size())
        value = byLine[static_cast<std::size_t>(line - 1)];
    if (m_recording)
        record({std::string(), line, value});
    return value;
}

std::optional<Value> LineContext::callUserFunction(const std::string& name, const std::vector<Value>& args) {
    m_recordingHolds = false;
    calledFunctions = true;
    if (!findFunction || !runFunction)
        return std::nullopt;
    const ProgramFunction* function = findFunction(name);
    if (!function)
        return std::nullopt;
    return runFunction(*function, args);
}

void LineContext::assign(const std::string& name, Value value) {
    auto& scope = locals.empty() ? names : locals.back();
    scope.insert_or_assign(name, std::move(value));
}

bool LineContext::continues(const Program::Line& line) {
    LineParseCache& cache = line.cache;
    if (!cache.canContinue) {
        // Only the start matters here, so a line without a trailing "=" needs no copy.
        cache.canContinue = endsWithEquals(line.source) ? continuesPrevious(prepareLine(line.source, false))
                                                        : continuesPrevious(line.source);
    }
    return previous.has_value() && *cache.canContinue;
}

const ParsedLine& LineContext::parsed(const Program::Line& line, bool continued, LineOwner owner) {
    LineParseCache& cache = line.cache;
    auto& slot = continued ? cache.continued : cache.asWritten;
    if (!slot) {
        // Most lines are parsed as written, straight from the sheet's text.
        std::string prepared;
        const std::string_view text = !continued && !endsWithEquals(line.source)
                                          ? line.source
                                          : std::string_view(prepared = prepareLine(line.source, continued));
        if (!parses) {
            auto& owned = continued ? cache.ownedContinued : cache.ownedAsWritten;
            owned = parseLine(text);
            slot = owned.get();
        } else if (owner == LineOwner::thisSheet) {
            slot = &parses->parsed(text, static_cast<std::size_t>(line.index), continued);
        } else {
            slot = &parses->parsed(text);
        }
    }
    return *slot;
}

LineResult LineContext::evaluateLine(const Program::Line& line, LineCounting counting, LineOwner owner) {
    mixedUnits = false;
    const bool continued = continues(line);
    const ParsedLine& parsedLine = parsed(line, continued, owner);
    if (!parsedLine.statement)
        return {LineOutcome::makeFailure(parsedLine.error, m_options.language), std::nullopt};
    const Statement& statement = *parsedLine.statement;
    // Sum or TOTAL would be looked up as ordinary names, but taking them as names would
    // only confuse, so the lower-case spelling is refused as well.
    if (statement.name && isSheetWordInAnyCase(*statement.name))
        return {
            LineOutcome::makeFailure({MessageKind::sheetWordAsName, {*statement.name}}, m_options.language),
            statement.name};
    if (isMixedSum(parsedLine, *this)) {
        mixedUnits = true;
        return {LineOutcome::makeFailure(MessageKind::unitsMixedInSum, m_options.language), statement.name};
    }
    try {
        LineOutcome outcome = evaluateStatement(line, parsedLine, continued, counting, owner);
        if (outcome.kind == LineOutcome::Kind::plot)
            return {std::move(outcome), std::nullopt};
        return {std::move(outcome), statement.name};
    } catch (const CalcError& error) {
        const Message message = mixedUnits ? Message(MessageKind::unitsMixedInSum) : error.message();
        return {LineOutcome::makeFailure(message, m_options.language), statement.name};
    } catch (const std::exception&) {
        // Anything else that stops a line (memory running out, a size the library refuses) is
        // still only this line's failure: the lines below are evaluated as usual.
        return {LineOutcome::makeFailure(MessageKind::cannotCalculate, m_options.language), statement.name};
    }
}

LineOutcome LineContext::evaluateStatement(const Program::Line& line, const ParsedLine& parsedLine,
                                           bool continued, LineCounting counting, LineOwner owner) {
    const Statement& statement = *parsedLine.statement;
    if (parsedLine.isPlot) {
        try {
            return LineOutcome::makePlot(
                buildPlot(*statement.expr, prepareLine(line.source, continued), *this, m_options));
        } catch (const CalcError&) {
            // Samples that hit the run's limit are gaps to the plot builder; the line should
            // say why the run stopped rather than that the curve has no points.
            if (budget.exhausted())
                throw CalcError(budget.stopMessage());
            throw;
        }
    }

    // Only a run that keeps its parses between runs can meet a memo again, and only lines
    // outside loops and functions read the same values run after run.
    Value answer = usesMemos(counting, owner)
                       ? memoizedAnswer(parsedLine, *line.cache.canContinue,
                                        parses->memo(static_cast<std::size_t>(line.index)))
                       : Evaluator(m_options, this).evaluate(*statement.expr);
    keepAnswer(line, counting, owner, answer, statement.name);
    return LineOutcome::makeValue(std::move(answer));
}

void LineContext::keepAnswer(const Program::Line& line, LineCounting counting, LineOwner owner,
                             const Value& answer, const std::optional<std::string>& name) {
    retain(line, owner, answer);
    previous = answer;
    if (owner == LineOwner::thisSheet) {
        const auto index = static_cast<std::size_t>(line.index);
        if (index >= byLine.size())
            byLine.resize(index + 1);
        byLine[index] = answer;
    }
    if (counting == LineCounting::counted && answer.isNumber()) {
        block.add(answer);
        all.add(answer);
    }
    if (name)
        assign(*name, answer);
}

bool LineContext::answerFromMemo(const Program::Line& line, LineCounting counting, LineOwner owner,
                                 LineResult& result) {
    if (!usesMemos(counting, owner))
        return false;
    const auto [memo, parse] =
        parses->unchangedLine(static_cast<std::size_t>(line.index), previous.has_value());
    mixedUnits = false;
    if (!memo || !memoHolds(*memo))
        return false;
    const std::optional<std::string>& name = parse->statement->name;
    try {
        keepAnswer(line, counting, owner, memo->answer, name);
    } catch (const CalcError&) {
        // Too much kept by the lines above: evaluated, the line says so.
        return false;
    }
    // The result is a fresh one, holding no plot or message.
    LineOutcome& outcome = result.outcome;
    outcome.kind = LineOutcome::Kind::value;
    outcome.value = memo->answer;
    outcome.failure = MessageKind::verbatim;
    result.name = name;
    return true;
}

Value LineContext::memoizedAnswer(const ParsedLine& parsedLine, bool canContinue,
                                  std::unique_ptr<LineMemo>& memo) {
    if (memo && memo->parse == &parsedLine && memoHolds(*memo))
        return memo->answer;
    memo.reset();
    LineMemo recording{&parsedLine, m_options, canContinue, {}, {}};
    m_recording = &recording;
    m_recordingHolds = true;
    Value answer;
    try {
        answer = Evaluator(m_options, this).evaluate(*parsedLine.statement->expr);
    } catch (...) {
        m_recording = nullptr;
        throw;
    }
    m_recording = nullptr;
    if (m_recordingHolds && valueWeight(answer, memoWeightLimit) <= memoWeightLimit) {
        recording.answer = answer;
        memo = std::make_unique<LineMemo>(std::move(recording));
    }
    return answer;
}

void LineContext::record(LineMemo::Read read) {
    // A memo holds copies: a line that reads or makes a long list or text is simply evaluated
    // again, rather than copied into the memo of every line that uses it.
    if (!m_recordingHolds || (read.value && valueWeight(*read.value, memoWeightLimit) > memoWeightLimit)) {
        m_recordingHolds = false;
        return;
    }
    m_recording->reads.push_back(std::move(read));
}

bool LineContext::memoHolds(const LineMemo& memo) {
    if (memo.options != m_options)
        return false;
    return std::all_of(memo.reads.begin(), memo.reads.end(),
                       [this](const LineMemo::Read& read) { return readsTheSame(read); });
}

// Compares in place rather than through lookUp's copy: most lines below a keystroke read the
// same values again. Memos are only used outside functions, so there are no local names.
bool LineContext::readsTheSame(const LineMemo::Read& read) const {
    const auto same = [&read](const std::optional<Value>& now) { return now == read.value; };
    if (read.name.empty()) {
        const bool onSheet = read.line >= 1 && static_cast<std::uint64_t>(read.line) <= byLine.size();
        return onSheet ? same(byLine[static_cast<std::size_t>(read.line - 1)]) : !read.value;
    }
    if (const auto word = sheetWordOf(read.name)) {
        if (*word == SheetWord::previous)
            return same(previous);
        // Units mixed in the sum make the line fail, which its evaluation reports.
        const std::optional<Value> sum = (*word == SheetWord::blockSum ? block : all).value();
        return sum && same(sum);
    }
    const auto found = names.find(read.name);
    return found == names.end() ? !read.value : read.value && *read.value == found->second;
}

void LineContext::retain(const Program::Line& line, LineOwner owner, const Value& answer) {
    const std::size_t weight = weigh(answer, retainedItemLimit);
    if (owner == LineOwner::otherSheet) {
        if (weight > retainedItemLimit)
            throw CalcError(MessageKind::listTooBig);
        return;
    }
    const auto index = static_cast<std::size_t>(line.index);
    if (index >= m_retainedByLine.size())
        m_retainedByLine.resize(index + 1);
    std::size_t& kept = m_retainedByLine[index];
    const std::size_t total = m_retained - kept + weight;
    if (total > retainedItemLimit)
        throw CalcError(MessageKind::listTooBig);
    m_retained = total;
    kept = weight;
}

} // namespace lumo
