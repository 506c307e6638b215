#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "support/EngineTestSupport.h"

namespace lumo {
// Failures print values as the answer column shows them.
void PrintTo(const Value& value, std::ostream* out) {
    *out << ValueFormatter::format(value, EvaluationOptions{}, Grouping::none);
}
} // namespace lumo

using namespace lumo;
using namespace lumo::test;

namespace {

using Operation = std::function<Value(const Value&, const Value&)>;

Value num(double x) {
    return Value::plain(x);
}
Value pct(double figure) {
    return Value::percent(figure);
}
Value text(std::string s) {
    return Value::makeText(std::move(s));
}
Value list(std::vector<Value> items) {
    return Value::list(std::move(items));
}

std::string failure(const Operation& operation, const Value& left, const Value& right,
                    Language language = Language::english) {
    return messageOf([&] { operation(left, right); }, language);
}

Value alignOnly(const Value& left, const Value& right) {
    alignUnits(left, right);
    return {};
}

struct Case {
    const char* name;
    Operation operation;
    Value left;
    Value right;
    Value expected;
};

struct FailureCase {
    Operation operation;
    Value left;
    Value right;
    const char* message;
};

} // namespace

TEST(Value, Arithmetic) {
    const Case cases[] = {
        {"2 h + 30 min", add, qty(2, "h"), qty(30, "min"), qty(2.5, "h")},
        {"30 min + 2 h", add, qty(30, "min"), qty(2, "h"), qty(150, "min")},
        {"5 + 3 mm", add, num(5), qty(3, "mm"), qty(8, "mm")},
        {"3 mm + 5", add, qty(3, "mm"), num(5), qty(8, "mm")},
        {"3.3 - 3.3000000000000003", subtract, num(3.3), num(3.3000000000000003), num(0)},
        {"200 + 10%", add, num(200), pct(10), num(220)},
        {"200 mm - 10%", subtract, qty(200, "mm"), pct(10), qty(180, "mm")},
        {"10% + 5%", add, pct(10), pct(5), pct(15)},
        {"10% + 5 mm", add, pct(10), qty(5, "mm"), qty(5.1, "mm")},
        {"300 × 15%", multiply, num(300), pct(15), num(45)},
        {"10% × 3", multiply, pct(10), num(3), num(0.1 * 3)},
        {"50% ÷ 25%", divide, pct(50), pct(25), num(2)},
        {"50% ^ 2", power, pct(50), num(2), num(0.25)},
        {"100 km/h × 2 h", multiply, qty(100, "km/h"), qty(2, "h"), qty(200, "km")},
        {"120 mm × 300 mm", multiply, qty(120, "mm"), qty(300, "mm"), qty(36000, "mm²")},
        {"36 kN ÷ 36000 mm²", divide, qty(36, "kN"), qty(36000, "mm²"), qty(0.001, "kN/mm²")},
        {"2 ÷ 4 s", divide, num(2), qty(4, "s"), qty(0.5, "s^-1")},
        {"2 × 20 °C", multiply, num(2), qty(20, "°C"), qty(40, "°C")},
        {"2 m ^ 9", power, qty(2, "m"), num(9), qty(512, "m^9")},
        {"5 m ^ 0", power, qty(5, "m"), num(0), num(1)},
        {"\"ab\" + \"cd\"", add, text("ab"), text("cd"), text("abcd")},
        {"[1] + [2, 3]", add, list({num(1)}), list({num(2), num(3)}), list({num(1), num(2), num(3)})},
        {"3 × \"ab\"", multiply, num(3), text("ab"), text("ababab")},
        {"\"ab\" × -3", multiply, text("ab"), num(-3), text("")},
        {"\"x\" × 200%", multiply, text("x"), pct(200), text("xx")},
        {"[] × 1000000", multiply, list({}), num(1e6), list({})},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.operation(c.left, c.right), c.expected) << c.name;
}

