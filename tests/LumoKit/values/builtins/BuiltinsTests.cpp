#include <gtest/gtest.h>

#include "LumoKit/values/builtins/Builtins.h"
#include "support/EngineTestSupport.h"

using namespace lumo;
using namespace lumo::test;

TEST(Builtins, NamesAreExact) {
    EXPECT_TRUE(isBuiltinFunction("log10"));
    for (const char* name : {"Sqrt", "plot", "sqrt "})
        EXPECT_FALSE(isBuiltinFunction(name)) << name;
}

TEST(Builtins, CommonArgumentRules) {
    expectAnswers({{"sqrt(16)", "4"}, {"sqrt(25%)", "0.5"}, {"cbrt(-8)", "-2"}, {"exp(0)", "1"}});
    expectErrors({{"sqrt(-1)", "Can’t take the square root of a negative number"},
                  {"sqrt([4])", "sqrt can’t take a list"},
                  {"ln(\"e\")", "ln can’t take text"},
                  {"sqrt(4 m)", "sqrt can’t take a value with a unit"},
                  {"sqrt()", "sqrt needs one argument"},
                  {"exp(1, 2)", "exp needs one argument"},
                  {"exp(1000)", "Can’t calculate this"},
                  {"sqrt(missing)", "missing is not defined"},
                  {"foo(1)", "There is no function named foo"},
                  {"Sqrt(4)", "There is no function named Sqrt"}});
}

TEST(Builtins, SignAndRounding) {
    expectAnswers({{"abs(-3 mm)", "3 mm"},
                   {"abs(-50%)", "0.5"},
                   {"sign(-2 m)", "-1"},
                   {"round(3.14159, 2)", "3.14"},
                   {"round(2.5)", "3"},
                   {"round(-2.5)", "-3"},
                   {"round(1.005, 2)", "1.01"},
                   {"floor(0.29, 2)", "0.29"},
                   {"floor(-2.5)", "-3"},
                   {"ceil(2.1)", "3"},
                   {"trunc(-2.7)", "-2"},
                   {"round(1234, -2)", "1200"},
                   {"round(12.345 m, 1)", "12.3 m"},
                   {"round(1e300, 15)", "1e300"}});
    expectErrors({{"round(1, 16)", "Digits must be between -15 and 15"},
                  {"round(1, 1.5)", "Digits must be between -15 and 15"},
                  {"round(1, 1 m)", "Digits can’t have a unit"},
                  {"round()", "Use round(value) or round(value, digits)"},
                  {"floor(1, 2, 3)", "Use floor(value) or floor(value, digits)"}});
}

TEST(Builtins, Aggregates) {
    expectAnswers({{"min(3, 1, 2)", "1"},
                   {"max([1, 5], 3)", "5"},
                   {"min(1 m, 50 cm)", "50 cm"},
                   {"max(20%, 0.1)", "0.2"},
                   {"sum(1 m, 50 cm)", "1.5 m"},
                   {"sum([1, [2, 3]])", "6"},
                   {"sum(10%, 20%)", "0.3"},
                   {"avg(1, 2, 3, 4)", "2.5"},
                   {"avg(1 m, 50 cm)", "0.75 m"}});
    expectErrors({{"max()", "max needs values"},
                  {"min([])", "min needs values"},
                  {"sum()", "sum needs values"},
                  {"average()", "avg needs values"},
                  {"max(1 m, 1 kg)", "m and kg can't be added together"},
                  {"min(1, \"a\")", "min can’t take text"},
                  {"sum(1e308, 1e308)", "Can’t calculate this"}});
}

