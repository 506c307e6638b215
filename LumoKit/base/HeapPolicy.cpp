#include "LumoKit/base/HeapPolicy.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#if __has_include(<malloc.h>) && __has_include(<sys/mman.h>) && __has_include(<unistd.h>)
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace lumo {

namespace {

#if defined(__GLIBC__) && defined(M_TOP_PAD) && defined(MADV_HUGEPAGE) && !defined(__SANITIZE_ADDRESS__) &&  \
    !defined(__SANITIZE_THREAD__)
// Grows the heap by a reserve at once and asks the kernel to back the reserve with large pages.
// A run over a long sheet writes megabytes of fresh heap, and faulting them in 4 KB at a time
// cost a tenth of a 10,000-line run. Only memory the heap was just seen to grow into is
// advised; where the kernel has no large pages the advice changes nothing.
void reserveLargePages() {
    constexpr std::ptrdiff_t reserve = 64 << 20;
    constexpr std::uintptr_t largePage = 2 << 20;
    mallopt(M_TOP_PAD, static_cast<int>(reserve));
    auto* const before = static_cast<char*>(sbrk(0));
    // No free block at start is this large, and it is below the threshold for a mapping of its
    // own (raised first), so it can only come from growing the heap, by the reserve besides.
    void* volatile probe = std::malloc(reserve / 4); // volatile: the pair must not be elided
    auto* const after = static_cast<char*>(sbrk(0));
    std::free(probe);
    if (before == reinterpret_cast<char*>(-1) || after - before < reserve)
        return;
    const std::uintptr_t begin =
        (reinterpret_cast<std::uintptr_t>(before) + largePage - 1) & ~(largePage - 1);
    const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(after) & ~(largePage - 1);
    if (end > begin)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}
#else
void reserveLargePages() {}
#endif

} // namespace

void keepHeapBetweenRuns() {
#if defined(M_MMAP_THRESHOLD) && defined(M_TRIM_THRESHOLD)
    // A run's result table (88 bytes a line) comes from the heap rather than from a
    // mapping of its own up to 32 MB, and up to 256 MB of freed heap stays for the next run.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
#endif
    reserveLargePages();
}

} // namespace lumo
