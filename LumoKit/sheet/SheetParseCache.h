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

struct RunCheckpoint;

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
///
/// The cache also keeps the sheet's lines as the last run met them, and where a run may start
/// instead of at the top (RunCheckpoint).
class SheetParseCache {
public:
    SheetParseCache();
    ~SheetParseCache();
    SheetParseCache(const SheetParseCache&) = delete;
    SheetParseCache& operator=(const SheetParseCache&) = delete;

    /// The parse of `text`, from the cache or made now.
    std::shared_ptr<const ParsedLine> parsed(std::string_view text);

    /// Called by the run around its use of the cache. beginRun gives how many lines at the
    /// top are the same as the last run's.
    std::size_t beginRun(const SheetLines& lines);
    void endRun();

    /// Where a run may start, if anywhere.
    const RunCheckpoint* checkpoint() const { return m_checkpoint.get(); }
    /// A run that starts at the checkpoint: the parses its lines above asked for count as
    /// asked by this run too.
    void resumeAt(const RunCheckpoint& checkpoint);
    void keepCheckpoint(std::unique_ptr<RunCheckpoint> checkpoint);
    void dropCheckpoint();
    /// How many parses this run has asked for so far.
    std::size_t asks() const { return m_order.size(); }

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
    // The last run's lines one after the other, and where each ends.
    std::string m_lastLines;
    std::vector<std::size_t> m_lastLineEnds;
    std::unique_ptr<RunCheckpoint> m_checkpoint;
};

} // namespace lumo
