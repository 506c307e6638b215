#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoKit/document/BuiltinTexts.h"
#include "LumoKit/sheet/DocumentEvaluator.h"

using namespace lumo;

namespace {

const Timestamp buildTime{1738314900};

// Evaluates every sheet the way the document store does (the other sheets in tab order)
// and lists each line that fails, with its sheet, line number and message.
std::vector<std::string> failingLines(const std::vector<Sheet>& sheets) {
    std::vector<std::string> failures;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        std::vector<SharedSheet> others;
        for (std::size_t j = 0; j < sheets.size(); ++j) {
            if (j != i)
                others.push_back(SharedSheet{sheets[j].name, sheets[j].text});
        }
        const std::vector<std::string> lines = unicode::splitLines(sheets[i].text);
        const std::vector<LineResult> results =
            DocumentEvaluator::evaluate(sheets[i].text, others, EvaluationOptions::current());
        for (std::size_t line = 0; line < results.size(); ++line) {
            if (results[line].outcome.kind == LineOutcome::Kind::failure)
                failures.push_back(sheets[i].name + ":" + std::to_string(line + 1) + " " +
                                   (line < lines.size() ? lines[line] : "") + " → " +
                                   results[line].outcome.message());
        }
    }
    return failures;
}

class LanguageGuard {
public:
    ~LanguageGuard() {
        L10n::setCurrent(AppLanguage::system);
        L10n::setPreferredLanguagesProvider(nullptr);
    }
};

} // namespace

// Names and texts are in the CLI's recordings of both documents; what they cannot show is here.
TEST(BuiltinDocuments, SampleIdentifiersAndDatesAreFixed) {
    const LanguageGuard guard;
    for (AppLanguage language : {AppLanguage::english, AppLanguage::japanese}) {
        L10n::setCurrent(language);
        const LumoDocument document = sampleDocument(buildTime);
        ASSERT_EQ(document.sheets.size(), 5u);
        for (std::size_t i = 0; i < 5; ++i) {
            EXPECT_EQ(document.sheets[i].id.toString().substr(0, 8),
                      std::string(8, static_cast<char>('1' + i)));
            EXPECT_EQ(document.sheets[i].updatedAt, buildTime);
        }
        EXPECT_EQ(document.selectedSheetID, document.sheets[0].id);
        EXPECT_TRUE(document.deletedSheets.empty() && document.keyLayouts.empty());
        EXPECT_EQ(sampleDocument(buildTime), document);
    }
}

TEST(BuiltinDocuments, TutorialSheetsGetFreshIdentifiers) {
    const LanguageGuard guard;
    const std::vector<Sheet> english = tutorialSheets(AppLanguage::english, buildTime);
    const std::vector<Sheet> again = tutorialSheets(AppLanguage::english, buildTime);
    ASSERT_EQ(english.size(), 4u);
    ASSERT_EQ(tutorialSheets(AppLanguage::japanese, buildTime).size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(english[i].updatedAt, buildTime);
        EXPECT_NE(again[i].id, english[i].id);
        EXPECT_NE(english[i].id, english[(i + 1) % 4].id);
    }
}

// How the language is resolved is Language's rule; here both documents follow its outcome.
TEST(BuiltinDocuments, EditionFollowsLanguage) {
    const LanguageGuard guard;
    const struct {
        AppLanguage setting;
        std::vector<std::string> preferred;
        const char* firstName;
    } cases[] = {
        {AppLanguage::japanese, {"en-US"}, "はじめてのシート"},
        {AppLanguage::english, {"ja-JP"}, "Getting Started"},
        {AppLanguage::system, {"ja-JP", "en-US"}, "はじめてのシート"},
    };
    for (const auto& c : cases) {
        L10n::setPreferredLanguagesProvider([&] { return c.preferred; });
        L10n::setCurrent(c.setting);
        EXPECT_EQ(tutorialSheets(c.setting, buildTime).at(0).name, c.firstName);
        const LumoDocument starter = starterDocument(buildTime);
        EXPECT_EQ(starter.sheets.at(0).name, c.firstName);
        EXPECT_EQ(starter.selectedSheetID, starter.sheets.at(0).id);
        EXPECT_EQ(sampleDocument(buildTime).sheets.at(0).name, c.firstName);
    }
}

// Every example line is product content that the user sees calculated: none may fail,
// in either edition, whichever language the messages are in.
TEST(BuiltinDocuments, EveryLineCalculates) {
    const LanguageGuard guard;
    for (AppLanguage language : {AppLanguage::english, AppLanguage::japanese}) {
        L10n::setCurrent(language);
        EXPECT_EQ(failingLines(tutorialSheets(language, buildTime)), std::vector<std::string>{});
        EXPECT_EQ(failingLines(sampleDocument(buildTime).sheets), std::vector<std::string>{});
    }
}

// Each text file is compiled in byte for byte, and none in the folder is left out of the build.
TEST(BuiltinDocuments, EmbeddedTextsMatchTheirFiles) {
    const std::filesystem::path folder =
        std::filesystem::path(LUMO_TEST_DATA_DIR) / "../LumoKit/document/resources";
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream in(entry.path(), std::ios::binary);
        std::ostringstream bytes;
        bytes << in.rdbuf();
        const std::string name = entry.path().filename().string();
        EXPECT_NO_THROW(EXPECT_EQ(builtinText(name), bytes.str()) << name) << name;
        ++files;
    }
    EXPECT_EQ(files, 17);
    EXPECT_THROW(builtinText("no-such-sheet.en.txt"), std::out_of_range);
}
