#include <gtest/gtest.h>

#include <string>

#include "LumoKit/document/Uuid.h"

using namespace lumo;

TEST(Uuid, Text) {
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
