#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/document/Document.h"
#include "support/DocumentTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

// "A:text B:text" in document order, then "| †A@time" for every tombstone.
std::string summary(const LumoDocument& document) {
    std::string out;
    for (const Sheet& s : document.sheets)
        out += s.name + ":" + s.text + " ";
    out += "|";
    for (const auto& [key, date] : document.deletedSheets)
        out += " †" + key.substr(0, 1) + "@" + std::to_string(static_cast<long>(date.seconds));
    return out;
}

constexpr double day = 86400;

} // namespace

TEST(Document, Merging) {
    const double now = 1000 * day;
    const double t = now - day;
    const struct {
        const char* name;
        LumoDocument self;
        LumoDocument other;
        const char* expected;
    } cases[] = {
        {"other's later edit wins", document({sheet('A', t, "old")}), document({sheet('A', t + 1, "new")}),
         "A:new |"},
        {"same updatedAt keeps self", document({sheet('A', t, "mine")}), document({sheet('A', t, "theirs")}),
         "A:mine |"},
        {"a sheet without a date loses", document({sheet('A', 0, "undated")}),
         document({sheet('A', 1, "dated")}), "A:dated |"},
        {"edit after deletion survives", document({}, {tomb('A', t)}), document({sheet('A', t + 1, "kept")}),
         "A:kept | †A@86313600"},
        {"deletion after an edit wins", document({sheet('A', t, "x")}), document({}, {tomb('A', t + 1)}),
         "New Sheet: | †A@86313601"},
        {"deletion at the same second wins", document({sheet('A', t, "x"), sheet('B', t)}),
         document({}, {tomb('A', t)}), "B: | †A@86313600"},
        {"later tombstone of the two is kept", document({sheet('B', t)}, {tomb('A', t - 5)}),
         document({}, {tomb('A', t + 5)}), "B: | †A@86313605"},
        {"lower-case tombstone still deletes", document({sheet('A', t), sheet('B', t)}),
         document({}, {{"aaaaaaaa-aaaa-aaaa-aaaa-aaaaaaaaaaaa", Timestamp{t}}}), "B: | †A@86313600"},
        {"tombstones older than 60 days expire but still delete",
         document({sheet('A', now - 70 * day), sheet('B', t)}), document({}, {tomb('A', now - 61 * day)}),
         "B: |"},
        {"a tombstone exactly 60 days old expires", document({sheet('B', t)}, {tomb('A', now - 60 * day)}),
         document({}), "B: |"},
        {"a tombstone 59 days old stays", document({sheet('B', t)}, {tomb('A', now - 59 * day)}),
         document({}), "B: | †A@81302400"},
        {"newer order comes from other; self's extras follow",
         document({sheet('A', t), sheet('B', t), sheet('C', t)}, {}, t),
         document({sheet('D', t), sheet('B', t), sheet('A', t)}, {}, t + 1), "D: B: A: C: |"},
        {"equal order times keep self's order", document({sheet('A', t), sheet('B', t)}, {}, t),
         document({sheet('B', t), sheet('A', t), sheet('C', t)}, {}, t), "A: B: C: |"},
        {"an order date beats an absent one", document({sheet('A', t), sheet('B', t)}),
         document({sheet('B', t), sheet('A', t)}, {}, 1), "B: A: |"},
    };
    L10n::setCurrent(AppLanguage::english);
    for (const auto& c : cases)
        EXPECT_EQ(summary(c.self.merged(c.other, Timestamp{now})), c.expected) << c.name;

    // Order time stamps: the later one, absent only when both are.
    const LumoDocument dated = document({sheet('A', t)}, {}, t);
    const LumoDocument undated = document({sheet('A', t)});
    EXPECT_EQ(dated.merged(undated, Timestamp{now}).sheetOrderUpdatedAt, Timestamp{t});
    EXPECT_EQ(undated.merged(dated, Timestamp{now}).sheetOrderUpdatedAt, Timestamp{t});
    EXPECT_FALSE(undated.merged(undated, Timestamp{now}).sheetOrderUpdatedAt);

    // Key layouts travel with their own date; ties and absent dates keep self's.
    LumoDocument mine = undated;
    mine.keyLayouts["units"]["main"] = {"m"};
    LumoDocument theirs = undated;
    theirs.keyLayouts["units"]["main"] = {"kg"};
    const auto layoutsAfter = [&](std::optional<double> mineAt, std::optional<double> theirsAt) {
        mine.keyLayoutsUpdatedAt = mineAt ? std::optional(Timestamp{*mineAt}) : std::nullopt;
        theirs.keyLayoutsUpdatedAt = theirsAt ? std::optional(Timestamp{*theirsAt}) : std::nullopt;
        const LumoDocument merged = mine.merged(theirs, Timestamp{now});
        return merged.keyLayouts.at("units").at("main").front() + "@" +
               (merged.keyLayoutsUpdatedAt
                    ? std::to_string(static_cast<long>(merged.keyLayoutsUpdatedAt->seconds))
                    : "none");
    };
    EXPECT_EQ(layoutsAfter(std::nullopt, std::nullopt), "m@none");
    EXPECT_EQ(layoutsAfter(std::nullopt, 5), "kg@5");
    EXPECT_EQ(layoutsAfter(5, 5), "m@5");
    EXPECT_EQ(layoutsAfter(6, 5), "m@6");
    EXPECT_EQ(layoutsAfter(5, 6), "kg@6");

    // Everything deleted: one empty sheet in the interface language, selected.
    const LumoDocument allGone =
        document({sheet('A', t)}).merged(document({}, {tomb('A', t)}), Timestamp{now});
    ASSERT_EQ(allGone.sheets.size(), 1u);
    EXPECT_EQ(allGone.sheets[0].name, "New Sheet");
    EXPECT_NE(allGone.sheets[0].id, idOf('A'));
    EXPECT_EQ(allGone.selectedSheetID, allGone.sheets[0].id);
    L10n::setCurrent(AppLanguage::japanese);
    EXPECT_EQ(LumoDocument{}.merged(LumoDocument{}, Timestamp{now}).sheets.at(0).name, "新しいシート");
    L10n::setCurrent(AppLanguage::system);
}

