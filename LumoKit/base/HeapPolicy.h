#pragma once

namespace lumo {

/// Asks the C library to keep the memory it got from the system between sheet runs instead of
/// handing it back after each one. A process that evaluates again on every keystroke would
/// otherwise fault the same pages in on every run, which on a long sheet costs more than the
/// evaluation itself. For long-lived processes: call once at start, before any thread exists.
void keepHeapBetweenRuns();

} // namespace lumo
