#include "LumoKit/sheet/SheetParseCache.h"

#include <iterator>

#include "LumoKit/base/CalcError.h"

namespace lumo {

ParsedLine parseLine(std::string text) {
    ParsedLine parsedLine{std::move(text), std::nullopt, {}};
    try {
        parsedLine.statement = parseStatement(parsedLine.text);
    } catch (const CalcError& error) {
        parsedLine.error = error.message();
    }
    return parsedLine;
}

std::shared_ptr<const ParsedLine> SheetParseCache::parsed(const std::string& text) {
    auto [entry, added] = m_entries.try_emplace(text);
    if (added)
        entry->second.parse = std::make_shared<const ParsedLine>(parseLine(text));
    entry->second.lastRun = m_run;
    return entry->second.parse;
}

void SheetParseCache::beginRun() {
    ++m_run;
}

void SheetParseCache::endRun() {
    for (auto entry = m_entries.begin(); entry != m_entries.end();)
        entry = entry->second.lastRun == m_run ? std::next(entry) : m_entries.erase(entry);
}

} // namespace lumo
