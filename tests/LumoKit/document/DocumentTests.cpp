#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/document/Document.h"

using namespace lumo;

namespace {

// Sheets named by one hex digit: sheet 'A' has the identifier AAAAAAAA-AAAA-….
Uuid idOf(char letter) {
    std::string text(36, letter);
    for (std::size_t hyphen : {8, 13, 18, 23})
        text[hyphen] = '-';
    return *Uuid::fromString(text);
}

Sheet sheet(char letter, double updatedAt, std::string text = "") {
    return Sheet{idOf(letter), std::string(1, letter), std::move(text), Timestamp{updatedAt}, {}};
}

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

std::string decodeFailure(const std::string& bytes) {
    try {
        decodeDocument(bytes);
    } catch (const DocumentDecodeError& error) {
        return error.what();
    }
    return "(decoded)";
}

constexpr double day = 86400;

} // namespace

TEST(Document, UuidText) {
    const struct {
        const char* input;
        const char* expected; // empty: rejected
    } cases[] = {
        {"e621e1f8-c36c-495a-93fc-0c247a3e6e5f", "E621E1F8-C36C-495A-93FC-0C247A3E6E5F"},
        {"", ""},
        {"E621E1F8C36C495A93FC0C247A3E6E5F", ""},
        {"E621E1F8-C36C-495A-93FC-0C247A3E6E5", ""},
        {"G621E1F8-C36C-495A-93FC-0C247A3E6E5F", ""},
        {"E621E1F8_C36C-495A-93FC-0C247A3E6E5F", ""},
    };
    for (const auto& c : cases) {
        const auto uuid = Uuid::fromString(c.input);
        EXPECT_EQ(uuid ? uuid->toString() : "", c.expected) << c.input;
    }

    const Uuid first = Uuid::random();
    const Uuid second = Uuid::random();
    EXPECT_NE(first, second);
    EXPECT_EQ(first.toString()[14], '4') << "version 4";
    EXPECT_NE(std::string("89AB").find(first.toString()[19]), std::string::npos) << "RFC 4122 variant";
    EXPECT_EQ(Uuid::fromString(first.toString()), first);
}

TEST(Document, Iso8601Dates) {
    const struct {
        double seconds;
        const char* text;
    } roundTrips[] = {
        {0, "1970-01-01T00:00:00Z"},
        {1738314900, "2025-01-31T09:15:00Z"},
        {1709164800, "2024-02-29T00:00:00Z"},
        {-1, "1969-12-31T23:59:59Z"},
        {253402300799, "9999-12-31T23:59:59Z"},
        {-62167219200, "0000-01-01T00:00:00Z"},
    };
    for (const auto& c : roundTrips) {
        EXPECT_EQ(formatIso8601(Timestamp{c.seconds}), c.text);
        EXPECT_EQ(parseIso8601(c.text), Timestamp{c.seconds}) << c.text;
    }
    // The file holds whole seconds: fractions are dropped, not rounded.
    EXPECT_EQ(formatIso8601(Timestamp{1738314900.999}), "2025-01-31T09:15:00Z");
    EXPECT_EQ(formatIso8601(Timestamp{1e300}), "9999-12-31T23:59:59Z") << "clamped to what the form can hold";
    EXPECT_EQ(parseIso8601("2025-01-31T18:15:00+09:00"), Timestamp{1738314900});

    for (const char* rejected :
         {"2025-01-31T09:15:00.5Z", "2025-01-31T09:15:00.000Z", "2025-01-31 09:15:00Z", "2025-01-31T09:15:00",
          "2025-01-31T09:15Z", "2025-02-30T00:00:00Z", "2025-13-01T00:00:00Z", "2025-01-31T24:00:00Z",
          "2025-01-31T09:60:00Z", "2025-01-31t09:15:00z", "+2025-01-31T09:15:00Z", "2025-01-31T09:15:00+0900",
          "1738314900", ""})
        EXPECT_FALSE(parseIso8601(rejected)) << rejected;
}

TEST(Document, EncodingLayout) {
    LumoDocument document;
    document.sheets.push_back(
        Sheet{idOf('A'), "家計", "rent = 820 USD\n\"quoted\"", Timestamp{1738314900}, {2, 0}});
    document.selectedSheetID = idOf('A');
    document.deletedSheets["BBBBBBBB-BBBB-BBBB-BBBB-BBBBBBBBBBBB"] = Timestamp{0};
    document.sheetOrderUpdatedAt = Timestamp{1738314901.7};

    const std::string expected = R"({
  "deletedSheets": {
    "BBBBBBBB-BBBB-BBBB-BBBB-BBBBBBBBBBBB": "1970-01-01T00:00:00Z"
  },
  "keyLayouts": {},
  "selectedSheetID": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA",
  "sheetOrderUpdatedAt": "2025-01-31T09:15:01Z",
  "sheets": [
    {
      "id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA",
      "lockedLines": [
        2,
        0
      ],
      "name": "家計",
      "text": "rent = 820 USD\n\"quoted\"",
      "updatedAt": "2025-01-31T09:15:00Z"
    }
  ]
})";
    EXPECT_EQ(encodeDocument(document), expected);

    const std::string bytes = encodeDocument(document);
    EXPECT_EQ(encodeDocument(decodeDocument(bytes)), bytes);
    EXPECT_EQ(decodeSheet(encodeSheet(document.sheets[0])), document.sheets[0]);
}

