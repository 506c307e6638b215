#pragma once

#include <cstdint>
#include <limits>
#include <map>

#include "LumoKit/document/Document.h"

namespace lumo {

/// A hybrid logical clock in milliseconds: it follows the wall clock, but a time it gives is
/// always later than every time it gave or saw before, so a change made after reading a document
/// is later than everything in it even when this machine's clock is behind the writer's.
class HybridClock {
public:
    /// A time for a change made now.
    Timestamp tick(Timestamp wall);
    /// Records a time read from a document.
    void observe(Timestamp time);
    /// Records every time in a document.
    void observe(const LumoDocument& document);

private:
    std::int64_t m_lastMilliseconds = std::numeric_limits<std::int64_t>::min();
};

/// A time rounded to the millisecond, the precision the file keeps; times built this way compare
/// equal to the same time read back from a file.
Timestamp roundedToMilliseconds(Timestamp time);

/// The document with every date later than `limit` brought back to `limit`: a copy written on a
/// machine whose clock runs ahead must not outrank every later change made elsewhere.
LumoDocument cappedAt(LumoDocument document, Timestamp limit);

/// Where a merge came from, beside the merged document.
struct ThreeWayMergeResult {
    LumoDocument document;
    /// How many sheets were kept as conflict copies.
    int conflicts = 0;
};

/// Merges `remote` into `local`, knowing `base`: the copy both last had in common (what the shared
/// file held when this device last read or wrote it). Every part that only one side changed since
/// the base is taken from that side whatever the dates say; parts changed on both sides are decided
/// by the dates as in LumoDocument::merged(), with ties broken the same way on every device. When
/// both sides changed the text of one sheet, the losing text is kept as a sheet of its own named
/// "<name> (conflict)", right after the winner. Without a base, everything is decided by the dates
/// and no conflict sheets are made. Dates in `remote` later than `now` are capped at `now` first.
ThreeWayMergeResult threeWayMerged(const LumoDocument& local, const LumoDocument& remote,
                                   const LumoDocument* base, Timestamp now);

/// The document normalised (see LumoDocument::normalized()), with the sheets that were removed as
/// duplicates mapped to the twin that was kept, so that changes sent to a removed sheet can follow.
struct NormalizedDocument {
    LumoDocument document;
    std::map<Uuid, Uuid> twins;
};
NormalizedDocument normalizedWithTwins(const LumoDocument& document, Timestamp now);
/// The sheets of `before` that `after` no longer has, each with the sheet of `after` that has
/// its name and text: where an edit meant for a removed duplicate goes on.
std::map<Uuid, Uuid> twinsRemoved(const LumoDocument& before, const LumoDocument& after);

} // namespace lumo
