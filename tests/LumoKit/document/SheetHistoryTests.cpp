#include <gtest/gtest.h>

#include "LumoKit/document/SheetHistory.h"

using namespace lumo;
using namespace std::chrono_literals;

namespace {

// A fixed origin, so that every time in a test is an offset in seconds from it.
SheetHistory::TimePoint at(double seconds) {
    return SheetHistory::TimePoint{} + 1'000'000s +
           std::chrono::duration_cast<SheetHistory::TimePoint::duration>(
               std::chrono::duration<double>(seconds));
}

SheetSnapshot snap(std::string text, std::vector<std::int64_t> locked = {}) {
    return {std::move(text), std::move(locked)};
}

struct Edit {
    SheetSnapshot content;
    double time;
};

// Undoes every step, returning the restored texts in order.
std::vector<std::string> undoAll(SheetHistory& history) {
    std::vector<std::string> restored;
    while (auto s = history.undo())
        restored.push_back(s->text);
    return restored;
}

} // namespace

TEST(SheetHistory, GroupsEditsIntoSteps) {
    struct Case {
        const char* what;
        SheetSnapshot initial;
        std::vector<Edit> edits;
        std::vector<std::string> undone; // texts returned by successive undos
    };
    const Case cases[] = {
        {"typing within 0.9 s is one step",
         snap(""),
         {{snap("a"), 0}, {snap("ab"), 0.3}, {snap("abc"), 0.6}},
         {""}},
        {"a key 1 s after the step's start begins a new one",
         snap(""),
         {{snap("a"), 0}, {snap("ab"), 0.3}, {snap("abc"), 0.6}, {snap("abcd"), 1.0}},
         {"abc", ""}},
        {"the window counts from the step's start, not the last key",
         snap(""),
         {{snap("a"), 0}, {snap("ab"), 0.5}, {snap("abc"), 0.89}, {snap("abcd"), 0.9}},
         {"abc", ""}},
        {"return is a step and so is the next key",
         snap("a"),
         {{snap("a\n"), 0}, {snap("a\nb"), 0.1}, {snap("a\nbc"), 0.2}},
         {"a\n", "a"}},
        {"a paste is its own step", snap("a"), {{snap("ab"), 0}, {snap("abxyz"), 0.1}}, {"ab", "a"}},
        {"deleting one character joins the step",
         snap("a"),
         {{snap("ab"), 0}, {snap("abc"), 0.2}, {snap("ab"), 0.4}},
         {"a"}},
        {"replacing a character joins the step", snap("a"), {{snap("ab"), 0}, {snap("ax"), 0.2}}, {"a"}},
        {"deleting a selection of two is structural",
         snap("abcd"),
         {{snap("abc"), 0}, {snap("a"), 0.1}},
         {"abc", "abcd"}},
        {"an emoji ZWJ sequence counts as one character",
         snap("a"),
         {{snap("ab"), 0}, {snap("ab👩‍👩‍👧"), 0.1}, {snap("ab👩‍👩‍👧🇯🇵"), 0.2}},
         {"a"}},
        {"a combining accent added to e does not change the length",
         snap("caf"),
         {{snap("cafe"), 0}, {snap("cafe\u0301"), 0.1}, {snap("cafe\u0301s"), 0.2}},
         {"caf"}},
        {"locking a line is a step",
         snap("a\nb"),
         {{snap("a\nb", {1}), 0}, {snap("a\nbc", {1}), 0.1}},
         {"a\nb", "a\nb"}},
        {"reordered locks are a step",
         snap("a", {0, 2}),
         {{snap("a", {2, 0}), 0}, {snap("a", {2}), 0.1}},
         {"a", "a"}},
        {"lengths count only in the lines that changed, whatever surrounds them",
         snap("1\nx = 2\n3"),
         {{snap("1\nx = 2\n3"), 0},
          {snap("1\nx = 27\n3"), 0.1},
          {snap("1\nx = 27\u0301\n3"), 0.2},
          {snap("1\nx = 27\u0301👩‍👩‍👧\n3"), 0.3},
          {snap("1\nx = 27\u0301👩‍👩‍👧\n3🇯🇵\r\n"), 0.4}},
         {"1\nx = 27\u0301👩‍👩‍👧\n3", "1\nx = 2\n3"}},
        {"two characters typed in a middle line are a step of their own",
         snap("a\nb\nc"),
         {{snap("a\nbx\nc"), 0}, {snap("a\nbxyz\nc"), 0.1}},
         {"a\nbx\nc", "a\nb\nc"}},
        {"an unchanged snapshot records nothing", snap("a"), {{snap("a"), 0}}, {}},
        {"a line removed by joining is structural", snap("a\nb"), {{snap("ab"), 0}}, {"a\nb"}},
    };
    for (const auto& c : cases) {
        SheetHistory history(c.initial);
        for (const auto& e : c.edits)
            history.record(e.content, at(e.time));
        EXPECT_EQ(history.current(), c.edits.back().content) << c.what;
        EXPECT_EQ(undoAll(history), c.undone) << c.what;
    }
}

TEST(SheetHistory, UndoAndRedo) {
    SheetHistory history(snap("a"));
    EXPECT_FALSE(history.canUndo());
    EXPECT_FALSE(history.undo());
    EXPECT_FALSE(history.redo());

    history.record(snap("a\n"), at(0));
    history.record(snap("a\nb"), at(0.1));
    EXPECT_EQ(history.undo(), snap("a\n"));
    EXPECT_EQ(history.undo(), snap("a"));
    EXPECT_EQ(history.lastBreakAt(), SheetHistory::distantPast);
    EXPECT_TRUE(history.canRedo());
    EXPECT_EQ(history.redo(), snap("a\n"));
    EXPECT_EQ(history.lastBreakAt(), SheetHistory::distantPast);
    EXPECT_TRUE(history.matches("a\n", {}));
    EXPECT_FALSE(history.matches("a\n", {0}));

    // After an undo the next small edit starts a step even within 0.9 s of the last one.
    history.record(snap("a\nc"), at(0.2));
    EXPECT_FALSE(history.canRedo());
    history.record(snap("a\ncd"), at(0.3));
    EXPECT_EQ(history.undo(), snap("a\n"));
    EXPECT_EQ(history.undo(), snap("a"));
}

TEST(SheetHistory, KeepsTheNewest200Steps) {
    SheetHistory history(snap(""));
    std::string text;
    for (int i = 0; i < 201; ++i) {
        text += "\n";
        history.record(snap(text), at(i));
    }
    EXPECT_EQ(history.past().size(), SheetHistory::maxUndoSteps);
    // The oldest snapshot left is the one after the first change; the empty text is gone.
    EXPECT_EQ(history.past().front(), snap("\n"));
    auto restored = undoAll(history);
    EXPECT_EQ(restored.size(), 200u);
    EXPECT_FALSE(history.undo());
    // Redoing everything brings back the latest content without losing steps.
    while (history.redo()) {
    }
    EXPECT_EQ(history.current().text, text);
    EXPECT_EQ(history.past().size(), 200u);
}
