#include <gtest/gtest.h>

#include "support/EngineTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

MapContext sheetContext() {
    MapContext context;
    context.names = {{"rent", Value::plain(80000)}, {"food", Value::plain(30000)}, {"x", Value::plain(4)},
                     {"a", Value::plain(1)},        {"b", Value::plain(2)},        {"c", Value::plain(3)},
                     {"tau", Value::plain(7)}};
    context.lines = {{1, Value::plain(42)}};
    context.functions["double"] = [](const std::vector<Value>& args) {
        return Value::plain(args.at(0).number * 2);
    };
    context.functions["broken"] = [](const std::vector<Value>&) -> Value {
        throw CalcError("broken inside");
    };
    return context;
}

} // namespace

TEST(Evaluator, ConstantsAndNames) {
    expectAnswers({{"pi", "3.1415926536"},
                   {"π", "3.1415926536"},
                   {"PI", "3.1415926536"},
                   {"τ", "6.2831853072"},
                   {"e", "2.7182818285"},
                   {"True + True", "2"},
                   {"km", "1 km"},
                   {"2 pi", "6.2831853072"}});
    expectErrors({{"Pi", "Pi is not defined"},
                  {"foo", "foo is not defined"},
                  {"b", "b is not defined (for the unit B, write it uppercase: B)"},
                  {"c", "c is not defined (for the unit °C, write it uppercase: C)"}});
}

TEST(Evaluator, ContextNamesLinesAndFunctions) {
    MapContext context = sheetContext();
    expectAnswers({{"rent food", "110000"},
                   {"a b c", "6"},
                   {"3 x", "12"},
                   {"tau", "7"},
                   {"#1 + 1", "43"},
                   {"double(x + 1)", "10"}},
                  &context);
    expectErrors({{"#9", "#9 not found"},
                  {"triple(1)", "There is no function named triple"},
                  {"broken(1)", "broken inside"},
                  {"a b zz", "Unknown unit “zz”"}},
                 &context);
}

TEST(Evaluator, Comparisons) {
    expectAnswers({{"2 > 1", "1"},
                   {"1 m == 100 cm", "1"},
                   {"1 m == 1 kg", "0"},
                   {"1 m != 1 kg", "1"},
                   {"50% == 0.5", "1"},
                   {"5 == 5 mm", "1"},
                   {"0.1 + 0.2 == 0.3", "0"},
                   {"\"apple\" < \"banana\"", "1"},
                   {"\"e\u0301\" == \"\u00e9\"", "1"},
                   {"[1, \"a\"] == [1, \"a\"]", "1"},
                   {"[1, 2] == [1, 2, 3]", "0"},
                   {"[1 m] == [100 cm]", "1"},
                   {"1 == \"1\"", "0"},
                   {"[] != 0", "1"}});
    expectErrors({{"1 m < 1 kg", "m and kg can't be added together"},
                  {"[1] < [2]", "Lists can be checked for equality, but not ordered"},
                  {"1 < \"1\"", "a number and text can’t be ordered"}});
}

TEST(Evaluator, LogicAndNegation) {
    expectAnswers({{"0 and missing", "0"},
                   {"[] or 5", "5"},
                   {"not \"\"", "1"},
                   {"not 3", "0"},
                   {"1 and 2", "2"},
                   {"\"\" or \"b\"", "\"b\""},
                   {"-(3 mm)", "-3 mm"},
                   {"-50%", "-50%"}});
    expectErrors({{"1 and missing", "missing is not defined"},
                  {"-[1]", "Can’t negate a list"},
                  {"-\"a\"", "Can’t negate text"}});
}

TEST(Evaluator, Indexing) {
    expectAnswers({{"[10, 20, 30][-1]", "30"},
                   {"[10, 20, 30][100%]", "20"},
                   {"\"abc\"[1]", "\"b\""},
                   {"\"a👍🏽c\"[1]", "\"👍🏽\""},
                   {"[[1, 2], [3]][0][1]", "2"}});
    expectErrors({{"[10, 20, 30][3]", "The list has no item 3 (valid: 0–2)"},
                  {"[10, 20, 30][-4]", "The list has no item -4 (valid: 0–2)"},
                  {"[][0]", "An empty The list has no item 0"},
                  {"\"\"[0]", "An empty The text has no item 0"},
                  {"[1][1.5]", "The index in [ ] must be a whole number without a unit"},
                  {"[1][1 mm]", "The index in [ ] must be a whole number without a unit"},
                  {"[1][\"0\"]", "The index in [ ] must be a whole number without a unit"},
                  {"[1][2000000000]", "The index in [ ] is too large"},
                  {"5[0]", "[ ] can’t be used on a number"}});
}

