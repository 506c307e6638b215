#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>

#include "support/EngineTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

std::vector<Value> numbers(int count) {
    std::vector<Value> items;
    for (int i = 1; i <= count; ++i)
        items.push_back(Value::plain(i));
    return items;
}

std::string format(const Value& value) {
    return ValueFormatter::format(value, EvaluationOptions{}, Grouping::none);
}

} // namespace

TEST(ValueFormatter, Numbers) {
    const double inf = std::numeric_limits<double>::infinity();
    struct Case {
        double number;
        const char* plain;
        const char* grouped;
    };
    const Case cases[] = {
        {0.1 + 0.2, "0.3", "0.3"},
        {1e15, "1e15", "1e15"},
        {1e15 - 1, "999999999999999", "999,999,999,999,999"},
        {1e-9, "0.000000001", "0.000000001"},
        {1e-10, "1e-10", "1e-10"},
        {-0.0, "0", "0"},
        {inf, "∞", "∞"},
        {-inf, "-∞", "-∞"},
        {std::numeric_limits<double>::quiet_NaN(), "—", "—"},
        {1234567.891, "1234567.891", "1,234,567.891"},
        {1.0 / 3, "0.3333333333", "0.3333333333"},
        {1.23456e15, "1.23456e15", "1.23456e15"},
        {2.5e-10, "2.5e-10", "2.5e-10"},
        {-1.2345678e-300, "-1.234568e-300", "-1.234568e-300"},
        {123456, "123456", "123,456"},
        {1000, "1000", "1,000"},
        {211.99999999999997, "212", "212"},
        {3.3057851239669422, "3.305785124", "3.305785124"},
        {0.99999999999, "1", "1"},
        {0.12345678905, "0.1234567891", "0.1234567891"},
        {-17.777777777777771, "-17.7777777778", "-17.7777777778"},
        {999999999999.9999, "999999999999.9999", "999,999,999,999.9999"},
        // Short decimals are written without the shortest-digits search: the same text.
        {-1234.05, "-1234.05", "-1,234.05"},
        {-1234567, "-1234567", "-1,234,567"},
        {0.000123, "0.000123", "0.000123"},
        {12345678901.5, "12345678901.5", "12,345,678,901.5"},
        {32720.000000000004, "32720", "32,720"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ValueFormatter::formatNumber(c.number, EvaluationOptions{}, Grouping::none), c.plain)
            << c.plain;
        EXPECT_EQ(ValueFormatter::formatNumber(c.number, EvaluationOptions{}, Grouping::grouped), c.grouped)
            << c.grouped;
    }
}

TEST(ValueFormatter, RoundSignificant) {
    const std::pair<double, double> cases[] = {
        {3.3057851239669422, 3.305785123967},
        {0.00012345678901234, 0.0001234567890123},
        {1e12 + 0.3, 1e12 + 0.3}, // k < 1: left alone
        {2.5e-290, 2.5e-290},     // k > 299: left alone
    };
    for (const auto& [input, expected] : cases)
        EXPECT_EQ(ValueFormatter::roundSignificant(input), expected) << input;
}

TEST(ValueFormatter, Values) {
    const std::pair<Value, const char*> cases[] = {
        {Value::percent(12.5), "12.5%"},
        {qty(5, "km"), "5 km"},
        {qty(82000, "円"), "82000円"},
        {qty(-3, "°C"), "-3°C"},
        {qty(36, "kN/mm2"), "36 kN/mm²"},
        {Value::makeText("say \"hi\""), "\"say \"hi\"\""},
        {Value::list({}), "[]"},
        {Value::list({Value::plain(1), Value::makeText("a"), Value::list({qty(2, "mm")})}),
         "[1, \"a\", [2 mm]]"},
    };
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(format(value), expected);
    EXPECT_EQ(ValueFormatter::format(qty(1234567, "円"), EvaluationOptions{}, Grouping::grouped),
              "1,234,567円");
    EXPECT_EQ(ValueFormatter::format(Value::list({Value::plain(1e4), Value::percent(1e4)}),
                                     EvaluationOptions{}, Grouping::grouped),
              "[10,000, 10,000%]");
}

TEST(ValueFormatter, LongListsShowAHundredItems) {
    const std::string first100 = format(Value::list(numbers(100)));
    for (int count : {101, 250}) {
        const std::string shown = format(Value::list(numbers(count)));
        EXPECT_EQ(shown,
                  first100.substr(0, first100.size() - 1) + ", … 全 " + std::to_string(count) + " 個]");
    }
    // The marker reads the same in both languages.
    EXPECT_TRUE(ValueFormatter::format(Value::list(numbers(101)), optionsWith(Language::english))
                    .ends_with(", 100, … 全 101 個]"));

    Value nested = Value::list({Value::plain(1)});
    for (int i = 0; i < 200; ++i)
        nested = Value::list({nested});
    EXPECT_TRUE(format(nested).starts_with("[[[[")); // deep nesting neither recurses without bound nor fails
}

TEST(ValueFormatter, MaxFractionDigits) {
    EXPECT_EQ(ValueFormatter::maxFractionDigits(), 10);
    const std::tuple<int, double, const char*> cases[] = {
        {2, 1.0 / 3, "0.33"},
        {2, 2.0 / 3, "0.67"},
        {2, -0.001, "0"},
        {0, 12.75, "13"},
        {0, 1e-9, "0"},
        {3, 1.5, "1.5"},
        {-5, 2.25, "2"},
        {15, 1.0 / 3, "0.3333333333333"},
        // A carry runs through the point and can add a digit in front, behind the sign.
        {2, 9.996, "10"},
        {2, -99.996, "-100"},
        {1, 0.96, "1"},
        {2, 19.995, "20"},
        {0, -0.4, "0"},
        {1, 1.2996, "1.3"},
    };
    for (const auto& [digits, number, expected] : cases) {
        // The process-wide default is kept in range and reaches runs through their options.
        ValueFormatter::setMaxFractionDigits(digits);
        EXPECT_EQ(ValueFormatter::formatNumber(number, EvaluationOptions::current(), Grouping::none),
                  expected)
            << digits << " digits";
    }
    ValueFormatter::setMaxFractionDigits(10);
}

// Switches the process to a German locale (decimal comma), compiling it into a temporary
// folder when the system has not generated it.
bool useDecimalCommaLocale() {
    if (std::setlocale(LC_ALL, "de_DE.UTF-8"))
        return true;
    auto dir = std::filesystem::temp_directory_path() / "lumo-test-locales";
    std::filesystem::create_directories(dir);
    std::string command =
        "localedef -i de_DE -f UTF-8 '" + (dir / "de_DE.UTF-8").string() + "' >/dev/null 2>&1";
    [[maybe_unused]] int status = std::system(command.c_str());
    ::setenv("LOCPATH", dir.c_str(), 1);
    return std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
}

TEST(ValueFormatter, IgnoresTheProcessLocale) {
    if (!useDecimalCommaLocale())
        GTEST_SKIP() << "no locale with a decimal comma can be made here";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(ValueFormatter::formatNumber(1234.5, EvaluationOptions{}, Grouping::grouped), "1,234.5");
    EXPECT_EQ(ValueFormatter::formatNumber(1.5e20, EvaluationOptions{}, Grouping::none), "1.5e20");
    EXPECT_EQ(format(qty(2.5, "kg")), "2.5 kg");
    std::setlocale(LC_ALL, "C");
}
