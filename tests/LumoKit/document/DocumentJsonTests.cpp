#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/document/DocumentJson.h"
#include "support/DocumentTestSupport.h"

using namespace lumo;
using lumo::test::idOf;

namespace {

std::string decodeFailure(const std::string& bytes) {
    try {
        decodeDocument(bytes);
    } catch (const DocumentDecodeError& error) {
        return error.what();
    }
    return "(decoded)";
}

} // namespace

TEST(DocumentJson, EncodingLayout) {
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
  "sheetOrderUpdatedAt": "2025-01-31T09:15:01.700Z",
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

TEST(DocumentJson, DecodingDefaults) {
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

TEST(DocumentJson, BadFiles) {
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
                       "updatedAt": "2025-01-31T09:15:00,250Z"})"),
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
