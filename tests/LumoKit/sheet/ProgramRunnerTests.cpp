#include <gtest/gtest.h>

#include <chrono>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/sheet/ProgramRunner.h"
#include "support/SheetTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

const std::string tooMany = "! Too many loop steps";
const std::string tooLong = "! The loop is taking too long";

// A clock an hour ahead at every reading, as on a machine far too busy to keep up.
std::chrono::steady_clock::time_point slowClock() {
    static std::chrono::steady_clock::time_point now;
    now += std::chrono::hours(1);
    return now;
}

// Line i of a long sheet of ordinary lines, all different: names, units, sums, notes, blanks.
std::string plainLine(int i) {
    switch (i % 8) {
    case 0:
        return "a" + std::to_string(i) + " = " + std::to_string(i) + " mm";
    case 1:
        return "a" + std::to_string(i - 1) + " × 2 + " + std::to_string(i) + " cm";
    case 2:
        return std::to_string(i) + " km in m";
    case 3:
        return "(" + std::to_string(i) + " mm + 7 cm) / 3";
    case 4:
        return "// note " + std::to_string(i);
    case 5:
        return "prev × 2";
    case 6:
        return "sum";
    default:
        return "";
    }
}

std::string plainSheet(int lines) {
    std::string text;
    for (int i = 0; i < lines; ++i)
        text += plainLine(i) + "\n";
    return text;
}

// What a line of plainSheet shows when it ran: an answer, a note mark or nothing.
bool showsItsOwnResult(int i, const std::string& shown) {
    switch (i % 8) {
    case 4:
        return shown == "//";
    case 7:
        return shown.empty();
    default:
        return !shown.empty() && shown.front() != '!' && shown != "//";
    }
}

} // namespace

TEST(ProgramBudget, StepsDepthAndClock) {
    ProgramBudget steps(BudgetLimits{3, 40, 100});
    for (int i = 0; i < 3; ++i)
        steps.takeStep();
    EXPECT_THROW(steps.takeStep(), CalcError);
    EXPECT_TRUE(steps.exhausted());
    EXPECT_EQ(steps.stopMessage().kind(), MessageKind::tooManySteps);
    EXPECT_THROW(steps.enterCall(), CalcError); // an exhausted budget refuses everything

    ProgramBudget depth;
    for (int i = 0; i < 40; ++i)
        depth.enterCall();
    try {
        depth.enterCall();
        ADD_FAILURE() << "the 41st call must fail";
    } catch (const CalcError& error) {
        EXPECT_EQ(error.kind(), MessageKind::callsTooDeep);
    }
    EXPECT_EQ(depth.depth(), 40);
    EXPECT_FALSE(depth.exhausted()); // too deep fails the call, not the run
    depth.leaveCall();
    EXPECT_NO_THROW(depth.enterCall());

    // The clock is read on the 256th step only.
    ProgramBudget clock(BudgetLimits{200000, 40, 0});
    for (int i = 1; i < 256; ++i)
        clock.takeStep();
    EXPECT_THROW(clock.takeStep(), CalcError);
    EXPECT_EQ(clock.stopMessage().kind(), MessageKind::takingTooLong);
}

TEST(ProgramRunner, StoppingTheRun) {
    // Lines already run keep their results; unreached lines, notes included, show the message.
    EXPECT_EQ(runAnswers("1\nfor i in range(20):\n  i\n2\n\n// n", BudgetLimits{10, 40, 100}),
              (std::vector<std::string>{"1", tooMany, "9", tooMany, "", tooMany}));
    EXPECT_EQ(runAnswers("n = 0\nwhile True:\n  n = n + 1\nn", BudgetLimits{5, 40, 100}),
              (std::vector<std::string>{"0", tooMany, "5", tooMany}));
    // A loop inside a function stops the run from the calling line on.
    EXPECT_EQ(runAnswers("def f():\n  while 1:\n    1\nf()\n2", BudgetLimits{5, 40, 100}),
              (std::vector<std::string>{"", tooMany, "1", tooMany, tooMany}));
    // Reaching a header reaches only its line: a def never called, a branch not taken and a
    // loop that ran no pass leave their bodies unreached.
    EXPECT_EQ(runAnswers("def f():\n  return 1\nif 1:\n  2\nelse:\n  3\nfor i in []:\n  4\nwhile 1:\n  5",
                         BudgetLimits{5, 40, 100}),
              (std::vector<std::string>{"", tooMany, "", "2", tooMany, tooMany, "", tooMany, tooMany, "5"}));
    // A plot whose samples run into the limit says why the run stopped.
    EXPECT_EQ(runAnswers("def f(v):\n  while 1:\n    v\nplot(f(x))\n2", BudgetLimits{5, 40, 100}),
              (std::vector<std::string>{"", tooMany, "-10", tooMany, tooMany}));
    ProgramRunner counted(unicode::splitLines("for i in range(5):\n  i\nn = 0\nwhile n < 3:\n  n = n + 1\n"
                                              "for c in \"ab\":\n  c"),
                          {}, {});
    counted.run();
    EXPECT_EQ(counted.context().budget.steps(), 10);
}