TEST(Builtins, ListsAndTexts) {
    expectAnswers({{"len([1, 2, 3])", "3"},
                   {"len(\"👍🏽é\")", "2"},
                   {"str(120 mm)", "\"120 mm\""},
                   {"str(1234567)", "\"1234567\""},
                   {"str(\"a\") + str(1)", "\"a1\""},
                   {"str([1, \"a\"])", "\"[1, \"a\"]\""},
                   {"list(\"a👍🏽c\")", "[\"a\", \"👍🏽\", \"c\"]"},
                   {"list([1, 2])", "[1, 2]"},
                   {"sort([3, 1, 2])", "[1, 2, 3]"},
                   {"sort([1 m, 50 cm, 2])", "[50 cm, 1 m, 2]"},
                   {"sort([\"b\", \"a\", \"B\"])", "[\"B\", \"a\", \"b\"]"},
                   {"sort([])", "[]"},
                   {"reverse([1, 2, 3])", "[3, 2, 1]"},
                   {"reverse(\"a👍🏽c\")", "\"c👍🏽a\""}});
    expectErrors({{"len(5)", "len counts the length of a list or text"},
                  {"len()", "len counts the length of a list or text"},
                  {"list(5)", "list can’t take a number"},
                  {"sort([3, \"a\"])", "sort needs all numbers or all text"},
                  {"sort([1 m, 1 kg])", "m and kg can't be added together"},
                  {"sort(3)", "sort arranges the items of a list"},
                  {"reverse(1)", "reverse works on a list or text"}});
}

TEST(Builtins, Logarithms) {
    expectAnswers({{"log(100)", "2"}, {"log10(0.001)", "-3"}, {"ln(e)", "1"}, {"log2(8)", "3"}});
    expectErrors(
        {{"log(0)", "log works only on positive numbers"}, {"ln(1 m)", "ln can’t take a value with a unit"}});
}

TEST(Builtins, TrigonometryInRadians) {
    expectAnswers({{"sin(0)", "0"},
                   {"cos(pi)", "-1"},
                   {"sin(30 deg)", "0.5"},
                   {"cos(180°)", "-1"},
                   {"asin(1)", "1.5707963268 rad"},
                   {"atan(1)", "0.7853981634 rad"}},
                  nullptr, optionsWith(Language::english, AngleUnit::radians));
    expectErrors({{"sin(1 m)", "sin needs an angle"},
                  {"asin(2)", "asin needs a value between -1 and 1"},
                  {"acos(-1.5)", "acos needs a value between -1 and 1"}});
}

TEST(Builtins, TrigonometryInDegrees) {
    const EvaluationOptions degrees = optionsWith(Language::english, AngleUnit::degrees);
    expectAnswers({{"sin(30)", "0.5"},
                   {"sin(180)", "0"},
                   {"sin(-450)", "-1"},
                   {"tan(45)", "1"},
                   {"sin(30 deg)", "0.5"},
                   {"cos(pi rad)", "-1"},
                   {"asin(1)", "90 deg"},
                   {"acos(0.5)", "60 deg"},
                   {"atan(1)", "45 deg"}},
                  nullptr, degrees);
    expectErrors({{"tan(90)", "Can’t calculate this"}}, nullptr, degrees);
}

TEST(Builtins, TwoArgumentArithmetic) {
    expectAnswers({{"pow(2, 10)", "1024"},
                   {"mod(-7, 3)", "-1"},
                   {"mod(7 m, 300 cm)", "1 m"},
                   {"hypot(3, 4)", "5"},
                   {"hypot(3 m, 400 cm)", "5 m"},
                   {"hypot(1e300, 1e300)", "1.414214e300"},
                   {"gcd(12, 18)", "6"},
                   {"gcd(-12, 18)", "6"},
                   {"gcd(0, 5)", "5"},
                   {"lcm(4, 6)", "12"},
                   {"lcm(9007199254740992, 3)", "2.70216e16"}});
    expectErrors({{"pow(2)", "Use pow(value, exponent)"},
                  {"pow(2, 1 m)", "An exponent can't have a unit"},
                  {"mod(7, 0)", "Cannot divide by zero"},
                  {"mod(1)", "Use mod(value, value)"},
                  {"hypot(3)", "Use hypot(value, value)"},
                  {"gcd(1.5, 3)", "Use gcd(integer, integer)"},
                  {"lcm(1)", "Use lcm(integer, integer)"},
                  {"gcd(2 m, 4)", "gcd can’t take a value with a unit"},
                  {"gcd(1e16, 2)", "The numbers are too large for gcd"},
                  {"gcd(0, 0)", "Zero can’t be used here"},
                  {"lcm(0, 5)", "Zero can’t be used here"},
                  {"lcm(9007199254740992, 9007199254740991)", "The lcm result is too large"}});
}
