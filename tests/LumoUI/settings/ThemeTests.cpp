#include <gtest/gtest.h>

#include "LumoUI/settings/Theme.h"

using namespace lumo;

TEST(Theme, UserColorsOverDefaults) {
    SyntaxColorOverrides none;
    EXPECT_EQ(Theme::color(SyntaxKind::number, Appearance::light, none), 0x1B1A18FFu);
    EXPECT_EQ(Theme::color(SyntaxKind::number, Appearance::dark, none), 0xE9E9ECFFu);

    SyntaxColorOverrides user{
        {"quoted.light", " #0e8a64 "}, {"quoted.dark", "#12345"}, {"number", "#FFFFFF"}};
    EXPECT_EQ(Theme::color(SyntaxKind::quoted, Appearance::light, user), 0x0E8A64FFu);
    // Unreadable or misnamed entries fall back to the defaults.
    EXPECT_EQ(Theme::color(SyntaxKind::quoted, Appearance::dark, user), 0xE8A15FFFu);
    EXPECT_EQ(Theme::color(SyntaxKind::number, Appearance::dark, user), 0xE9E9ECFFu);
    EXPECT_EQ(Theme::colorKey(SyntaxKind::operatorMark, Appearance::dark), "operatorMark.dark");
}
