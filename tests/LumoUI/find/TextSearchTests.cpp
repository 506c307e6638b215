#include <gtest/gtest.h>

#include "LumoUI/find/TextSearch.h"

namespace lumo {
namespace {

using Case = SearchQuery::Case;
using Words = SearchQuery::Words;

TEST(TextSearch, FindsEveryOccurrenceWithItsLine) {
    const QString text = QStringLiteral("price = 100\nPrice × 2\nprices = [price, 3]\n価格 + 価格表\n");
    struct Row {
        const char* pattern;
        Case matchCase;
        Words words;
        QList<TextMatch> expected;
    };
    const Row rows[] = {
        {"price", Case::insensitive, Words::anywhere, {{0, 5, 0}, {12, 5, 1}, {22, 5, 2}, {32, 5, 2}}},
        {"price", Case::sensitive, Words::anywhere, {{0, 5, 0}, {22, 5, 2}, {32, 5, 2}}},
        {"price", Case::insensitive, Words::whole, {{0, 5, 0}, {12, 5, 1}, {32, 5, 2}}},
        {"価格", Case::insensitive, Words::anywhere, {{42, 2, 3}, {47, 2, 3}}},
        {"価格", Case::insensitive, Words::whole, {{42, 2, 3}}},
        {"1", Case::insensitive, Words::whole, {}},
        {"", Case::insensitive, Words::anywhere, {}},
    };
    for (const Row& row : rows) {
        const SearchQuery query{QString::fromUtf8(row.pattern), row.matchCase, row.words};
        EXPECT_EQ(findMatches(text, query), row.expected)
            << row.pattern << " case " << int(row.matchCase) << " words " << int(row.words);
    }
}

TEST(TextSearch, OverlappingOccurrencesCountOnce) {
    EXPECT_EQ(findMatches(QStringLiteral("aaaa"), {QStringLiteral("aa")}),
              (QList<TextMatch>{{0, 2, 0}, {2, 2, 0}}));
}

TEST(TextSearch, ReplacingLeavesLockedLinesAlone) {
    const QString text = QStringLiteral("rent = 820 USD\nfee = 10 USD\ntotal = rent + fee in USD\n");
    const SearchQuery query{QStringLiteral("usd")};
    struct Row {
        std::vector<std::int64_t> locked;
        QString expected;
        int replaced;
        int skipped;
    };
    const Row rows[] = {
        {{}, QStringLiteral("rent = 820 EUR\nfee = 10 EUR\ntotal = rent + fee in EUR\n"), 3, 0},
        {{1}, QStringLiteral("rent = 820 EUR\nfee = 10 USD\ntotal = rent + fee in EUR\n"), 2, 1},
        {{0, 2, 9}, QStringLiteral("rent = 820 USD\nfee = 10 EUR\ntotal = rent + fee in USD\n"), 1, 2},
    };
    for (const Row& row : rows) {
        const Replacement result = replaceMatches(text, query, QStringLiteral("EUR"), row.locked);
        EXPECT_EQ(result.text, row.expected);
        EXPECT_EQ(result.replaced, row.replaced);
        EXPECT_EQ(result.skipped, row.skipped);
    }
    // A replacement that contains the pattern is not searched again.
    EXPECT_EQ(replaceMatches(QStringLiteral("a a"), {QStringLiteral("a")}, QStringLiteral("aa"), {}).text,
              QStringLiteral("aa aa"));
}

} // namespace
} // namespace lumo
