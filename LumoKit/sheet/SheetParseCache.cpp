#include "LumoKit/sheet/SheetParseCache.h"

#include <iterator>

#include "LumoKit/base/CalcError.h"

namespace lumo {

ParsedLine parseLine(std::string_view text) {
    ParsedLine parsedLine{std::nullopt, {}};
    try {
        parsedLine.statement = parseStatement(text);
    } catch (const CalcError& error) {
        parsedLine.error = error.message();
    }
    return parsedLine;
}

std::shared_ptr<const ParsedLine> SheetParseCache::parsed(std::string_view text) {
    auto entry = m_entries.find(text);
    if (entry == m_entries.end())
        entry = m_entries
                    .emplace(std::string(text), Entry{std::make_shared<const ParsedLine>(parseLine(text)), 0})
                    .first;
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
