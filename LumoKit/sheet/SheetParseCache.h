#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "LumoKit/sheet/LineMemo.h"
#include "LumoKit/sheet/Program.h"
#include "LumoKit/values/Units.h"

namespace lumo {

struct RunCheckpoint;

/// Parses a prepared line text; a failure is kept as the parser's message.
std::unique_ptr<const ParsedLine> parseLine(std::string_view text);

/// The parses of one sheet's lines kept from one run to the next, so that a run after a
/// keystroke parses only the lines that changed.
///
/// Parses are keyed by the exact text that was parsed: a parse depends on nothing else (a
/// failed parse keeps its message's kind, not a text in one language). Entries that a run did
/// not use are dropped at its end, so the cache stays the size of the sheet. One run at a time
/// may use a cache.
///
/// Each line also keeps its last answer with the reads it made (LineMemo), which a later run
/// uses only when every read gives the same value again. Memos belong to lines, not texts: the
/// "sum" closing every block of a sheet reads a different sum in each.
///
/// The cache also keeps the sheet's lines as the last run met them, and where a run may start
/// instead of at the top (RunCheckpoint).
class SheetParseCache {
public:
    SheetParseCache();
    ~SheetParseCache();
    SheetParseCache(const SheetParseCache&) = delete;
    SheetParseCache& operator=(const SheetParseCache&) = delete;

    /// The parse of `text`, from the cache or made now. `line` is the 0-based line of this
    /// sheet the text was prepared from (as continued with "prev " when `continued`), if it is
    /// one: a line the run knows to be unchanged finds its parse without its text being compared.
    /// The parse stays until the end of the next run that does not use it.
    const ParsedLine& parsed(std::string_view text, std::optional<std::size_t> line = {},
                             bool continued = false);

    /// The memo of line `line` (0-based) of this run; the line's parse must have been asked
    /// for first. An unchanged line brings its memo from the last run.
    std::unique_ptr<LineMemo>& memo(std::size_t line) { return m_lineSlots[line].memo; }

    /// An unchanged line's memo with the parse it was made from.
    struct UnchangedLine {
        LineMemo* memo = nullptr;
        const ParsedLine* parse = nullptr;
    };
    /// The memo of line `line` (0-based) if the line is the same as in the last run and its
    /// memo was made from the parse it is read with now (as continued when `previousAnswered`
    /// and the text starts like a continuation); the line's parse comes along as if asked for.
    /// Nothing otherwise, and nothing is brought.
    UnchangedLine unchangedLine(std::size_t line, bool previousAnswered);

    /// How many names the last run ended with, for making room at once.
    std::size_t lastRunsNameCount() const { return m_lastRunsNameCount; }
    void setNameCount(std::size_t count) { m_lastRunsNameCount = count; }

    /// Called by the run around its use of the cache. beginRun gives how many lines at the
    /// top are the same as the last run's.
    std::size_t beginRun(const SheetLines& lines);
    void endRun();

    /// Where a run may start, if anywhere.
    const RunCheckpoint* checkpoint() const { return m_checkpoint.get(); }
    /// A run that starts at the checkpoint: the lines above it keep their parses and memos.
    void resumeAt(const RunCheckpoint& checkpoint);
    void keepCheckpoint(std::unique_ptr<RunCheckpoint> checkpoint);
    void dropCheckpoint();

    std::size_t size() const { return m_entries.size(); }

private:
    using Entries =
        std::unordered_map<std::string, std::unique_ptr<const ParsedLine>, TextHash, std::equal_to<>>;
    using Slot = Entries::value_type;

    // The entries a line's two parses use, the parses themselves, and its memo, by 0-based line.
    // A run reads the parses of unchanged lines from here, one line after the other, without
    // visiting the table's scattered entries.
    struct LineSlots {
        Slot* asWritten = nullptr;
        Slot* continued = nullptr;
        const ParsedLine* asWrittenParse = nullptr;
        const ParsedLine* continuedParse = nullptr;
        std::unique_ptr<LineMemo> memo;

        Slot*& operator[](bool continuedSlot) { return continuedSlot ? continued : asWritten; }
        Slot* operator[](bool continuedSlot) const { return continuedSlot ? continued : asWritten; }
        const ParsedLine*& parse(bool continuedSlot) {
            return continuedSlot ? continuedParse : asWrittenParse;
        }
    };

    // The last run's line with the same text as `line` of this run, known from where the two
    // texts start and end the same.
    std::optional<std::size_t> lastRunsLine(std::size_t line) const;
    Slot* lookUp(std::string_view text);
    // Drops the candidates that no line of this run and no other ask used.
    void dropUnused(std::vector<Slot*> candidates);
    // Writes the lines of this run that differ from the last run's into the record of them.
    void recordChangedLines(const SheetLines& lines);

    Entries m_entries;
    // The entries each line used, in the last run and in this one (slots of a node-based table
    // don't move), and those asked for without a line of this sheet.
    std::vector<LineSlots> m_lastLineSlots;
    std::vector<LineSlots> m_lineSlots;
    std::vector<Slot*> m_lastOtherAsks;
    std::vector<Slot*> m_otherAsks;
    // How many lines at the top and at the bottom are the same as the last run's.
    std::size_t m_sameAbove = 0;
    std::size_t m_sameBelow = 0;
    // The last run's lines one after the other, and where each ends.
    std::string m_lastLines;
    std::vector<std::size_t> m_lastLineEnds;
    std::unique_ptr<RunCheckpoint> m_checkpoint;
    std::size_t m_lastRunsNameCount = 0;
    bool m_running = false; // between beginRun and endRun
};

} // namespace lumo