TEST(ProgramRunner, EndlessSheetsFinish) {
    const auto started = std::chrono::steady_clock::now();
    const auto endless = sheetAnswers("x = 0\nwhile True:\n  x = x + 1\n3");
    EXPECT_TRUE(endless[1] == tooMany || endless[1] == tooLong) << endless[1];
    EXPECT_EQ(endless[3], endless[1]);

    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += "while 1:\n  1\n";
    const auto many = sheetAnswers(text);
    EXPECT_EQ(many.size(), 10001u);
    EXPECT_TRUE(many[9998] == tooMany || many[9998] == tooLong);

    // Branching recursion without any loop, and recursion across two other sheets.
    const auto fib =
        sheetAnswers("def fib(n):\n  if n < 2:\n    return n\n  return fib(n-1) + fib(n-2)\nfib(35)");
    EXPECT_EQ(fib[4], tooLong);
    const auto pingPong = sheetAnswers("ping(1)", {{"A", "def ping(n):\n  return pong(n + 1)"},
                                                   {"B", "def pong(n):\n  return ping(n + 1)"}});
    EXPECT_EQ(pingPong[0].rfind("! Function calls are nested too deeply", 0), 0u) << pingPong[0];

    // Doubling a nested list can't exhaust memory.
    const auto doubling = sheetAnswers("x = [1]\nfor i in range(60):\n  x = [x, x]\n1");
    EXPECT_TRUE(doubling[2] == "! The list is too big" || doubling[3] == tooLong) << doubling[3];
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(30));
}

TEST(ProgramRunner, LongPlainSheetsAnswerEveryLine) {
    const auto shown = sheetAnswers(plainSheet(100000));
    ASSERT_EQ(shown.size(), 100001u);
    for (int i = 0; i < 100000; ++i)
        ASSERT_TRUE(showsItsOwnResult(i, shown[static_cast<std::size_t>(i)])) << i << ": " << shown[i];
}

TEST(ProgramRunner, ClockIsReadOnlyInLoopsAndCalls) {
    // Plain lines never read the clock, so even a clock that jumps an hour at each reading
    // leaves them all answered.
    BudgetLimits slow{200000, 40, 0.15, &slowClock};
    const auto plain = runAnswers(plainSheet(2000), slow);
    for (int i = 0; i < 2000; ++i)
        ASSERT_TRUE(showsItsOwnResult(i, plain[static_cast<std::size_t>(i)])) << i << ": " << plain[i];

    // Loops read it on their lines and calls on every 256th call.
    EXPECT_EQ(runAnswers("n = 0\nwhile True:\n  n = n + 1\nn", slow),
              (std::vector<std::string>{"0", tooLong, "1", tooLong}));
    std::string calls = "def f(v):\n  return v\n";
    for (int i = 0; i < 300; ++i)
        calls += "f(" + std::to_string(i) + ")\n";
    const auto called = runAnswers(calls, slow);
    EXPECT_EQ(called[2 + 254], "254");
    EXPECT_EQ(called[2 + 255], tooLong);
    EXPECT_EQ(called[2 + 299], tooLong);
}

TEST(ProgramRunner, RunawayLoopFailsExactlyTheUnvisitedLines) {
    // Line 10 of 1,000 loops for ever; the lines above keep their answers, the loop's own
    // body shows its last pass, and below it every line that is not blank fails, notes too.
    std::string text;
    for (int i = 0; i < 9; ++i)
        text += plainLine(i) + "\n";
    text += "while True:\n  k = 1\n";
    for (int i = 11; i < 1000; ++i)
        text += plainLine(i) + "\n";
    const auto shown = runAnswers(text, BudgetLimits{1000, 40, 100});
    ASSERT_EQ(shown.size(), 1001u);
    for (int i = 0; i < 9; ++i)
        EXPECT_TRUE(showsItsOwnResult(i, shown[static_cast<std::size_t>(i)])) << i << ": " << shown[i];
    EXPECT_EQ(shown[9], tooMany);
    EXPECT_EQ(shown[10], "1");
    for (int i = 11; i < 1000; ++i)
        EXPECT_EQ(shown[static_cast<std::size_t>(i)], plainLine(i).empty() ? "" : tooMany) << i;
}

