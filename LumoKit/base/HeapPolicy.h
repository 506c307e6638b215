#pragma once

namespace lumo {

/// Asks the C library to keep the memory it got from the system between sheet runs instead of
/// handing it back after each one. A process that evaluates again on every keystroke would
/// otherwise fault the same pages in on every run, which on a long sheet costs more than the
/// evaluation itself. The heap also grows by a large reserve at once, backed by large pages
/// where the kernel offers them, so that a long sheet's first run faults in few pages. Call
/// once at start, before any thread exists.
void keepHeapBetweenRuns();

} // namespace lumo
