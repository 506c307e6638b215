#include "LumoKit/sheet/SheetParseCache.h"

#include <algorithm>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/PlotBuilder.h"
#include "LumoKit/sheet/RunCheckpoint.h"

namespace lumo {

std::shared_ptr<const ParsedLine> parseLine(std::string_view text) {
    auto parsedLine = std::make_shared<ParsedLine>();
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

std::shared_ptr<const ParsedLine> SheetParseCache::parsed(std::string_view text,
                                                          std::optional<std::size_t> line, bool continued) {
    if (!line || *line >= m_lineSlots.size()) {
        Slot* slot = lookUp(text);
        m_otherAsks.push_back(slot);
        return slot->second;
    }
    LineSlots& slots = m_lineSlots[*line];
    if (const auto last = lastRunsLine(*line)) {
        slots[continued] = m_lastLineSlots[*last][continued];
        if (!slots.memo)
            slots.memo = std::move(m_lastLineSlots[*last].memo);
    }
    if (!slots[continued])
        slots[continued] = lookUp(text);
    return slots[continued]->second;
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

    // Only the lines from the first one that changed are written again.
    m_lastLines.resize(same == 0 ? 0 : m_lastLineEnds[same - 1]);
    m_lastLineEnds.resize(same);
    for (std::size_t i = same; i < lines.size(); ++i) {
        m_lastLines.append(lines[i]);
        m_lastLineEnds.push_back(m_lastLines.size());
    }
    return same;
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
    if (!candidates.empty()) {
        std::sort(candidates.begin(), candidates.end());
        candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
        std::vector<bool> used(candidates.size(), false);
        const auto keep = [&](Slot* slot) {
            if (const auto found = std::lower_bound(candidates.begin(), candidates.end(), slot);
                found != candidates.end() && *found == slot)
                used[static_cast<std::size_t>(found - candidates.begin())] = true;
        };
        for (const LineSlots& slots : m_lineSlots) {
            keep(slots.asWritten);
            keep(slots.continued);
        }
        for (Slot* slot : m_otherAsks)
            keep(slot);
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            if (!used[i])
                m_entries.erase(m_entries.find(candidates[i]->first));
        }
    }
    m_lastLineSlots = std::move(m_lineSlots);
    m_lineSlots.clear();
    m_lastOtherAsks = std::move(m_otherAsks);
    m_otherAsks.clear();
    m_running = false;
}

} // namespace lumo
