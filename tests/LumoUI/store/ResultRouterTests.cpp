#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"
#include "support/QtTestSupport.h"

using namespace lumo;

namespace {

const auto* const qtEnvironment =
    testing::AddGlobalTestEnvironment(new test::QtEnvironment("ResultRouterTests"));

// Runs until the time budget stops it, so every evaluation of it is slow.
const std::string slowSheet = "x = 1\nwhile x > 0:\n    x = x + 1\n";

// What a sheet's results are made of, without the failure texts: a loop can stop on its step
// limit or on its time limit depending on the machine.
std::vector<LineOutcome::Kind> kindsOf(const std::vector<LineResult>& results) {
    std::vector<LineOutcome::Kind> kinds;
    for (const LineResult& result : results)
        kinds.push_back(result.outcome.kind);
    return kinds;
}

std::vector<LineOutcome::Kind> expectedKinds(const DocumentStore& store, const Uuid& sheetID) {
    std::vector<SharedSheet> others;
    for (const Sheet& other : store.document().sheets) {
        if (other.id != sheetID)
            others.push_back({other.name, other.text});
    }
    return kindsOf(
        DocumentEvaluator::evaluate(store.sheet(sheetID)->text, others, EvaluationOptions::current()));
}

struct BackgroundStore : testing::Test {
    std::unique_ptr<DocumentStore> store;
    Uuid slow;
    Uuid other;

    void SetUp() override {
        DocumentStore::Options options;
        options.evaluation = StoreEvaluation::background;
        store = std::make_unique<DocumentStore>(options, nullptr, nullptr, nullptr);
        ASSERT_GE(store->document().sheets.size(), 2u);
        slow = store->document().sheets[0].id;
        other = store->document().sheets[1].id;
        store->selectSheet(slow);
        store->updateText(slow, slowSheet);
        ASSERT_TRUE(store->waitForIdle());
    }
};

} // namespace

TEST_F(BackgroundStore, TypingNeverWaitsAndOnlyTheLatestResultsArePublished) {
    SheetSession first(store.get());
    SheetSession second(store.get());
    SheetSession elsewhere(store.get());
    first.activate();
    elsewhere.showSheet(other);
    ASSERT_TRUE(store->waitForIdle());

    // Each publication must fit the text the sheet has at that moment; every keystroke below
    // adds a line, so results of an earlier text would not fit.
    int published = 0;
    std::vector<std::string> misfits;
    QObject::connect(&first, &SheetSession::resultsChanged, [&] {
        ++published;
        if (kindsOf(first.results()).size() != expectedKinds(*store, slow).size())
            misfits.push_back(store->sheet(slow)->text);
    });

    std::string text = slowSheet;
    for (int key = 1; key <= 6; ++key) {
        text += std::to_string(key) + "\n";
        store->updateText(slow, text);
        EXPECT_TRUE(store->isEvaluating()) << "the edit returned before its evaluation was done";
        EXPECT_EQ(published, 0) << "results arrive on the main thread, never inside the edit";
    }
    ASSERT_TRUE(store->waitForIdle());

    EXPECT_TRUE(misfits.empty()) << misfits.front();
    EXPECT_EQ(published, 1) << "runs superseded by later keystrokes are dropped";
    const auto latest = expectedKinds(*store, slow);
    EXPECT_EQ(kindsOf(first.results()), latest);
    EXPECT_EQ(kindsOf(second.results()), latest);
    EXPECT_EQ(kindsOf(store->results()), latest);
    EXPECT_EQ(kindsOf(elsewhere.results()), expectedKinds(*store, other));
}

TEST_F(BackgroundStore, ASessionNeverShowsAnotherSheetsResults) {
    SheetSession session(store.get());
    session.activate();
    ASSERT_TRUE(store->waitForIdle());
    // Until its run is back, a session that changed sheets shows that sheet's last results or
    // none, never those of the sheet it showed before.
    const auto fitsShownSheet = [&] {
        return session.results().empty() ||
               kindsOf(session.results()) == expectedKinds(*store, *session.sheetID());
    };
    struct Step {
        const char* what;
        std::function<void()> act;
    };
    const Step steps[] = {
        {"another sheet is shown", [&] { session.showSheet(other); }},
        {"back to the slow sheet", [&] { session.showSheet(slow); }},
        {"the slow sheet is deleted while it runs",
         [&] {
             store->updateText(slow, slowSheet + "1\n");
             store->deleteSheet(slow);
         }},
        {"a sheet is added", [&] { store->addSheet(); }},
    };
    for (const Step& step : steps) {
        step.act();
        EXPECT_TRUE(fitsShownSheet()) << step.what;
        ASSERT_TRUE(store->waitForIdle()) << step.what;
        EXPECT_EQ(kindsOf(session.results()), expectedKinds(*store, *session.sheetID())) << step.what;
    }
}
