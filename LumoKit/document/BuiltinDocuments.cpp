#include "LumoKit/document/BuiltinDocuments.h"

#include <string_view>

#include "LumoKit/document/BuiltinTexts.h"

namespace lumo {

namespace {

// A text in both editions; the Japanese one comes first, as everywhere in the program.
struct Edition {
    std::string_view japanese;
    std::string_view english;

    std::string_view in(bool japaneseEdition) const { return japaneseEdition ? japanese : english; }
};

struct BuiltinSheet {
    std::string_view id; // empty: a fresh identifier at every build
    Edition name;
    Edition textFile; // the names of its text files in resources/
};

// MARK: - Contents

// The texts are files under resources/, one per sheet and edition. Every line of them is
// calculated as the user sees it, so each example must evaluate. Line 3 of the first tutorial
// sheet gives an answer on purpose: the "#3" example reads it.

constexpr BuiltinSheet tutorial[] = {
    {"",
     {"はじめてのシート", "Getting Started"},
     {"tutorial-getting-started.ja.txt", "tutorial-getting-started.en.txt"}},
    {"", {"単位", "Units"}, {"tutorial-units.ja.txt", "tutorial-units.en.txt"}},
    {"",
     {"表・文字・グラフ", "Lists, Text & Graphs"},
     {"tutorial-lists-text-graphs.ja.txt", "tutorial-lists-text-graphs.en.txt"}},
    {"",
     {"くり返しと関数", "Loops & Functions"},
     {"tutorial-loops-functions.ja.txt", "tutorial-loops-functions.en.txt"}},
};

// The long sheet holds the forty numbers 100, 200, … 4000, one per line: long enough to
// scroll, and the same in both editions.
constexpr BuiltinSheet sample[] = {
    {"11111111-1111-1111-1111-111111111111",
     {"はじめてのシート", "Getting Started"},
     {"sample-getting-started.ja.txt", "sample-getting-started.en.txt"}},
    {"22222222-2222-2222-2222-222222222222",
     {"家計", "Monthly Budget"},
     {"sample-monthly-budget.ja.txt", "sample-monthly-budget.en.txt"}},
    {"33333333-3333-3333-3333-333333333333",
     {"旅行の見積もり", "Trip Estimate"},
     {"sample-trip-estimate.ja.txt", "sample-trip-estimate.en.txt"}},
    {"44444444-4444-4444-4444-444444444444",
     {"グラフ", "Graphs"},
     {"sample-graphs.ja.txt", "sample-graphs.en.txt"}},
    {"55555555-5555-5555-5555-555555555555",
     {"長いシート", "Long Sheet"},
     {"sample-long-sheet.txt", "sample-long-sheet.txt"}},
};

// MARK: - Building

template <std::size_t count>
std::vector<Sheet> buildSheets(const BuiltinSheet (&sheets)[count], bool japaneseEdition, Timestamp now) {
    std::vector<Sheet> built;
    built.reserve(count);
    for (const BuiltinSheet& sheet : sheets) {
        const Uuid id = sheet.id.empty() ? Uuid::random() : *Uuid::fromString(sheet.id);
        built.push_back(Sheet{id,
                              std::string(sheet.name.in(japaneseEdition)),
                              std::string(builtinText(sheet.textFile.in(japaneseEdition))),
                              now,
                              {}});
    }
    return built;
}

LumoDocument documentOf(std::vector<Sheet> sheets) {
    LumoDocument document;
    document.sheets = std::move(sheets);
    if (!document.sheets.empty())
        document.selectedSheetID = document.sheets.front().id;
    return document;
}

} // namespace

std::vector<Sheet> tutorialSheets(AppLanguage language, Timestamp now) {
    return buildSheets(tutorial, L10n::resolvesToJapanese(language), now);
}

LumoDocument starterDocument(Timestamp now) {
    return documentOf(tutorialSheets(L10n::current(), now));
}

LumoDocument sampleDocument(Timestamp now) {
    return documentOf(buildSheets(sample, L10n::resolvesToJapanese(L10n::current()), now));
}

} // namespace lumo
