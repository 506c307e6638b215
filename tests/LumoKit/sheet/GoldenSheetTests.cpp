#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "LumoKit/base/Unicode.h"
#include "support/SheetTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

namespace fs = std::filesystem;

// Sheets that must stop run with a small step budget and ample time, so that where they
// stop does not depend on the machine's speed.
constexpr BudgetLimits stoppingLimits{1000, 40, 60.0};

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<fs::path> sheetsIn(const std::string& folder) {
    std::vector<fs::path> sheets;
    for (const auto& entry : fs::directory_iterator(fs::path(LUMO_TEST_DATA_DIR) / "sheets" / folder)) {
        if (entry.path().extension() == ".txt")
            sheets.push_back(entry.path());
    }
    std::sort(sheets.begin(), sheets.end());
    return sheets;
}

std::vector<std::string> expectedFor(const fs::path& sheet) {
    fs::path expected = sheet;
    expected.replace_extension(".expected");
    std::string text = readFile(expected);
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    return unicode::splitLines(text);
}

bool isFailure(const std::string& shown) {
    return shown.rfind("! ", 0) == 0;
}

// Runs every sheet of a folder against its expected answers; returns all shown results.
std::vector<std::vector<std::string>> checkFolder(const std::string& folder, BudgetLimits limits) {
    std::vector<std::vector<std::string>> all;
    const auto sheets = sheetsIn(folder);
    EXPECT_FALSE(sheets.empty()) << folder;
    for (const auto& sheet : sheets) {
        std::string text = readFile(sheet);
        if (!text.empty() && text.back() == '\n')
            text.pop_back();
        auto shown = runAnswers(text, limits);
        EXPECT_EQ(shown, expectedFor(sheet)) << sheet;
        all.push_back(std::move(shown));
    }
    return all;
}

} // namespace

TEST(GoldenSheets, Answers) {
    for (const auto& shown : checkFolder("answers", {}))
        EXPECT_TRUE(std::none_of(shown.begin(), shown.end(), isFailure));
}

TEST(GoldenSheets, Failures) {
    for (const auto& shown : checkFolder("failures", {})) {
        EXPECT_TRUE(std::any_of(shown.begin(), shown.end(), isFailure));
        EXPECT_FALSE(isFailure(shown.back())); // failures never stop the lines below
    }
}

TEST(GoldenSheets, Stopped) {
    for (const auto& shown : checkFolder("stopped", stoppingLimits))
        EXPECT_EQ(shown.back(), "! Too many loop steps");
}
