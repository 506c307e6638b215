#include "LumoUI/store/EditableDocument.h"

#include <algorithm>
#include <chrono>

namespace lumo {

EditableDocument::EditableDocument(std::function<Timestamp()> clock)
    : m_clock(clock ? std::move(clock) : &Timestamp::now) {}

void EditableDocument::replace(LumoDocument document) {
    m_hybridClock.observe(document);
    m_document = std::move(document);
    std::erase_if(m_histories, [this](const auto& entry) { return !sheet(entry.first); });
}

Timestamp EditableDocument::now() const {
    return m_hybridClock.tick(m_clock());
}

SheetHistory::TimePoint EditableDocument::historyTime() const {
    using namespace std::chrono;
    return system_clock::time_point(
        duration_cast<system_clock::duration>(duration<double>(m_clock().seconds)));
}

const Sheet* EditableDocument::sheet(const Uuid& id) const {
    const int index = indexOf(id);
    return index < 0 ? nullptr : &m_document.sheets[std::size_t(index)];
}

Sheet* EditableDocument::findSheet(const Uuid& id) {
    const int index = indexOf(id);
    return index < 0 ? nullptr : &m_document.sheets[std::size_t(index)];
}

int EditableDocument::indexOf(const Uuid& id) const {
    const auto& sheets = m_document.sheets;
    const auto found = std::find_if(sheets.begin(), sheets.end(), [&](const Sheet& s) { return s.id == id; });
    return found == sheets.end() ? -1 : int(found - sheets.begin());
}

SheetHistory& EditableDocument::history(const Sheet& sheet) {
    return m_histories.try_emplace(sheet.id, SheetSnapshot{sheet.text, sheet.lockedLines}).first->second;
}

Sheet EditableDocument::makeEmptySheet(std::string name) const {
    return Sheet{Uuid::random(), std::move(name), {}, now(), {}};
}

// MARK: - Content and undo

bool EditableDocument::setContent(const Uuid& sheetID, SheetSnapshot content, StepBreak stepBreak) {
    Sheet* target = findSheet(sheetID);
    if (!target || (target->text == content.text && target->lockedLines == content.lockedLines))
        return false;
    // The history starts from the content before this change.
    SheetHistory& sheetHistory = history(*target);
    target->text = content.text;
    target->lockedLines = content.lockedLines;
    target->updatedAt = now();
    if (!sheetHistory.matches(target->text, target->lockedLines))
        sheetHistory.record(std::move(content), historyTime(), stepBreak);
    m_untouchedStarter = false;
    return true;
}

bool EditableDocument::undo(const Uuid& sheetID) {
    return restore(sheetID, &SheetHistory::undo);
}

bool EditableDocument::redo(const Uuid& sheetID) {
    return restore(sheetID, &SheetHistory::redo);
}

// Puts back the content of an undo or redo step; without a step there is nothing to do.
bool EditableDocument::restore(const Uuid& sheetID, std::optional<SheetSnapshot> (SheetHistory::*step)()) {
    Sheet* target = findSheet(sheetID);
    if (!target)
        return false;
    std::optional<SheetSnapshot> snapshot = (history(*target).*step)();
    if (!snapshot)
        return false;
    target->text = std::move(snapshot->text);
    target->lockedLines = std::move(snapshot->lockedLines);
    target->updatedAt = now();
    m_untouchedStarter = false;
    return true;
}

bool EditableDocument::canUndo(const Uuid& sheetID) {
    const Sheet* shown = sheet(sheetID);
    return shown && history(*shown).canUndo();
}

bool EditableDocument::canRedo(const Uuid& sheetID) {
    const Sheet* shown = sheet(sheetID);
    return shown && history(*shown).canRedo();
}

void EditableDocument::startHistory(const Uuid& sheetID) {
    if (const Sheet* target = sheet(sheetID))
        history(*target);
}

// MARK: - Sheets

Uuid EditableDocument::appendSheet(std::string name) {
    Sheet added = makeEmptySheet(std::move(name));
    const Uuid id = added.id;
    m_document.sheets.push_back(std::move(added));
    m_document.selectedSheetID = id;
    m_untouchedStarter = false;
    return id;
}

std::optional<Uuid> EditableDocument::duplicateSheet(const Uuid& sheetID, std::string name) {
    const int index = indexOf(sheetID);
    if (index < 0)
        return std::nullopt;
    Sheet copy = m_document.sheets[std::size_t(index)];
    copy.id = Uuid::random();
    copy.name = std::move(name);
    copy.updatedAt = now();
    const Uuid id = copy.id;
    m_document.sheets.insert(m_document.sheets.begin() + index + 1, std::move(copy));
    m_document.selectedSheetID = id;
    m_untouchedStarter = false;
    return id;
}

bool EditableDocument::renameSheet(const Uuid& sheetID, const std::string& name) {
    Sheet* target = findSheet(sheetID);
    if (!target || target->name == name)
        return false;
    target->name = name;
    target->updatedAt = now();
    m_untouchedStarter = false;
    return true;
}

bool EditableDocument::moveSheet(const Uuid& sheetID, int toIndex) {
    const int from = indexOf(sheetID);
    if (from < 0)
        return false;
    auto& sheets = m_document.sheets;
    const int to = std::clamp(toIndex, 0, int(sheets.size()) - 1);
    if (to == from)
        return false;
    Sheet moved = std::move(sheets[std::size_t(from)]);
    sheets.erase(sheets.begin() + from);
    sheets.insert(sheets.begin() + to, std::move(moved));
    m_document.sheetOrderUpdatedAt = now();
    m_untouchedStarter = false;
    return true;
}

std::optional<Uuid> EditableDocument::deleteSheet(const Uuid& sheetID, const std::string& replacementName) {
    const int index = indexOf(sheetID);
    if (index < 0)
        return std::nullopt;
    auto& sheets = m_document.sheets;
    sheets.erase(sheets.begin() + index);
    m_document.deletedSheets[sheetID.toString()] = now();
    m_histories.erase(sheetID);
    if (sheets.empty())
        sheets.push_back(makeEmptySheet(replacementName));
    // The neighbour that takes the deleted sheet's place is shown instead.
    const Uuid neighbour = sheets[std::size_t(std::min(index, int(sheets.size()) - 1))].id;
    if (m_document.selectedSheetID == sheetID || !m_document.selectedSheetID ||
        !sheet(*m_document.selectedSheetID))
        m_document.selectedSheetID = neighbour;
    m_untouchedStarter = false;
    return neighbour;
}

void EditableDocument::setKeyLayouts(KeyLayouts layouts, Timestamp updatedAt) {
    m_document.keyLayouts = std::move(layouts);
    m_document.keyLayoutsUpdatedAt = updatedAt;
}

bool EditableDocument::select(const Uuid& sheetID) {
    if (!sheet(sheetID) || m_document.selectedSheetID == sheetID)
        return false;
    m_document.selectedSheetID = sheetID;
    return true;
}

Uuid EditableDocument::eraseAll(std::string name) {
    const Timestamp erasedAt = now();
    for (const Sheet& erased : m_document.sheets)
        m_document.deletedSheets[erased.id.toString()] = erasedAt;
    Sheet fresh = makeEmptySheet(std::move(name));
    const Uuid id = fresh.id;
    m_document.sheets = {std::move(fresh)};
    m_document.selectedSheetID = id;
    m_histories.clear();
    m_untouchedStarter = false;
    return id;
}

} // namespace lumo
