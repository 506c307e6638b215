#include "LumoKit/sheet/SheetParseCache.h"

#include <algorithm>
#include <limits>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/sheet/RunCheckpoint.h"

namespace lumo {

ParsedLine parseLine(std::string_view text) {
    ParsedLine parsedLine;
    try {
        parsedLine.statement = parseStatement(text);
    } catch (const CalcError& error) {
        parsedLine.error = error.message();
    }
    return parsedLine;
}

SheetParseCache::Slot* SheetParseCache::inSequence(std::string_view text) {
    // A few entries ahead, so that a line deleted above costs no more than one changed.
    constexpr std::size_t lookAhead = 4;
    const std::size_t end = std::min(m_lastOrder.size(), m_cursor + lookAhead);
    for (std::size_t i = m_cursor; i < end; ++i) {
        if (m_lastOrder[i]->first == text) {
            m_cursor = i + 1;
            return m_lastOrder[i];
        }
    }
    return nullptr;
}

std::shared_ptr<const ParsedLine> SheetParseCache::parsed(std::string_view text) {
    Slot* slot = inSequence(text);
    if (!slot) {
        auto entry = m_entries.find(text);
        if (entry == m_entries.end())
            entry =
                m_entries
                    .emplace(std::string(text), Entry{std::make_shared<const ParsedLine>(parseLine(text)), 0})
                    .first;
        slot = &*entry;
    }
    slot->second.lastRun = m_run;
    m_order.push_back(slot);
    return slot->second.parse;
}

SheetParseCache::SheetParseCache() = default;
SheetParseCache::~SheetParseCache() = default;

std::size_t SheetParseCache::beginRun(const SheetLines& lines) {
    ++m_run;
    m_cursor = 0;
    // Only the lines from the first one that changed are written again.
    std::size_t same = 0;
    std::size_t start = 0;
    const std::size_t count = std::min(lines.size(), m_lastLineEnds.size());
    for (; same < count; ++same) {
        const std::size_t end = m_lastLineEnds[same];
        if (std::string_view(m_lastLines).substr(start, end - start) != lines[same])
            break;
        start = end;
    }
    m_lastLines.resize(start);
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
    m_cursor = checkpoint.asks;
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
    m_cursor = 0;
    // Erased last: the views point into the entries' keys.
    for (const std::string_view text : unused)
        m_entries.erase(m_entries.find(text));
}

} // namespace lumo
