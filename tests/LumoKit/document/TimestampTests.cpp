#include <gtest/gtest.h>

#include "LumoKit/document/Timestamp.h"

using namespace lumo;

TEST(Timestamp, Iso8601Dates) {
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
        {1738314900.25, "2025-01-31T09:15:00.250Z"},
        {1738314900.999, "2025-01-31T09:15:00.999Z"},
        {-0.5, "1969-12-31T23:59:59.500Z"},
    };
    for (const auto& c : roundTrips) {
        EXPECT_EQ(formatIso8601(Timestamp{c.seconds}), c.text);
        EXPECT_EQ(parseIso8601(c.text), Timestamp{c.seconds}) << c.text;
    }
    // The file holds milliseconds; whole-second files from before still read the same.
    EXPECT_EQ(formatIso8601(Timestamp{1738314900.9996}), "2025-01-31T09:15:01Z");
    EXPECT_EQ(parseIso8601("2025-01-31T09:15:00.5Z"), Timestamp{1738314900.5});
    EXPECT_EQ(parseIso8601("2025-01-31T09:15:00.000Z"), Timestamp{1738314900});
    EXPECT_EQ(parseIso8601("2025-01-31T09:15:00.1239Z"), parseIso8601("2025-01-31T09:15:00.123Z"));
    EXPECT_EQ(formatIso8601(Timestamp{1e300}), "9999-12-31T23:59:59Z") << "clamped to what the form can hold";
    EXPECT_EQ(parseIso8601("2025-01-31T18:15:00+09:00"), Timestamp{1738314900});

    for (const char* rejected :
         {"2025-01-31T09:15:00.Z", "2025-01-31T09:15:00.5", "2025-01-31 09:15:00Z", "2025-01-31T09:15:00",
          "2025-01-31T09:15Z", "2025-02-30T00:00:00Z", "2025-13-01T00:00:00Z", "2025-01-31T24:00:00Z",
          "2025-01-31T09:60:00Z", "2025-01-31t09:15:00z", "+2025-01-31T09:15:00Z", "2025-01-31T09:15:00+0900",
          "1738314900", ""})
        EXPECT_FALSE(parseIso8601(rejected)) << rejected;
}