TEST(Value, CancellationGivesExactZero) {
    EXPECT_EQ(subtract(add(num(0.1), num(0.2)), num(0.3)).number, 0.0);
    EXPECT_EQ(subtract(add(qty(0.1, "m"), qty(200, "mm")), qty(0.3, "m")).number, 0.0);
    // A genuinely small difference survives.
    EXPECT_EQ(subtract(num(1), num(0.9999999999)).number, 1 - 0.9999999999);
}

TEST(Value, SizeLimits) {
    EXPECT_EQ(add(text(std::string(99999, 'a')), text("b")).text().size(), 100000u);
    EXPECT_EQ(add(text(std::string(99999, 'a') + "é"), text("")).text().size(), 100001u);
    EXPECT_EQ(multiply(list({num(1), num(2)}), num(50000)).items().size(), 100000u);
    EXPECT_EQ(multiply(num(100000), text("あ")).text().size(), 300000u);
}

TEST(Value, CopiesShareAListOrTextUntilOneIsChanged) {
    const Value original = list({num(1), num(2)});
    Value copy = original;
    EXPECT_EQ(&copy.items(), &original.items()) << "a copy of a long list costs no copy of its items";
    copy.editItems().push_back(num(3));
    EXPECT_EQ(original, list({num(1), num(2)}));
    EXPECT_EQ(copy, list({num(1), num(2), num(3)}));

    const Value greeting = text("hello");
    Value changed = greeting;
    changed.editText() += "!";
    EXPECT_EQ(greeting.text(), "hello");
    EXPECT_EQ(changed.text(), "hello!");
    EXPECT_EQ(text("").text(), "");
    EXPECT_TRUE(num(1).items().empty() && num(1).text().empty());
}

TEST(Value, FailuresInEnglish) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::string repeatMessage = "The repeat count must be a whole number without a unit";
    const FailureCase cases[] = {
        {add, qty(1, "kg"), qty(2, "m"), "kg and m can't be added together"},
        {subtract, qty(1000, "円"), qty(5, "$"), "円 and USD can't be added together"},
        {add, text(std::string(99999, 'a')), text("bc"), "The text is too long"},
        {add, list(std::vector<Value>(60000, num(1))), list(std::vector<Value>(40001, num(1))),
         "The list is too big"},
        {multiply, list({num(1), num(2)}), num(50001), "The list is too big"},
        {multiply, num(1e300), list({num(1)}), "The list is too big"},
        {multiply, list({num(1)}), num(2.5), repeatMessage.c_str()},
        {multiply, list({num(1)}), qty(2, "mm"), repeatMessage.c_str()},
        {multiply, text("a"), num(nan), repeatMessage.c_str()},
        {add, text("a"), num(1), "Text and a number can't be joined with + (str(value) makes text)"},
        {add, list({num(1)}), num(1), "+ doesn't work between a list and a number"},
        {subtract, text("a"), text("b"), "- doesn't work between text and text"},
        {multiply, text("a"), list({}), "* doesn't work between text and a list"},
        {power, text("a"), num(2), "^ doesn't work between text and a number"},
        {divide, num(5), num(0), "Cannot divide by zero"},
        {power, num(10), num(400), "Can't calculate this"},
        {power, num(2), qty(1, "m"), "An exponent can't have a unit"},
        {power, qty(2, "m"), num(10), "Values with units can only be raised to whole-number powers"},
        {power, qty(20, "°C"), num(2), "°C can't be raised to a power"},
        {power, qty(20, "°C"), num(2.5), "Values with units can only be raised to whole-number powers"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(failure(c.operation, c.left, c.right), c.message) << c.message;
    EXPECT_EQ(failure(alignOnly, text("a"), num(1)),
              "this calculation doesn't work between text and a number");
}

TEST(Value, FailureWithoutAnOperatorInJapanese) {
    EXPECT_EQ(failure(alignOnly, list({}), num(1), Language::japanese), "表と数は この計算 で計算できません");
}

TEST(Value, Equality) {
    EXPECT_EQ(qty(1, "kph"), qty(1, "km/h"));
    EXPECT_NE(qty(1, "m"), num(1));
    EXPECT_NE(pct(1), num(1));
    EXPECT_NE(text(""), list({}));
}