TEST(Evaluator, PercentsAndUnits) {
    expectAnswers({{"50%", "50%"},
                   {"120 mm", "120 mm"},
                   {"10% of 3000", "300"},
                   {"10% of 200 mm", "20 mm"},
                   {"10% of 50%", "5%"},
                   {"2 of 3", "6"},
                   {"5 km in m", "5000 m"},
                   {"100 °C in °F", "212°F"},
                   {"5 in mm", "5 mm"},
                   {"50% in m", "0.5 m"}});
    expectErrors({{"(5 mm)%", "% can’t follow a value with a unit"},
                  {"\"a\"%", "Can’t attach % to text"},
                  {"3 m cm", "Can’t add cm on top of m"},
                  {"5 foo", "Unknown unit “foo”"},
                  {"[1] mm", "Can’t attach a unit to a list"},
                  {"10% mm", "Can’t attach mm to a percentage"},
                  {"5 km in foo", "Unknown unit “foo”"},
                  {"\"a\" of 3", "of doesn't work between text and a number"}});
    EXPECT_EQ(evaluateLine("5 kN m").unit->dimensions, evaluateLine("5 N m").unit->dimensions);
    EXPECT_NE(evaluateLine("5 kN m").unit->dimensions, evaluateLine("5 kN").unit->dimensions);
}

TEST(Evaluator, TextsOrderByScalarsAfterComposition) {
    EXPECT_EQ(compareTexts("e\u0301", "\u00e9"), 0);
    EXPECT_LT(compareTexts("Z", "a"), 0);
    EXPECT_LT(compareTexts("ab", "abc"), 0);
    EXPECT_GT(compareTexts("\u00e9", "f"), 0);
}

TEST(Evaluator, PrecedenceGroupsAsBracketsWould) {
    // Terms, factors and powers share one flat chain: each line answers as its bracketed form.
    struct Case {
        std::string flat;
        std::string grouped;
        std::string answer;
    };
    const Case cases[] = {
        {"1 + 2 * 3 - 4 / 2", "(1 + (2 * 3)) - (4 / 2)", "5"},
        {"10 - 2 - 3", "(10 - 2) - 3", "5"},
        {"100 / 10 / 5 * 2", "((100 / 10) / 5) * 2", "4"},
        {"2^3^2", "2^(3^2)", "512"},
        {"-2^2 + 1", "-(2^2) + 1", "-3"},
        {"2 * 3^2 - 4 / 2^2^1", "(2 * (3^2)) - (4 / (2^(2^1)))", "17"},
        {"2^-1 * 4", "(2^(-1)) * 4", "2"},
        {"2 3^2 + 1", "(2 * (3^2)) + 1", "19"},
        {"x^2 + 2x - 1", "(x^2) + (2 * x) - 1", "23"},
        {"3 m^2 / 2 m", "(3 m^2) / (2 m)", "1.5 m"},
        {"10 - -x * 2 + -5% - -#1", "10 - ((-x) * 2) + (-5%) - (-#1)", "59.1"},
        {"1 - -(x - 1) * 2 - -x^2", "1 - ((-(x - 1)) * 2) - (-(x^2))", "23"},
        {"1 + 2 * 3 < 2^3 and 1", "((1 + (2 * 3)) < (2^3)) and 1", "1"},
    };
    MapContext context = sheetContext();
    for (const Case& c : cases)
        expectAnswers({{c.flat, c.answer}, {c.grouped, c.answer}}, &context);
}

