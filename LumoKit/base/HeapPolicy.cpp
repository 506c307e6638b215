#include "LumoKit/base/HeapPolicy.h"

#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

namespace lumo {

void keepHeapBetweenRuns() {
#if defined(M_MMAP_THRESHOLD) && defined(M_TRIM_THRESHOLD)
    // A run's result table (about 200 bytes a line) comes from the heap rather than from a
    // mapping of its own up to 32 MB, and up to 256 MB of freed heap stays for the next run.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
#endif
}

} // namespace lumo
