#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/document/ThreeWayMerge.h"
#include "support/DocumentTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

constexpr double t = 1'000'000;
constexpr double now = t + 100;

// "A:text B:text" in document order.
std::string summary(const LumoDocument& d) {
    std::string out;
    for (const Sheet& s : d.sheets)
        out += (out.empty() ? "" : " ") + s.name + ":" + s.text;
    return out;
}

const LumoDocument base = document({sheet('A', t, "a"), sheet('B', t, "b")});

} // namespace

TEST(ThreeWayMerge, SheetsChangedOnOneSideOrBoth) {
    L10n::setCurrent(AppLanguage::english);
    const double year = 365 * 86400.0;
    const struct {
        const char* name;
        LumoDocument local;
        LumoDocument remote;
        bool withBase;
        const char* expected;
    } cases[] = {
        {"only the remote changed: taken though its date is earlier",
         document({sheet('A', t + year, "a"), sheet('B', t, "b")}),
         document({sheet('A', t + 5, "a2"), sheet('B', t, "b")}), true, "A:a2 B:b"},
        {"only the local changed", document({sheet('A', t + 5, "mine"), sheet('B', t, "b")}),
         document({sheet('A', t, "a"), sheet('B', t + 9, "b2")}), true, "A:mine B:b2"},
        {"both changed: the later wins, the other is kept beside it",
         document({sheet('A', t + 5, "mine"), sheet('B', t, "b")}),
         document({sheet('A', t + 6, "theirs"), sheet('B', t, "b")}), true, "A:theirs A (conflict):mine B:b"},
        {"both changed to the same text: no conflict copy",
         document({sheet('A', t + 5, "same"), sheet('B', t, "b")}),
         document({sheet('A', t + 6, "same"), sheet('B', t, "b")}), true, "A:same B:b"},
        {"without a base the dates decide and nothing is kept beside",
         document({sheet('A', t + 5, "mine"), sheet('B', t, "b")}),
         document({sheet('A', t + 6, "theirs"), sheet('B', t, "b")}), false, "A:theirs B:b"},
        {"the remote deleted an unchanged sheet, though before its date",
         document({sheet('A', t + year, "a"), sheet('B', t, "b")}),
         document({sheet('B', t, "b")}, {tomb('A', t + 1)}), true, "B:b"},
        {"the local deleted a sheet the remote left alone",
         document({sheet('B', t, "b")}, {tomb('A', t + 1)}),
         document({sheet('A', t, "a"), sheet('B', t, "b")}), true, "B:b"},
        {"an edit after a deletion survives", document({sheet('B', t, "b")}, {tomb('A', t + 1)}),
         document({sheet('A', t + 2, "edited"), sheet('B', t, "b")}), true, "B:b A:edited"},
        {"a deletion after an edit wins", document({sheet('B', t, "b")}, {tomb('A', t + 3)}),
         document({sheet('A', t + 2, "edited"), sheet('B', t, "b")}), true, "B:b"},
    };
    for (const auto& c : cases) {
        const auto merged = threeWayMerged(c.local, c.remote, c.withBase ? &base : nullptr, Timestamp{now});
        EXPECT_EQ(summary(merged.document), c.expected) << c.name;
    }

    // Capped at the merge time: a local edit made after it wins.
    const auto capped = threeWayMerged(base, document({sheet('A', t + year, "future"), sheet('B', t, "b")}),
                                       nullptr, Timestamp{now});
    EXPECT_EQ(capped.document.sheets[0].updatedAt, Timestamp{now});
    L10n::setCurrent(AppLanguage::japanese);
    const auto japanese = threeWayMerged(document({sheet('A', t + 5, "mine")}),
                                         document({sheet('A', t + 6, "x")}), &base, Timestamp{now});
    EXPECT_EQ(japanese.document.sheets.at(1).name, "A（競合）");
    L10n::setCurrent(AppLanguage::system);
}