TEST(ProgramRunner, Loops) {
    expectSheets({
        {"for i in range(5):\n  s = i", {"", "4"}},
        {"xs = []\nfor i in range(5, 0, -2):\n  xs = xs + [i]\nxs", {"[]", "", "[5, 3, 1]", "[5, 3, 1]"}},
        {"xs = []\nfor i in range(2.7):\n  xs = xs + [i]\nxs", {"[]", "", "[0, 1]", "[0, 1]"}},
        {"xs = []\nfor i in Range(-1, 2):\n  xs = xs + [i]\nxs", {"[]", "", "[-1, 0, 1]", "[-1, 0, 1]"}},
        {"x = 7\nfor i in range(0):\n  x = i\nx", {"7", "", "", "7"}},
        {"for c in \"aが👍🏽\":\n  c", {"", "\"👍🏽\""}},
        {"t = 0\nfor v in [1, 2, 3]:\n  t = t + v\nt", {"0", "", "6", "6"}},
        {"for i in range(10):\n  if i == 3:\n    break\ni", {"", "", "", "3"}},
        {"t = 0\nfor i in range(5):\n  if i == 1 or i == 3:\n    continue\n  t = t + i\nt",
         {"0", "", "", "", "6", "6"}},
        {"n = 0\nwhile n < 4:\n  n = n + 1\nn", {"0", "", "4", "4"}},
        {"while 0:\n  1", {"", ""}},
        {"for i in range(3):\n  for j in range(3):\n    if j == 1:\n      break\n  k = i",
         {"", "", "", "", "2"}},
    });
    expectSheets({
        {"for i in 5:\n  1", {"! for can loop over range(…), a list [1, 2, 3], or text", ""}},
        {"for i in range():\n  1", {"! Use range(end), range(start, end), or range(start, end, step)", ""}},
        {"for i in range(\"a\"):", {"! range can’t take text"}},
        {"for i in range([1]):", {"! range can’t take a list"}},
        {"for i in range(3 m):", {"! range can’t take a unit"}},
        {"for i in range(1, 5, 0):", {"! The range step can’t be 0"}},
        {"for i in nothing:\n  1\n2", {"! nothing is not defined", "", "2"}},
        {"if nope:\n  1\nelse:\n  2\n3", {"! nope is not defined", "", "", "", "3"}},
        {"return 1\n2", {"! return can only be used inside def", "2"}},
        {"break\n2", {"", "2"}},
    });
    expectSheets(
        {{"for i in 1:", {"! for で回せるのは range(…) と表 [1, 2, 3] と文字です"}},
         {"for i in range():", {"! range(終わり) / range(始め, 終わり) / range(始め, 終わり, 刻み)"}},
         {"for i in range(\"a\"):", {"! range に文字は使えません"}},
         {"for i in range(1 kg):", {"! range に単位は使えません"}},
         {"for i in range(1, 2, 0):", {"! range の刻みに 0 は使えません"}},
         {"return", {"! return は def の中だけで使えます"}}},
        {}, Language::japanese);
}

TEST(ProgramRunner, IfChains) {
    expectSheets({
        {"x = 5\nif x > 3:\n  1\nelif x > 1:\n  2\nelse:\n  3", {"5", "", "1", "", "", "", ""}},
        {"x = 2\nif x > 3:\n  1\nelif x > 1:\n  2\nelse:\n  3", {"2", "", "", "", "2", "", ""}},
        {"x = 0\nif x > 3:\n  1\nelif x > 1:\n  2\nelse:\n  3", {"0", "", "", "", "", "", "3"}},
        // Lines in a branch taken at the top level count; inside a loop they don't.
        {"if 1:\n  5\nsum", {"", "5", "5"}},
        {"if \"\":\n  1\nelif []:\n  2\nelse:\n  3", {"", "", "", "", "", "3"}},
    });
}

