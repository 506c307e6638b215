#include <gtest/gtest.h>

#include <cstdlib>

#include "LumoKit/base/Language.h"

using namespace lumo;

namespace {

// Sets the preferred languages for one test and restores the defaults afterwards.
class LanguageTest : public ::testing::Test {
protected:
    void prefer(std::vector<std::string> languages) {
        L10n::setPreferredLanguagesProvider([languages] { return languages; });
    }
    void TearDown() override {
        L10n::setPreferredLanguagesProvider(nullptr);
        L10n::setCurrent(AppLanguage::system);
    }
};

} // namespace

TEST_F(LanguageTest, ResolutionRule) {
    struct Case {
        AppLanguage setting;
        std::vector<std::string> preferred;
        bool english;
    };
    const Case cases[] = {
        {AppLanguage::japanese, {"en-US"}, false}, {AppLanguage::english, {"ja-JP"}, true},
        {AppLanguage::system, {}, true},           {AppLanguage::system, {"ja-JP"}, false},
        {AppLanguage::system, {"ja"}, false},      {AppLanguage::system, {"en-JP", "ja-JP"}, true},
        {AppLanguage::system, {"fr-FR"}, true},
    };
    for (const auto& c : cases) {
        prefer(c.preferred);
        L10n::setCurrent(c.setting);
        EXPECT_EQ(L10n::isEnglish(), c.english) << rawValue(c.setting);
        EXPECT_EQ(L10n::pick("日本語", "English"), c.english ? "English" : "日本語");
    }
}

TEST_F(LanguageTest, ChangeTakesEffectAtTheNextCall) {
    prefer({"ja-JP"});
    std::string before = L10n::pick("前", "before");
    prefer({"en-GB"});
    EXPECT_EQ(before, "前");
    EXPECT_EQ(L10n::pick("後", "after"), "after");
}

TEST_F(LanguageTest, RawValues) {
    EXPECT_EQ(appLanguageFromRaw("japanese"), AppLanguage::japanese);
    EXPECT_EQ(appLanguageFromRaw("English"), std::nullopt);
}

TEST_F(LanguageTest, LocaleEnvironmentOrder) {
    struct Case {
        const char* language;
        const char* lcAll;
        const char* lcMessages;
        const char* lang;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {nullptr, nullptr, nullptr, "ja_JP.UTF-8", {"ja_JP.UTF-8"}},
        {"en_GB:ja", nullptr, nullptr, "ja_JP.UTF-8", {"en_GB", "ja", "ja_JP.UTF-8"}},
        {"", "C", "POSIX", "de_DE.UTF-8", {"de_DE.UTF-8"}},
        {nullptr, nullptr, nullptr, nullptr, {}},
    };
    auto set = [](const char* name, const char* value) {
        if (value)
            setenv(name, value, 1);
        else
            unsetenv(name);
    };
    for (const auto& c : cases) {
        set("LANGUAGE", c.language);
        set("LC_ALL", c.lcAll);
        set("LC_MESSAGES", c.lcMessages);
        set("LANG", c.lang);
        EXPECT_EQ(L10n::localeEnvironmentLanguages(), c.expected);
    }
    set("LANG", "ja_JP.UTF-8");
    set("LANGUAGE", nullptr);
    set("LC_ALL", nullptr);
    set("LC_MESSAGES", nullptr);
    EXPECT_FALSE(L10n::isEnglish());
}
