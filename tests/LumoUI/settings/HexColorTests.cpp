#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

#include "LumoUI/settings/HexColor.h"

using namespace lumo;

TEST(HexColor, TextForm) {
    struct Case {
        const char* text;
        std::optional<std::uint32_t> expected;
    };
    const Case cases[] = {
        {" #0e8a64 ", 0x0E8A64FF},  {"B4551A", 0xB4551AFF},     {"#0E8A6", std::nullopt},
        {"#0E8A64F", std::nullopt}, {"##0E8A64", std::nullopt}, {"#0E8G64", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(HexColor::parse(c.text), c.expected) << c.text;
    EXPECT_EQ(HexColor::format(0x0E8A6400), "#0E8A64");
    EXPECT_EQ(HexColor::components(0xFF0033FF), (HexColor::Components{1.0, 0.0, 0.2, 1.0}));
}