TEST(ProgramRunner, Functions) {
    expectSheets({
        {"def area(w, h):\n  return w * h\narea(3 m, 4 m)", {"", "12 m²", "12 m²"}},
        {"def f(x):\n  y = x * 2\n  return y + 1\nf(5)\ny", {"", "10", "11", "11", "! y is not defined"}},
        {"x = 100\ndef f(x):\n  return x\nf(1)\nx", {"100", "", "1", "1", "100"}},
        {"k = 3\ndef f(x):\n  return x * k\nf(2)", {"3", "", "6", "6"}},
        {"f(1)\ndef f(x):\n  return x\nf(2)", {"! There is no function named f", "", "2", "2"}},
        {"def f(x):\n  return 1\ndef f(x):\n  return 2\nf(0)", {"", "", "", "2", "2"}},
        {"def f(a, b):\n  return a\nf(1)", {"", "", "! f needs 2 arguments"}},
        {"def f():\n  1\nf()", {"", "1", "! f doesn’t return a value"}},
        {"def f(n):\n  return f(n + 1)\nf(0)",
         {"", "! Function calls are nested too deeply", "! Function calls are nested too deeply"}},
        {"def fact(n):\n  if n <= 1:\n    return 1\n  return n * fact(n - 1)\nfact(10)",
         {"", "", "1", "3628800", "3628800"}},
        {"def s(xs):\n  t = 0\n  for v in xs:\n    t = t + v\n  return t\ns([1, 2, 3])\nsum",
         {"", "0", "", "6", "6", "6", "6"}},
        {"5\ndef f():\n  return 1\nf() + prev", {"5", "", "1", "6"}},
    });
    expectSheets({{"def f(a):\n  return a\nf()", {"", "", "! f は引数が 1 個必要です"}},
                  {"def f():\n  1\nf()", {"", "1", "! f は値を返しません"}}},
                 {}, Language::japanese);
}

TEST(ProgramRunner, OtherSheetsFunctions) {
    const std::vector<SharedSheet> others = {
        {"B", "price = 5\ndef g(x):\n  return x * 10\ndef h(x):\n  return k(x)\ndef k(x):\n  return 1\n"
              "def sqrt(x):\n  return 0\ndef bad(x):\n  return x + [1]\ndef loop():\n  while 1:\n    1\n  "
              "return 1"},
        {"C", "def g(x):\n  return x * 100\ndef only(x):\n  return g(x)\n"},
    };
    expectSheets(
        {
            {"g(1)", {"10"}},                                               // the leftmost sheet wins
            {"def g(x):\n  return -x\ng(1)", {"", "-1", "-1"}},             // the sheet's own def wins
            {"g(1)\ndef g(x):\n  return -x\ng(1)", {"10", "", "-1", "-1"}}, // only below its def
            {"sqrt(16)", {"4"}},                                            // built-ins can't be replaced
            {"only(2)", {"200"}},                                           // C's g from C's function
            {"def k(x):\n  return 2\nh(0)", {"", "", "1"}},                 // B's k before this sheet's k
            {"price", {"! price is not defined"}},                          // only defs are shared
            {"bad(1)", {"! + doesn't work between a number and a list (from sheet “B”)"}},
        },
        others);
    const auto results = sheetAnswers("x = 1\nbad(1)", others, Language::japanese);
    EXPECT_NE(results[1].find("（B シートの）"), std::string::npos) << results[1];
}

TEST(LineContext, AFailureWithoutAMessageStaysOnItsLine) {
    // Memory running out inside a call, say: the line shows the general failure, and the run
    // goes on with the next line.
    LineContext context(sheetOptions(Language::english));
    const ProgramFunction function{"f", {"v"}, nullptr, std::nullopt};
    context.findFunction = [&](const std::string&) { return &function; };
    context.runFunction = [](const ProgramFunction&, const std::vector<Value>&) -> Value {
        throw std::bad_alloc();
    };
    const Program::Line call{0, "f(2)", {}};
    const LineResult failed = context.evaluateLine(call, LineCounting::counted, LineOwner::thisSheet);
    EXPECT_EQ(failed.outcome.kind, LineOutcome::Kind::failure);
    EXPECT_EQ(failed.outcome.message(), "Can’t calculate this");
    const Program::Line next{1, "1 + 2", {}};
    EXPECT_EQ(context.evaluateLine(next, LineCounting::counted, LineOwner::thisSheet).outcome.value,
              Value::plain(3));
}
