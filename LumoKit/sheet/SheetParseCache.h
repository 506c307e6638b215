#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "LumoKit/sheet/Program.h"
#include "LumoKit/values/Units.h"

namespace lumo {

/// Parses a prepared line text; a failure is kept as the parser's message.
ParsedLine parseLine(std::string_view text);

/// The parses of one sheet's lines kept from one run to the next, so that a run after a
/// keystroke parses only the lines that changed.
///
/// Parses are keyed by the exact text that was parsed: a parse depends on nothing else (a
/// failed parse keeps its message's kind, not a text in one language). Each parse also carries
/// the last answer worked out from it with the reads it made (LineMemo), which a later run uses
/// only when every read gives the same value again. Entries that a run did not use are dropped
/// at its end, so the cache stays the size of the sheet. One run at a time may use a cache.
class SheetParseCache {
public:
    /// The parse of `text`, from the cache or made now.
    std::shared_ptr<const ParsedLine> parsed(std::string_view text);

    /// Called by the run around its use of the cache.
    void beginRun();
    void endRun();

    std::size_t size() const { return m_entries.size(); }

private:
    struct Entry {
        std::shared_ptr<const ParsedLine> parse;
        std::uint64_t lastRun = 0;
    };
    using Entries = std::unordered_map<std::string, Entry, TextHash, std::equal_to<>>;
    using Slot = Entries::value_type;

    // The entry for `text` if the asks follow the last run's order: a run after a keystroke
    // asks for nearly the same texts in the same order, and walking that order costs less than
    // hashing every text into a table the size of the sheet.
    Slot* inSequence(std::string_view text);

    Entries m_entries;
    std::uint64_t m_run = 0;
    // The entries in the order the last run asked for them (slots of a node-based table
    // don't move), the order of the asks since, and where the asks are in the last run's order.
    std::vector<Slot*> m_lastOrder;
    std::vector<Slot*> m_order;
    std::size_t m_cursor = 0;
};

} // namespace lumo
