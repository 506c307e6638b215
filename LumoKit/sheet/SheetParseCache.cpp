#include "LumoKit/sheet/SheetParseCache.h"

#include <algorithm>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/PlotBuilder.h"
#include "LumoKit/sheet/RunCheckpoint.h"

namespace lumo {

std::unique_ptr<const ParsedLine> parseLine(std::string_view text) {
    auto parsedLine = std::make_unique<ParsedLine>();
    try {
        parsedLine->statement = parseStatement(text, parsedLine->arena);
    } catch (const CalcError& error) {
        parsedLine->error = error.message();
        return parsedLine;
    }
    const Expr& expression = *parsedLine->statement->expr;
    if (const auto* call = expression.as<expr::Call>())
        parsedLine->isPlot = isPlotWord(call->name) || isChartWord(call->name);
    if (const auto* identifier = expression.as<expr::Identifier>()) {
        const auto word = sheetWordOf(identifier->name);
        parsedLine->isBareSumWord = word && *word != SheetWord::previous;
    }
    return parsedLine;
}

std::optional<std::size_t> SheetParseCache::lastRunsLine(std::size_t line) const {
    if (line < m_sameAbove)
        return line;
    const std::size_t count = m_lineSlots.size();
    if (line < count && count - line <= m_sameBelow)
        return m_lastLineSlots.size() - (count - line);
    return std::nullopt;
}

SheetParseCache::Slot* SheetParseCache::lookUp(std::string_view text) {
    auto entry = m_entries.find(text);
    if (entry == m_entries.end())
        entry = m_entries.emplace(std::string(text), parseLine(text)).first;
    return &*entry;
}

const ParsedLine& SheetParseCache::parsed(std::string_view text, std::optional<std::size_t> line,
                                          bool continued) {
    if (!line || *line >= m_lineSlots.size()) {
        Slot* slot = lookUp(text);
        m_otherAsks.push_back(slot);
        return *slot->second;
    }
    LineSlots& slots = m_lineSlots[*line];
    if (const auto last = lastRunsLine(*line)) {
        LineSlots& lastSlots = m_lastLineSlots[*last];
        slots[continued] = lastSlots[continued];
        slots.parse(continued) = lastSlots.parse(continued);
        if (!slots.memo)
            slots.memo = std::move(lastSlots.memo);
    }
    if (!slots[continued]) {
        slots[continued] = lookUp(text);
        slots.parse(continued) = slots[continued]->second.get();
    }
    return *slots.parse(continued);
}

SheetParseCache::UnchangedLine SheetParseCache::unchangedLine(std::size_t line, bool previousAnswered) {
    const auto last = line < m_lineSlots.size() ? lastRunsLine(line) : std::nullopt;
    if (!last)
        return {};
    LineSlots& slots = m_lineSlots[line];
    LineSlots& lastSlots = m_lastLineSlots[*last];
    // Memos and parses lie wherever their lines were first evaluated, so each visit would wait
    // on memory; lines below an edit are met in order, so the memo and statement a few lines
    // on are asked for now (measured: a third off a keystroke near the top of 10,000 lines).
    if (*last + 3 < m_lastLineSlots.size()) {
        const LineSlots& ahead = m_lastLineSlots[*last + 3];
        if (const auto* memo = reinterpret_cast<const char*>(ahead.memo.get())) {
            for (std::size_t offset = 0; offset < sizeof(LineMemo); offset += 64)
                __builtin_prefetch(memo + offset);
        }
        // The statement's name (read for every line) may lie across two cache lines.
        if (ahead.asWrittenParse) {
            const auto* statement = reinterpret_cast<const char*>(&ahead.asWrittenParse->statement);
            __builtin_prefetch(statement);
            __builtin_prefetch(statement + sizeof(std::optional<std::string>) - 1);
        }
    }
    LineMemo* memo = slots.memo ? slots.memo.get() : lastSlots.memo.get();
    if (!memo)
        return {};
    const bool continued = previousAnswered && memo->canContinue;
    // The parse is taken from the slots rather than from the memo, so that reading it need
    // not wait for the memo to arrive from memory.
    const ParsedLine* parse = lastSlots.parse(continued);
    if (memo->parse != parse)
        return {};
    slots[continued] = lastSlots[continued];
    slots.parse(continued) = parse;
    if (!slots.memo)
        slots.memo = std::move(lastSlots.memo);
    return {memo, parse};
}

SheetParseCache::SheetParseCache() = default;
SheetParseCache::~SheetParseCache() = default;

std::size_t SheetParseCache::beginRun(const SheetLines& lines) {
    // A run that never ended (it threw) left its lines recorded without their slots.
    if (m_running) {
        m_lastLines.clear();
        m_lastLineEnds.clear();
        m_lastLineSlots.clear();
        m_checkpoint.reset();
    }
    m_running = true;
    const std::size_t lastCount = m_lastLineEnds.size();
    const auto lastLine = [&](std::size_t i) {
        const std::size_t start = i == 0 ? 0 : m_lastLineEnds[i - 1];
        return std::string_view(m_lastLines).substr(start, m_lastLineEnds[i] - start);
    };
    std::size_t same = 0;
    const std::size_t count = std::min(lines.size(), lastCount);
    while (same < count && lastLine(same) == lines[same])
        ++same;
    std::size_t sameBelow = 0;
    while (same + sameBelow < count &&
           lastLine(lastCount - 1 - sameBelow) == lines[lines.size() - 1 - sameBelow])
        ++sameBelow;
    m_sameAbove = same;
    m_sameBelow = sameBelow;
    m_lineSlots.clear();
    m_lineSlots.resize(lines.size());
    recordChangedLines(lines);
    return same;
}

// Only the lines between those that stayed the same at the top and at the bottom are written;
// the ends of the lines below them move by the change in length.
void SheetParseCache::recordChangedLines(const SheetLines& lines) {
    const auto end = [&](std::size_t count) {
        return count == 0 ? std::size_t{0} : m_lastLineEnds[count - 1];
    };
    const std::size_t lastChanged = m_lastLineEnds.size() - m_sameBelow;
    const std::size_t changed = lines.size() - m_sameBelow;
    const std::size_t from = end(m_sameAbove);
    const std::size_t oldLength = end(lastChanged) - from;

    std::string written;
    std::vector<std::size_t> writtenEnds;
    writtenEnds.reserve(changed - m_sameAbove);
    for (std::size_t i = m_sameAbove; i < changed; ++i) {
        written.append(lines[i]);
        writtenEnds.push_back(from + written.size());
    }
    m_lastLines.replace(from, oldLength, written);
    const auto first = m_lastLineEnds.begin() + static_cast<std::ptrdiff_t>(m_sameAbove);
    const auto below =
        m_lastLineEnds.erase(first, m_lastLineEnds.begin() + static_cast<std::ptrdiff_t>(lastChanged));
    const auto moved = m_lastLineEnds.insert(below, writtenEnds.begin(), writtenEnds.end()) +
                       static_cast<std::ptrdiff_t>(writtenEnds.size());
    const std::size_t grown = written.size() - oldLength; // modulo 2^64: adding it shrinks too
    for (auto lineEnd = moved; lineEnd != m_lastLineEnds.end(); ++lineEnd)
        *lineEnd += grown;
}

void SheetParseCache::resumeAt(const RunCheckpoint& checkpoint) {
    std::move(m_lastLineSlots.begin(), m_lastLineSlots.begin() + static_cast<std::ptrdiff_t>(checkpoint.line),
              m_lineSlots.begin());
}

void SheetParseCache::keepCheckpoint(std::unique_ptr<RunCheckpoint> checkpoint) {
    m_checkpoint = std::move(checkpoint);
}

void SheetParseCache::dropCheckpoint() {
    m_checkpoint.reset();
}

// Only entries the last run used can have fallen out of use: those of the lines that changed,
// those of unchanged lines now parsed the other way (continued or not), and those asked for
// without a line. Whatever of them this run used stays; the table is never walked whole.
void SheetParseCache::endRun() {
    std::vector<Slot*> candidates(m_lastOtherAsks.begin(), m_lastOtherAsks.end());
    const auto offer = [&](const LineSlots& last, const LineSlots& now) {
        for (const bool continued : {false, true}) {
            if (last[continued] && last[continued] != now[continued])
                candidates.push_back(last[continued]);
        }
    };
    for (std::size_t i = 0; i < m_lineSlots.size(); ++i) {
        if (const auto last = lastRunsLine(i))
            offer(m_lastLineSlots[*last], m_lineSlots[i]);
    }
    // The last run's lines between those that stayed the same at the top and at the bottom.
    const LineSlots none;
    for (std::size_t j = m_sameAbove; j < m_lastLineSlots.size() - m_sameBelow; ++j)
        offer(m_lastLineSlots[j], none);
    if (!candidates.empty())
        dropUnused(std::move(candidates));
    // Swapped rather than moved, so that the next run fills this run's table in place.
    m_lastLineSlots.swap(m_lineSlots);
    m_lineSlots.clear();
    m_lastOtherAsks.swap(m_otherAsks);
    m_otherAsks.clear();
    m_running = false;
}

void SheetParseCache::dropUnused(std::vector<Slot*> candidates) {
    std::sort(candidates.begin(), candidates.end());
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    const auto usedBy = [](Slot* candidate) {
        return [candidate](const LineSlots& slots) {
            return slots.asWritten == candidate || slots.continued == candidate;
        };
    };
    // A keystroke leaves one or two candidates: the lines are searched for each of them,
    // which a compiler makes a tight loop; more are looked up in the sorted candidates.
    constexpr std::size_t fewCandidates = 4;
    std::vector<bool> used(candidates.size(), false);
    if (candidates.size() <= fewCandidates) {
        for (std::size_t i = 0; i < candidates.size(); ++i)
            used[i] = std::any_of(m_lineSlots.begin(), m_lineSlots.end(), usedBy(candidates[i]));
    } else {
        const auto keep = [&](Slot* slot) {
            if (const auto found = std::lower_bound(candidates.begin(), candidates.end(), slot);
                found != candidates.end() && *found == slot)
                used[static_cast<std::size_t>(found - candidates.begin())] = true;
        };
        for (const LineSlots& slots : m_lineSlots) {
            keep(slots.asWritten);
            keep(slots.continued);
        }
    }
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (!used[i] && std::find(m_otherAsks.begin(), m_otherAsks.end(), candidates[i]) == m_otherAsks.end())
            m_entries.erase(m_entries.find(candidates[i]->first));
    }
}

} // namespace lumo