TEST(Document, Normalizing) {
    const double now = 500 * day;
    const auto named = [](Sheet s, std::string name) {
        s.name = std::move(name);
        return s;
    };
    const struct {
        const char* name;
        std::vector<Sheet> sheets;
        const char* expected;
    } cases[] = {
        {"distinct sheets stay", {sheet('A', 1, "x"), sheet('B', 1, "x")}, "A:x B:x |"},
        {"same name and text: earliest kept, others tombstoned now",
         {named(sheet('A', 9, "x"), "S"), named(sheet('B', 3, "x"), "S"), named(sheet('C', 5, "x"), "S")},
         "S:x | †A@43200000 †C@43200000"},
        {"equal dates keep the first",
         {named(sheet('A', 3, "x"), "S"), named(sheet('B', 3, "x"), "S")},
         "S:x | †B@43200000"},
        {"same name, other text stays",
         {named(sheet('A', 3, "x"), "S"), named(sheet('B', 3, "y"), "S")},
         "S:x S:y |"},
        // Name and text joined plainly would make "ab"+"c" equal "a"+"bc".
        {"name and text are kept apart",
         {named(sheet('A', 1, "c"), "ab"), named(sheet('B', 1, "bc"), "a")},
         "ab:c a:bc |"},
        {"same identifier: latest edit in the first place, no tombstone",
         {sheet('A', 1, "old"), sheet('B', 1), sheet('A', 2, "new"), sheet('A', 2, "newer?")},
         "A:new B: |"},
    };
    for (const auto& c : cases) {
        LumoDocument document;
        document.sheets = c.sheets;
        EXPECT_EQ(summary(document.normalized(Timestamp{now})), c.expected) << c.name;
    }

    LumoDocument document;
    document.sheets = {named(sheet('A', 9, "x"), "S"), named(sheet('B', 3, "x"), "S"), sheet('C', 1)};
    const struct {
        std::optional<Uuid> selected;
        std::optional<Uuid> expected;
    } selections[] = {
        {std::nullopt, idOf('B')},
        {idOf('C'), idOf('C')},
        {idOf('A'), idOf('B')},
        {idOf('F'), idOf('B')},
    };
    for (const auto& c : selections) {
        document.selectedSheetID = c.selected;
        EXPECT_EQ(document.normalized(Timestamp{now}).selectedSheetID, c.expected);
    }
    EXPECT_FALSE(LumoDocument{}.normalized(Timestamp{now}).selectedSheetID);
}
