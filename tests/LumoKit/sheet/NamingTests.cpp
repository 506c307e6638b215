#include <gtest/gtest.h>

#include "LumoKit/base/Language.h"
#include "LumoKit/sheet/Naming.h"

using namespace lumo;

namespace {

struct Texts {
    std::string japanese; // "" when the name is accepted
    std::string english;
};

template <typename Check> Texts inBothLanguages(Check check) {
    Texts texts;
    L10n::setCurrent(AppLanguage::japanese);
    texts.japanese = check().value_or("");
    L10n::setCurrent(AppLanguage::english);
    texts.english = check().value_or("");
    L10n::setCurrent(AppLanguage::system);
    return texts;
}

const std::string sheet =
    "rent = 80000\n\nfood = 3 * 12\n  price = 1200\n// price = 1\n\nprice2 = price =\nlast";

} // namespace

TEST(Naming, ValidateLineName) {
    struct Case {
        std::string name;
        std::size_t lineIndex;
        Texts expected;
    };
    const Texts letters{"名前には文字と数字だけが使えます（先頭は文字）",
                        "Names can use only letters and digits (starting with a letter)"};
    const Case cases[] = {
        {"   ", 7, {"名前を入れてください", "Enter a name"}},
        {"2x", 7, letters},
        {"a-b", 7, letters},
        {"my name", 7, letters},
        {"税込", 7, {}},
        {" x2 ", 7, {}},
        {"In", 7, {"「In」はもともとある言葉なので使えません", "“In” is a built-in word and can’t be used"}},
        {"X", 7, {"「X」はもともとある言葉なので使えません", "“X” is a built-in word and can’t be used"}},
        {"Sqrt", 7, {"「Sqrt」は関数の名前なので使えません", "“Sqrt” is a function name and can’t be used"}},
        {"Pi", 7, {"「Pi」は定数の名前なので使えません", "“Pi” is a constant name and can’t be used"}},
        {"mm", 7, {"「mm」は単位なので使えません", "“mm” is a unit and can’t be used"}},
        {"price", 6, {"「price」は 4 行目で使っています", "“price” is already used on line 4"}},
        {"ｐｒｉｃｅ", 7, {"「price」は 4 行目で使っています", "“price” is already used on line 4"}},
        {"price", 3, {}}, // keeping a line's own name
        {"price2", 7, {"「price2」は 7 行目で使っています", "“price2” is already used on line 7"}},
        {"food", 0, {"「food」は 3 行目で使っています", "“food” is already used on line 3"}},
    };
    for (const auto& c : cases) {
        const Texts texts = inBothLanguages([&] { return validateLineName(c.name, sheet, c.lineIndex); });
        EXPECT_EQ(texts.japanese, c.expected.japanese) << c.name;
        EXPECT_EQ(texts.english, c.expected.english) << c.name;
    }
}

TEST(Naming, NameClash) {
    struct Case {
        std::string name;
        Texts expected;
    };
    const Case cases[] = {
        {"Sqrt",
         {"「Sqrt」はもともとある関数なので使えません", "“Sqrt” is a built-in function and can’t be used"}},
        {"pi", {"「pi」は定数なので使えません", "“pi” is a constant and can’t be used"}},
        {"Total",
         {"「Total」はもともとある言葉なので使えません", "“Total” is a built-in word and can’t be used"}},
        {"前", {"「前」はもともとある言葉なので使えません", "“前” is a built-in word and can’t be used"}},
        {"kg", {"「kg」は単位なので使えません", "“kg” is a unit and can’t be used"}},
        {"x", {}}, // a syntax word for line names, but not one of the sheet's words
    };
    for (const auto& c : cases) {
        const Texts texts = inBothLanguages([&] { return nameClash(c.name); });
        EXPECT_EQ(texts.japanese, c.expected.japanese) << c.name;
        EXPECT_EQ(texts.english, c.expected.english) << c.name;
    }
}
