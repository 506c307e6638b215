#include "LumoKit/document/SheetHistory.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "LumoKit/base/Unicode.h"

namespace lumo {

namespace {

// How many bytes two texts share at the start: whole blocks through memcmp, then bytes, since
// a keystroke's texts are equal for all but a few bytes of a long sheet.
std::size_t commonPrefix(std::string_view a, std::string_view b) {
    constexpr std::size_t block = 64;
    const std::size_t shorter = std::min(a.size(), b.size());
    std::size_t at = 0;
    while (at + block <= shorter && std::memcmp(a.data() + at, b.data() + at, block) == 0)
        at += block;
    while (at < shorter && a[at] == b[at])
        ++at;
    return at;
}

// The same at the end, without reaching into the first `skip` bytes of either.
std::size_t commonSuffix(std::string_view a, std::string_view b, std::size_t skip) {
    constexpr std::size_t block = 64;
    const std::size_t limit = std::min(a.size(), b.size()) - skip;
    std::size_t length = 0;
    while (length + block <= limit && std::memcmp(a.data() + a.size() - length - block,
                                                  b.data() + b.size() - length - block, block) == 0)
        length += block;
    while (length < limit && a[a.size() - 1 - length] == b[b.size() - 1 - length])
        ++length;
    return length;
}

std::size_t newlineCount(std::string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

// The parts of two texts between what they share at the start and at the end, widened to
// whole lines.
std::pair<std::string_view, std::string_view> differingLines(std::string_view before,
                                                             std::string_view after) {
    std::size_t prefix = commonPrefix(before, after);
    std::size_t suffix = commonSuffix(before, after, prefix);
    const std::size_t lineStart = prefix == 0 ? std::string_view::npos : before.rfind('\n', prefix - 1);
    prefix = lineStart == std::string_view::npos ? 0 : lineStart + 1;
    const std::string_view common = before.substr(before.size() - suffix);
    const std::size_t lineEnd = common.find('\n');
    suffix = lineEnd == std::string_view::npos ? 0 : suffix - (lineEnd + 1);
    return {before.substr(prefix, before.size() - suffix - prefix),
            after.substr(prefix, after.size() - suffix - prefix)};
}

// Lengths are compared in user-perceived characters, so that typing one emoji or one
// accented letter counts as a single character however many scalars it takes. Only the lines
// that differ are counted: a character always ends at a line feed, so the identical lines
// around them hold as many characters in both texts.
bool lengthChangedByTwoOrMore(std::string_view before, std::string_view after) {
    const std::size_t a = unicode::graphemeCount(before);
    const std::size_t b = unicode::graphemeCount(after);
    return (a > b ? a - b : b - a) >= 2;
}

} // namespace

SheetHistory::SheetHistory(SheetSnapshot initial) : m_current(std::move(initial)) {}

SheetHistory::Change SheetHistory::classify(const SheetSnapshot& next) const {
    if (next.lockedLines != m_current.lockedLines)
        return Change::structural;
    // Lines outside the differing ones are the same in both texts, so they hold as many line
    // feeds and characters in each.
    const auto [before, after] = differingLines(m_current.text, next.text);
    if (newlineCount(before) != newlineCount(after))
        return Change::structural;
    if (lengthChangedByTwoOrMore(before, after))
        return Change::structural;
    return Change::small;
}

void SheetHistory::record(SheetSnapshot snapshot, TimePoint now, StepBreak stepBreak) {
    if (snapshot == m_current)
        return;
    auto change = stepBreak == StepBreak::always ? Change::structural : classify(snapshot);
    // The window is measured from the step's start, not from the last keystroke, so a step
    // never grows beyond 0.9 s. Comparing against lastBreakAt + window (rather than
    // subtracting) keeps the distant past from overflowing the duration.
    bool joinsStep = change == Change::small && !m_forceBreak && now < m_lastBreakAt + stepWindow;
    if (joinsStep) {
        m_current = std::move(snapshot);
        return;
    }
    startStep(std::move(snapshot), now, change);
}

void SheetHistory::startStep(SheetSnapshot next, TimePoint now, Change change) {
    m_past.push_back(std::move(m_current));
    if (m_past.size() > maxUndoSteps)
        m_past.erase(m_past.begin(), m_past.end() - static_cast<std::ptrdiff_t>(maxUndoSteps));
    m_future.clear();
    m_current = std::move(next);
    m_lastBreakAt = now;
    // After a structural change the next small edit must start its own step, so that a
    // pasted block or a new line stays separately undoable from the typing around it.
    m_forceBreak = change == Change::structural;
}

std::optional<SheetSnapshot> SheetHistory::undo() {
    if (m_past.empty())
        return std::nullopt;
    SheetSnapshot restored = std::move(m_past.back());
    m_past.pop_back();
    m_future.push_back(std::move(m_current));
    m_current = restored;
    m_lastBreakAt = distantPast;
    return restored;
}

std::optional<SheetSnapshot> SheetHistory::redo() {
    if (m_future.empty())
        return std::nullopt;
    SheetSnapshot restored = std::move(m_future.back());
    m_future.pop_back();
    // Redo gives back steps that undo took, so the stack can't outgrow its limit here.
    m_past.push_back(std::move(m_current));
    m_current = restored;
    m_lastBreakAt = distantPast;
    return restored;
}

bool SheetHistory::matches(std::string_view text, const std::vector<std::int64_t>& lockedLines) const {
    return m_current.text == text && m_current.lockedLines == lockedLines;
}

} // namespace lumo
