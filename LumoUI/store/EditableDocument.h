#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "LumoKit/document/Document.h"
#include "LumoKit/document/SheetHistory.h"
#include "LumoKit/document/ThreeWayMerge.h"

namespace lumo {

/// The user's document as the store edits it. Every change is dated by the clock, content
/// changes go into the sheet's undo history, and any edit makes the document the user's own
/// rather than the untouched starter document.
class EditableDocument {
public:
    /// `clock` is the store's notion of now.
    explicit EditableDocument(std::function<Timestamp()> clock);

    const LumoDocument& document() const { return m_document; }
    /// Replaces the whole document (loading, merging); histories of sheets that are gone are
    /// dropped.
    void replace(LumoDocument document);

    /// A time stamp for a change: the clock's time to the millisecond, but always later than
    /// every time stamp given before and every time in the documents this one has replaced, so a
    /// change made after a merge is later than everything merged even when another device's clock
    /// runs ahead of this one's.
    Timestamp now() const;

    const Sheet* sheet(const Uuid& id) const;
    /// The sheet's place in the tab order, or -1.
    int indexOf(const Uuid& id) const;

    /// Whether the document is the starter document that nobody has changed yet.
    bool isUntouchedStarter() const { return m_untouchedStarter; }
    void setUntouchedStarter(bool untouched) { m_untouchedStarter = untouched; }

    /// Gives a sheet new text and locks; false when the sheet is unknown or nothing changes.
    bool setContent(const Uuid& sheetID, SheetSnapshot content, StepBreak stepBreak = StepBreak::whenNeeded);
    /// Appends an empty sheet, selects it and returns its identifier.
    Uuid appendSheet(std::string name);
    /// Inserts a selected copy after the original; nothing for an unknown sheet.
    std::optional<Uuid> duplicateSheet(const Uuid& sheetID, std::string name);
    bool renameSheet(const Uuid& sheetID, const std::string& name);
    bool moveSheet(const Uuid& sheetID, int toIndex);
    /// Deletes a sheet with a tombstone and returns the sheet that takes its place (a new empty
    /// one named `replacementName` after the last); nothing for an unknown sheet.
    std::optional<Uuid> deleteSheet(const Uuid& sheetID, const std::string& replacementName);
    /// Takes layouts from the keypad; not an edit of any sheet.
    void setKeyLayouts(KeyLayouts layouts, Timestamp updatedAt);
    /// Makes a sheet the document's selection; false when it is unknown or already selected.
    bool select(const Uuid& sheetID);
    /// Replaces every sheet by one empty sheet, leaving tombstones; returns the new sheet.
    Uuid eraseAll(std::string name);

    /// Puts back the previous or next step of a sheet's history; false when there is none.
    bool undo(const Uuid& sheetID);
    bool redo(const Uuid& sheetID);
    bool canUndo(const Uuid& sheetID);
    bool canRedo(const Uuid& sheetID);
    /// Starts a sheet's history from its current content unless it has one.
    void startHistory(const Uuid& sheetID);
    void clearHistories() { m_histories.clear(); }

private:
    // Undo steps are grouped within fractions of a second, so the history gets the precise time.
    SheetHistory::TimePoint historyTime() const;
    Sheet* findSheet(const Uuid& id);
    SheetHistory& history(const Sheet& sheet);
    Sheet makeEmptySheet(std::string name) const;
    bool restore(const Uuid& sheetID, std::optional<SheetSnapshot> (SheetHistory::*step)());

    std::function<Timestamp()> m_clock;
    mutable HybridClock m_hybridClock;
    LumoDocument m_document;
    std::unordered_map<Uuid, SheetHistory> m_histories;
    bool m_untouchedStarter = false;
};

} // namespace lumo