TEST(Evaluator, FlatChainsOfAnyLength) {
    // A chain of terms is not nesting: ten thousand of them answer, in a loop and not
    // through ten thousand stack frames.
    const auto chain = [](const std::string& term, const std::string& op, int terms) {
        std::string text = term;
        for (int i = 1; i < terms; ++i)
            text += op + term;
        return text;
    };
    // 0, 1, 2 … in order, so that items read in the wrong order show.
    const auto numbers = [](int count) {
        std::string text = "0";
        for (int i = 1; i < count; ++i)
            text += ", " + std::to_string(i);
        return text;
    };
    MapContext context = sheetContext();
    expectAnswers({{chain("1", "+", 10000), "10000"},
                   {chain("1", " + ", 200000), "200000"},
                   {"100000" + chain("", " - 1", 100001), "0"},
                   {chain("2", " ", 20) + " / 2", "524288"},
                   {chain("1 mm", " + ", 5000) + " in m", "5 m"},
                   {chain("a", " and ", 5000), "1"},
                   {"0" + chain("", " or a == 1", 5000), "1"},
                   {"1" + chain("", " * 1", 50000) + " + (" + chain("1", "+", 3000) + ")", "3001"},
                   {"a" + chain("", " + a - 1", 30000), "1"},
                   {"1" + chain("", " + 2*3 - 8/2", 20000), "39999"},
                   {"100 - 10% * 2 + 3 * 2", "105.8"},
                   {chain("10%", " + ", 1000), "10000%"},
                   {"200" + chain("", " + 10%", 3), "242"},
                   {"2" + chain("", " * 50%", 4), "0.25"},
                   {"sum([" + chain("1", ",", 100000) + "])", "100000"},
                   {"[" + numbers(3000) + "][2345]", "2345"},
                   {"max(" + numbers(3000) + ") - min(" + numbers(3000) + ")", "2999"}},
                  &context);
    // A written list or a call holds at most as many items as any list may.
    expectErrors({{"[" + chain("1", ",", 100001) + "]", "The list is too big"},
                  {"max(" + chain("1", ",", 100001) + ")", "The list is too big"}});
}

TEST(Evaluator, ConversionFailureMessages) {
    expectErrors({
        {"5 $ to 円", "Can't convert 5USD to 円"},
        {"1.5 kg to m", "Can't convert 1.5 kg to m"},
    });
}

// Every failure is a message kind with both texts, never English written in; a line or two from
// each part of the engine, its parts put into the Japanese sentence.
TEST(Evaluator, FailuresReadInJapanese) {
    expectErrors({{"＄5", "「＄」は使えない文字です"},
                  {"1e999", "数が大きすぎます"},
                  {"'abc", "文字の終わりの ' がありません"},
                  {"a =", "式がありません"},
                  {"*3", "「*」の使い方が正しくありません"},
                  {"f(1", "f( の閉じ括弧がありません"},
                  {"[1", "表の閉じ括弧 ] がありません"},
                  {"b", "b が定義されていません（単位の B なら B と大文字で書きます）"},
                  {"[1] > 2", "表と数は大小を比べられません"},
                  {"-[1]", "表に − は付けられません"},
                  {"[10, 20, 30][3]", "表の 3 番目はありません（0〜2）"},
                  {"[][0]", "空の表には 0 番目がありません"},
                  {"\"\"[0]", "空の文字には 0 番目がありません"},
                  {"\"a\" of 3", "文字と数は of で計算できません"},
                  {"5 USD to 円", "5USD は 円 に変換できません"},
                  {"1 kg + 2 m", "kg と m は足し引きできません"},
                  {"[1] + 1", "表と数は + で計算できません"},
                  {"1 + \"a\"", "文字と数は + でつなげません（str(値) で文字にできます）"},
                  {"[1] × 2.5", "表をくり返す回数は、単位の無い整数で書きます"},
                  {"(20 °C)^2", "°C は累乗できません"},
                  {"sqrt([4])", "sqrt に表 は渡せません"},
                  {"sqrt()", "sqrt は引数が 1 つ必要です"},
                  {"foo(1)", "foo という関数はありません"},
                  {"ceil()", "ceil(値) または ceil(値, 桁数) で使います"},
                  {"sum()", "sum には値が必要です"},
                  {"sort([3, \"a\"])", "sort で並べ替えられるのは、数どうしか文字どうしです"},
                  {"gcd(1.5, 3)", "gcd(整数, 整数) で使います"},
                  {"mod(7, 0)", "0 では割れません"}},
                 nullptr, Language::japanese);
    expectError(std::string(300, '-') + "1", "式の入れ子が深すぎます", nullptr, Language::japanese);
    expectError("tan(1 kg)", "tan には角度を渡してください", nullptr,
                optionsWith(Language::japanese, AngleUnit::degrees));
}
