#include <gtest/gtest.h>

#include "LumoUI/keypad/KeyArrangement.h"

using namespace lumo;

namespace {

using Panels = KeyArrangement::Panels;
using Ids = std::vector<std::string>;

KeyGroup makeGroup(const std::string& id, const Ids& keys, Ids hidden = {}) {
    KeyGroup group;
    group.id = id;
    for (const std::string& key : keys) {
        KeyDefinition definition;
        definition.id = key;
        group.keys.push_back(definition);
    }
    group.hiddenByDefault = std::move(hidden);
    return group;
}

// Two groups: letters a…e with e in the catalog at first, and digits 1…3.
const std::vector<KeyGroup>& groups() {
    static const std::vector<KeyGroup> all{makeGroup("letters", {"a", "b", "c", "d", "e"}, {"e"}),
                                           makeGroup("digits", {"1", "2", "3"})};
    return all;
}

Ids ids(const std::vector<const KeyDefinition*>& keys) {
    Ids out;
    for (const KeyDefinition* key : keys)
        out.push_back(key->id);
    return out;
}

// The letters group as "shown keys | hidden keys", in their order.
std::string letters(const KeyArrangement& arrangement) {
    std::string out;
    for (const std::string& id : ids(arrangement.shownKeys("letters")))
        out += id + " ";
    out += "|";
    for (const std::string& id : ids(arrangement.hiddenKeys("letters")))
        out += " " + id;
    return out;
}

TEST(KeyArrangement, DefaultsShowEveryKeyButTheHiddenOnes) {
    const KeyArrangement arrangement(groups());
    EXPECT_EQ(ids(arrangement.shownKeys("letters")), (Ids{"a", "b", "c", "d"}));
    EXPECT_EQ(ids(arrangement.hiddenKeys("letters")), (Ids{"e"}));
    EXPECT_EQ(ids(arrangement.shownKeys("digits")), (Ids{"1", "2", "3"}));
    EXPECT_TRUE(arrangement.isDefault());
    EXPECT_EQ(arrangement.panels().at("letters.catalog"), (Ids{"e"}));
}

TEST(KeyArrangement, StoredPanelsAreReadOverTheDefaults) {
    struct Case {
        const char* what;
        Panels stored;
        const char* letters;
    };
    const Case cases[] = {
        {"a stored order", {{"letters", {"d", "c", "b", "a"}}, {"letters.catalog", {"e"}}}, "d c b a | e"},
        {"unknown keys are not shown",
         {{"letters", {"a", "zz", "b", "c", "d"}}, {"letters.catalog", {"e", "yy"}}},
         "a b c d | e"},
        {"a missing key comes back after its default neighbour",
         {{"letters", {"d", "a", "b"}}, {"letters.catalog", {"e"}}},
         "d a b c | e"},
        {"a missing first key comes back first",
         {{"letters", {"c", "b", "d"}}, {"letters.catalog", {"e"}}},
         "a c b d | e"},
        {"a missing hidden key goes back to the catalog", {{"letters", {"b", "a", "c", "d"}}}, "b a c d | e"},
        {"a key the user hid stays hidden",
         {{"letters", {"a", "c", "d"}}, {"letters.catalog", {"b", "e"}}},
         "a c d | b e"},
        {"a key listed twice keeps its first place, the tab first",
         {{"letters", {"a", "b", "a", "c", "d"}}, {"letters.catalog", {"b", "e"}}},
         "a b c d | e"},
        {"nothing stored for the group", {{"digits", {"3", "2", "1"}}}, "a b c d | e"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(letters(KeyArrangement(groups(), c.stored)), c.letters) << c.what;
}

TEST(KeyArrangement, UnknownKeysAndPanelsSurviveChanges) {
    KeyArrangement arrangement(
        groups(), {{"letters", {"a", "zz", "b", "c", "d"}}, {"letters.catalog", {"e"}}, {"newer", {"q"}}});
    ASSERT_TRUE(arrangement.move("letters", "a", 3));
    ASSERT_TRUE(arrangement.hide("letters", "c"));
    EXPECT_EQ(arrangement.panels().at("letters"), (Ids{"zz", "b", "d", "a"}));
    EXPECT_EQ(arrangement.panels().at("letters.catalog"), (Ids{"e", "c"}));
    EXPECT_EQ(arrangement.panels().at("newer"), (Ids{"q"}));
}

TEST(KeyArrangement, MoveShowAndHide) {
    struct Case {
        const char* what;
        std::function<bool(KeyArrangement&)> change;
        bool changed;
        const char* letters;
    };
    const Case cases[] = {
        {"move forward", [](KeyArrangement& a) { return a.move("letters", "a", 2); }, true, "b c a d | e"},
        {"move back", [](KeyArrangement& a) { return a.move("letters", "d", 0); }, true, "d a b c | e"},
        {"move past the end lands last", [](KeyArrangement& a) { return a.move("letters", "b", 99); }, true,
         "a c d b | e"},
        {"move to its own place", [](KeyArrangement& a) { return a.move("letters", "b", 1); }, false,
         "a b c d | e"},
        {"move a hidden key", [](KeyArrangement& a) { return a.move("letters", "e", 0); }, false,
         "a b c d | e"},
        {"move into another group", [](KeyArrangement& a) { return a.move("digits", "a", 0); }, false,
         "a b c d | e"},
        {"hide", [](KeyArrangement& a) { return a.hide("letters", "b"); }, true, "a c d | e b"},
        {"show goes last", [](KeyArrangement& a) { return a.show("letters", "e"); }, true, "a b c d e |"},
        {"show at a place", [](KeyArrangement& a) { return a.show("letters", "e", 1); }, true, "a e b c d |"},
        {"show a shown key", [](KeyArrangement& a) { return a.show("letters", "a"); }, false, "a b c d | e"},
        {"hide an unknown key", [](KeyArrangement& a) { return a.hide("letters", "zz"); }, false,
         "a b c d | e"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        KeyArrangement arrangement(groups());
        EXPECT_EQ(c.change(arrangement), c.changed);
        EXPECT_EQ(letters(arrangement), c.letters);
        EXPECT_EQ(arrangement.isDefault(), !c.changed);
    }
}

TEST(KeyArrangement, StoredPanelsReadBackTheSameArrangement) {
    KeyArrangement arrangement(groups());
    arrangement.move("digits", "3", 0);
    arrangement.hide("letters", "a");
    arrangement.show("letters", "e", 0);
    const KeyArrangement reread(groups(), arrangement.panels());
    EXPECT_EQ(reread, arrangement);
    EXPECT_EQ(ids(reread.shownKeys("digits")), (Ids{"3", "1", "2"}));
    EXPECT_EQ(ids(reread.shownKeys("letters")), (Ids{"e", "b", "c", "d"}));
}

} // namespace