TEST(Document, DecodingDefaults) {
    const LumoDocument onlySheets = decodeDocument(
        R"({"sheets": [{"id": "aaaaaaaa-aaaa-aaaa-aaaa-aaaaaaaaaaaa", "name": "A", "text": "1", "extra": true}],
            "unknown": [1, {"x": null}]})");
    LumoDocument expected; // lower-case identifier, no date, no selection, no tombstones or layouts
    expected.sheets.push_back(Sheet{idOf('A'), "A", "1", Timestamp{0}, {}});
    EXPECT_EQ(onlySheets, expected);

    const std::string rewritten = encodeDocument(onlySheets);
    EXPECT_NE(rewritten.find("\"deletedSheets\": {}"), std::string::npos);
    EXPECT_NE(rewritten.find("\"keyLayouts\": {}"), std::string::npos);
    for (const char* absent : {"selectedSheetID", "UpdatedAt\"", "unknown", "extra"})
        EXPECT_EQ(rewritten.find(absent), std::string::npos) << absent;

    EXPECT_TRUE(decodeDocument(R"({"sheets": []})").sheets.empty());
    EXPECT_EQ(decodeDocument(R"({"sheets": [{"id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", "name": "A",
        "text": "", "lockedLines": [3.0, -1, 9223372036854775807]}]})")
                  .sheets[0]
                  .lockedLines,
              (std::vector<std::int64_t>{3, -1, 9223372036854775807}));
}

TEST(Document, BadFiles) {
    const std::string sheetA = R"({"id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", "name": "A", "text": ""})";
    const auto withSheet = [](const std::string& sheetJson) { return R"({"sheets": [)" + sheetJson + "]}"; };
    const auto withKey = [&](const std::string& keyJson) {
        return R"({"sheets": [)" + sheetA + "], " + keyJson + "}";
    };
    const struct {
        std::string bytes;
        const char* expected; // part of the English message
    } cases[] = {
        {"", "not valid JSON"},
        {"{\"sheets\": [", "not valid JSON"},
        {"{\"sheets\": []} trailing", "not valid JSON"},
        {withSheet(R"({"id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", "name": "\xff", "text": ""})"),
         "not valid JSON"},
        {std::string(100000, '['), "nested more than 64"},
        {"null", "“document” must be an object"},
        {"{}", "“sheets” is missing"},
        {R"({"sheets": {}})", "“sheets” must be an array"},
        {R"({"sheets": [1]})", "“sheets[0]” must be an object"},
        {withSheet(R"({"name": "A", "text": ""})"), "“sheets[0].id” is missing"},
        {withSheet(R"({"id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", "name": "A"})"),
         "“sheets[0].text” is missing"},
        {withSheet(R"({"id": "not-a-uuid", "name": "A", "text": ""})"), "“sheets[0].id” must be a UUID"},
        {withSheet(R"({"id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", "name": 5, "text": ""})"),
         "“sheets[0].name” must be a string"},
        {withSheet(R"({"id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", "name": "A", "text": "",
                       "updatedAt": "2025-01-31T09:15:00.250Z"})"),
         "“sheets[0].updatedAt” must be a date"},
        {withSheet(
             R"({"id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", "name": "A", "text": "", "lockedLines": [1.5]})"),
         "“sheets[0].lockedLines[0]” must be an integer"},
        {withSheet(R"({"id": "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", "name": "A", "text": "",
                       "lockedLines": [9223372036854775808]})"),
         "must be an integer"},
        {withKey(R"("selectedSheetID": 7)"), "“selectedSheetID” must be a UUID"},
        {withKey(R"("deletedSheets": {"X": "yesterday"})"), "“deletedSheets.X” must be a date"},
        {withKey(R"("keyLayouts": {"units": ["m"]})"), "“keyLayouts.units” must be an object"},
        {withKey(R"("keyLayouts": {"units": {"main": ["m", 2]}})"),
         "“keyLayouts.units.main[1]” must be a string"},
    };
    L10n::setCurrent(AppLanguage::english);
    for (const auto& c : cases) {
        const std::string message = decodeFailure(c.bytes);
        EXPECT_NE(message.find("The document file can’t be read: "), std::string::npos)
            << c.bytes.substr(0, 80);
        EXPECT_NE(message.find(c.expected), std::string::npos) << c.bytes.substr(0, 80) << " → " << message;
    }
    EXPECT_THROW(decodeSheet("{\"id\": 1}"), DocumentDecodeError);

    L10n::setCurrent(AppLanguage::japanese);
    EXPECT_EQ(decodeFailure("{}"), "文書ファイルを読み込めません: 「sheets」がありません");
    EXPECT_EQ(decodeFailure(R"({"sheets": {}})"),
              "文書ファイルを読み込めません: 「sheets」は配列でなければなりません");
    L10n::setCurrent(AppLanguage::system);

    // Invalid UTF-8 that got into a text in memory never stops a save.
    LumoDocument broken;
    broken.sheets.push_back(Sheet{idOf('A'),
                                  "A",
                                  "1\xff"
                                  "2",
                                  Timestamp{0},
                                  {}});
    EXPECT_EQ(decodeDocument(encodeDocument(broken)).sheets[0].text, "1\xEF\xBF\xBD"
                                                                     "2");
}

TEST(Document, Merging) {
    const double now = 1000 * day;
    const auto document = [](std::vector<Sheet> sheets, std::map<std::string, Timestamp> tombstones = {},
                             std::optional<double> orderTime = std::nullopt) {
        LumoDocument d;
        d.sheets = std::move(sheets);
        d.deletedSheets = std::move(tombstones);
        if (orderTime)
            d.sheetOrderUpdatedAt = Timestamp{*orderTime};
        return d;
    };
    const auto tomb = [](char letter, double at) {
        return std::pair{idOf(letter).toString(), Timestamp{at}};
    };
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
