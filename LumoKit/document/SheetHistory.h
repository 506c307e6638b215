#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// The content of a sheet as the undo history sees it: its text and its locked lines.
struct SheetSnapshot {
    std::string text;
    std::vector<std::int64_t> lockedLines;

    bool operator==(const SheetSnapshot&) const = default;
};

/// The undo and redo history of one sheet. It records whole snapshots and groups them into
/// steps by itself: small edits within 0.9 s of a step's start join that step, while added or
/// removed lines, changed locks and changes of two or more characters are steps of their own.
///
/// Whether a change may join the step under way or must be a step of its own.
enum class StepBreak { whenNeeded, always };

/// Time is passed in as std::chrono::system_clock::time_point so that callers (and tests)
/// decide what "now" is; the history never reads a clock itself.
class SheetHistory {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    /// At most this many snapshots are kept on the undo stack.
    static constexpr std::size_t maxUndoSteps = 200;
    /// Small edits within this time of a step's start join that step.
    static constexpr std::chrono::milliseconds stepWindow{900};
    /// The value of lastBreakAt() after creation, undo and redo.
    static constexpr TimePoint distantPast = TimePoint::min();

    /// A history with empty stacks whose current content is `initial`.
    explicit SheetHistory(SheetSnapshot initial);

    /// Reports that the sheet now has this content; decides whether it starts a new step.
    /// With StepBreak::always the change is a step of its own, as a structural one is, so
    /// neither the typing before it nor the typing after it joins it.
    void record(SheetSnapshot snapshot, TimePoint now, StepBreak stepBreak = StepBreak::whenNeeded);

    /// The content to put back, or nothing when there is no step to undo.
    std::optional<SheetSnapshot> undo();
    /// The content to restore, or nothing when there is no step to redo.
    std::optional<SheetSnapshot> redo();

    bool canUndo() const { return !m_past.empty(); }
    bool canRedo() const { return !m_future.empty(); }

    /// Whether the current content equals this text and these locked lines.
    bool matches(std::string_view text, const std::vector<std::int64_t>& lockedLines) const;

    const SheetSnapshot& current() const { return m_current; }
    /// The undo stack, oldest first.
    const std::vector<SheetSnapshot>& past() const { return m_past; }
    /// The redo stack, the next redo last.
    const std::vector<SheetSnapshot>& future() const { return m_future; }
    TimePoint lastBreakAt() const { return m_lastBreakAt; }
    bool forceBreak() const { return m_forceBreak; }

private:
    enum class Change { small, structural };

    Change classify(const SheetSnapshot& next) const;
    void startStep(SheetSnapshot next, TimePoint now, Change change);

    std::vector<SheetSnapshot> m_past;
    std::vector<SheetSnapshot> m_future;
    SheetSnapshot m_current;
    TimePoint m_lastBreakAt = distantPast;
    bool m_forceBreak = false;
};

} // namespace lumo
