#include "SheetHistory.h"

namespace lumo {

SheetHistory::SheetHistory(SheetSnapshot initial) : m_current(std::move(initial)) {}

void SheetHistory::record(SheetSnapshot, TimePoint) {}

std::optional<SheetSnapshot> SheetHistory::undo() { return std::nullopt; }

std::optional<SheetSnapshot> SheetHistory::redo() { return std::nullopt; }

bool SheetHistory::matches(std::string_view, const std::vector<std::int64_t>&) const { return false; }

SheetHistory::Change SheetHistory::classify(const SheetSnapshot&) const { return Change::small; }

void SheetHistory::startStep(SheetSnapshot, TimePoint, Change) {}

} // namespace lumo