TEST(ThreeWayMerge, BothDevicesReachTheSameDocument) {
    // Whichever device merges, the sheets, their texts and their order come out the same.
    const struct {
        const char* name;
        LumoDocument first;
        LumoDocument second;
    } cases[] = {
        {"one sheet edited in the same instant", document({sheet('A', t + 5, "one"), sheet('B', t, "b")}),
         document({sheet('A', t + 5, "two"), sheet('B', t, "b")})},
        {"sheets added on both", document({sheet('A', t, "a"), sheet('B', t, "b"), sheet('C', t + 1, "c")}),
         document({sheet('A', t, "a"), sheet('B', t, "b"), sheet('D', t + 1, "d")})},
        {"reordered in the same instant", document({sheet('B', t, "b"), sheet('A', t, "a")}, {}, t + 3),
         document({sheet('A', t, "a"), sheet('B', t, "b"), sheet('E', t, "e")}, {}, t + 3)},
        {"reordered on one, added on the other",
         document({sheet('B', t, "b"), sheet('A', t, "a")}, {}, t + 3),
         document({sheet('A', t, "a"), sheet('F', t + 4, "f"), sheet('B', t, "b")})},
    };
    for (const auto& c : cases) {
        for (const LumoDocument* common : {&base, static_cast<const LumoDocument*>(nullptr)}) {
            const auto one = threeWayMerged(c.first, c.second, common, Timestamp{now}).document;
            const auto other = threeWayMerged(c.second, c.first, common, Timestamp{now}).document;
            EXPECT_EQ(summary(one), summary(other)) << c.name << (common ? " with a base" : "");
            EXPECT_EQ(one.sheetOrderUpdatedAt, other.sheetOrderUpdatedAt) << c.name;
            // The device that wrote `first` and changed nothing since takes the result as it is.
            EXPECT_EQ(summary(threeWayMerged(c.first, one, &c.first, Timestamp{now}).document), summary(one))
                << c.name;
        }
    }
}

TEST(ThreeWayMerge, OrderTombstonesAndKeyLayoutsFromTheSideThatChangedThem) {
    const double year = 365 * 86400.0;
    LumoDocument common = document({sheet('A', t, "a"), sheet('B', t, "b")}, {tomb('C', t + year)}, t + year);
    common.keyLayouts["units"]["main"] = {"m"};
    common.keyLayoutsUpdatedAt = Timestamp{t + year};

    LumoDocument remote = document({sheet('B', t, "b"), sheet('A', t, "a")}, {tomb('C', t + 2)}, t + 2);
    remote.keyLayouts["units"]["main"] = {"kg"};
    remote.keyLayoutsUpdatedAt = Timestamp{t + 2};
    const auto merged = threeWayMerged(common, remote, &common, Timestamp{now}).document;
    EXPECT_EQ(summary(merged), "B:b A:a");
    EXPECT_EQ(merged.sheetOrderUpdatedAt, Timestamp{t + 2});
    EXPECT_EQ(merged.deletedSheets.at(idOf('C').toString()), Timestamp{t + 2});
    EXPECT_EQ(merged.keyLayouts.at("units").at("main"), std::vector<std::string>{"kg"});

    // Changed on this side only: kept, whatever the other's dates.
    const auto kept = threeWayMerged(remote, common, &common, Timestamp{now}).document;
    EXPECT_EQ(summary(kept), "B:b A:a");
    EXPECT_EQ(kept.keyLayouts.at("units").at("main"), std::vector<std::string>{"kg"});
}

TEST(HybridClock, LaterThanEverythingSeenOrGiven) {
    HybridClock clock;
    EXPECT_EQ(clock.tick(Timestamp{t + 0.0004}), Timestamp{t});
    EXPECT_EQ(clock.tick(Timestamp{t}), roundedToMilliseconds(Timestamp{t + 0.001})) << "same wall time";
    EXPECT_EQ(clock.tick(Timestamp{t - 50}), roundedToMilliseconds(Timestamp{t + 0.002}))
        << "wall clock stepped back";
    clock.observe(document({sheet('A', t + 500, "")}, {tomb('B', t + 900)}));
    EXPECT_EQ(clock.tick(Timestamp{t + 10}), roundedToMilliseconds(Timestamp{t + 900.001}));
    EXPECT_EQ(clock.tick(Timestamp{t + 1000.25}), Timestamp{t + 1000.25})
        << "the wall clock again once ahead";
}

TEST(ThreeWayMerge, RemovedDuplicatesPointToTheirTwin) {
    LumoDocument doubled = document({sheet('A', t, "x"), sheet('B', t + 1, "x"), sheet('C', t, "y")});
    doubled.sheets[1].name = "A";
    const auto normalized = normalizedWithTwins(doubled, Timestamp{now});
    EXPECT_EQ(summary(normalized.document), "A:x C:y");
    EXPECT_EQ(normalized.twins, (std::map<Uuid, Uuid>{{idOf('B'), idOf('A')}}));
}
