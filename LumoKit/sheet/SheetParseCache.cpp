#include "LumoKit/sheet/SheetParseCache.h"

#include <algorithm>
#include <limits>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/PlotBuilder.h"
#include "LumoKit/sheet/RunCheckpoint.h"

namespace lumo {

ParsedLine parseLine(std::string_view text) {
    ParsedLine parsedLine;
    try {
        parsedLine.statement = parseStatement(text);
    } catch (const CalcError& error) {
        parsedLine.error = error.message();
        return parsedLine;
    }
    const Expr& expression = *parsedLine.statement->expr;
    if (const auto* call = expression.as<expr::Call>())
        parsedLine.isPlot = isPlotWord(call->name) || isChartWord(call->name);
    if (const auto* identifier = expression.as<expr::Identifier>()) {
        const auto word = sheetWordOf(identifier->name);
        parsedLine.isBareSumWord = word && *word != SheetWord::previous;
    }
    return parsedLine;
}

std::optional<std::size_t> SheetParseCache::lastRunsLine(std::size_t line) const {
    if (line < m_sameAbove)
        return line;
    const std::size_t count = m_lineSlots.size();
    if (line < count && count - line <= m_sameBelow)
        return m_lastLineCount - (count - line);
    return std::nullopt;
}

SheetParseCache::Slot* SheetParseCache::lookUp(std::string_view text) {
    auto entry = m_entries.find(text);
    if (entry == m_entries.end())
        entry = m_entries
                    .emplace(std::string(text), Entry{std::make_shared<const ParsedLine>(parseLine(text)), 0})
                    .first;
    return &*entry;
}

std::shared_ptr<const ParsedLine> SheetParseCache::parsed(std::string_view text,
                                                          std::optional<std::size_t> line, bool continued) {
    Slot* slot = nullptr;
    if (line && *line < m_lineSlots.size()) {
        if (const auto last = lastRunsLine(*line))
            slot = m_lastLineSlots[*last][continued];
        if (!slot)
            slot = lookUp(text);
        m_lineSlots[*line][continued] = slot;
    } else {
        slot = lookUp(text);
    }
    slot->second.lastRun = m_run;
    m_order.push_back(slot);
    return slot->second.parse;
}

SheetParseCache::SheetParseCache() = default;
SheetParseCache::~SheetParseCache() = default;

std::size_t SheetParseCache::beginRun(const SheetLines& lines) {
    ++m_run;
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
    m_lastLineCount = lastCount;
    m_lineSlots.assign(lines.size(), {});

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
    m_order.assign(m_lastOrder.begin(), m_lastOrder.begin() + static_cast<std::ptrdiff_t>(checkpoint.asks));
    for (Slot* slot : m_order)
        slot->second.lastRun = m_run;
    std::copy_n(m_lastLineSlots.begin(), checkpoint.line, m_lineSlots.begin());
}

void SheetParseCache::keepCheckpoint(std::unique_ptr<RunCheckpoint> checkpoint) {
    m_checkpoint = std::move(checkpoint);
}

void SheetParseCache::dropCheckpoint() {
    m_checkpoint.reset();
}

// Every entry is in the last run's order or has been asked for since, so the entries to drop
// are found there, without a walk over the whole table.
void SheetParseCache::endRun() {
    constexpr std::uint64_t dropped = std::numeric_limits<std::uint64_t>::max();
    std::vector<std::string_view> unused;
    for (const auto* order : {&m_lastOrder, &m_order}) {
        for (Slot* slot : *order) {
            if (slot->second.lastRun != m_run && slot->second.lastRun != dropped) {
                slot->second.lastRun = dropped;
                unused.push_back(slot->first);
            }
        }
    }
    std::erase_if(m_order, [&](const Slot* slot) { return slot->second.lastRun == dropped; });
    m_lastOrder = std::move(m_order);
    m_order.clear();
    m_lastLineSlots = std::move(m_lineSlots);
    m_lineSlots.clear();
    // Erased last: the views point into the entries' keys.
    for (const std::string_view text : unused)
        m_entries.erase(m_entries.find(text));
}

} // namespace lumo
