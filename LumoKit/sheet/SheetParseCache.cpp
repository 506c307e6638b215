#include "LumoKit/sheet/SheetParseCache.h"

#include <algorithm>
#include <limits>

#include "LumoKit/base/CalcError.h"

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

void SheetParseCache::beginRun() {
    ++m_run;
    m_cursor = 0;
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
