#include <gtest/gtest.h>

#include "LumoKit/sheet/PlotBuilder.h"
#include "support/EngineTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

// A sheet that knows a few names; it defines x too, which plots must shadow.
PlotSpec plot(const std::string& line, const EvaluationOptions& options = englishOptions()) {
    MapContext context;
    context.names = {{"x", Value::plain(100)},
                     {"a", Value::plain(2)},
                     {"家賃", Value::plain(80000)},
                     {"光熱費", Value::plain(12000)},
                     {"costs", Value::list({Value::plain(5), Value::plain(9)})}};
    return buildPlot(*parseStatement(line).expr, line, context, options);
}

std::string failure(const std::string& line, Language language) {
    return messageOf([&] { plot(line, optionsWith(language)); }, language);
}

} // namespace

TEST(PlotBuilder, Curves) {
    struct Case {
        std::string line;
        std::size_t segments;
        std::size_t points;
        PlotRange xRange;
    };
    const Case cases[] = {
        {"plot(x^2)", 1, 241, {-10, 10}},
        {"plot(a * x, 0, 4)", 1, 241, {0, 4}},
        {"plot(1 / x)", 2, 240, {-10, 10}},             // x = 0 is a gap
        {"plot(1 / (x - 0.05))", 2, 241, {-10, 10}},    // an asymptote between two samples
        {"plot(x + 100 * (x > 0))", 1, 241, {-10, 10}}, // a jump without a change of sign is joined
    };
    for (const auto& c : cases) {
        const PlotSpec drawn = plot(c.line);
        EXPECT_EQ(drawn.kind, PlotSpec::Kind::curve) << c.line;
        EXPECT_EQ(drawn.segments.size(), c.segments) << c.line;
        std::size_t points = 0;
        for (const auto& segment : drawn.segments)
            points += segment.size();
        EXPECT_EQ(points, c.points) << c.line;
        EXPECT_EQ(drawn.xRange, c.xRange) << c.line;
    }
    const PlotSpec square = plot("plot(x^2)");
    EXPECT_EQ(square.yRange, (PlotRange{0, 100}));
    EXPECT_EQ(square.segments[0][1].x, -10 + 20.0 / 240);
    EXPECT_EQ(plot("plot(a * x, 0, 4)").segments[0].back(), (PlotPoint{4, 8}));
}

TEST(PlotBuilder, Failures) {
    struct Case {
        std::string line;
        std::string japanese;
        std::string english;
    };
    const std::string leftJa = "範囲は左 < 右 で指定してください", leftEn = "The range needs left < right";
    const std::string axesJa = "3 つの軸で描くときは plot(式, x左, x右, y左, y右) のように書いてください";
    const std::string axesEn = "For three axes write plot(expr, x from, x to, y from, y to)";
    const std::string noneJa = "chart(値, 値, …) のように、並べる値を書いてください";
    const std::string noneEn = "Write values to chart, like chart(a, b, …)";
    const Case cases[] = {
        {"plot()", "plot(式) のように、描く式を書いてください",
         "Write an expression to draw, like plot(x^2)"},
        {"plot(x^2, 3)", "範囲は plot(式, 左, 右) のように 2 つ書いてください",
         "Give both ends of the range: plot(expr, left, right)"},
        {"plot(x^2, 5, 1)", leftJa, leftEn},
        {"plot(x, \"a\", 3)", leftJa, leftEn},
        {"plot(1 / 0)", "この式はグラフにできません", "This expression can’t be plotted"},
        {"plot(1 / (x == 0))", "この式はグラフにできません",
         "This expression can’t be plotted"}, // a lone point
        {"plot([1, x])", "表は plot では描けません（表は chart(表) で棒グラフにできます）",
         "plot can’t draw a list (use chart(list) for a bar chart)"},
        {"plot(\"a\")", "文字は plot では描けません（表は chart(表) で棒グラフにできます）",
         "plot can’t draw text (use chart(list) for a bar chart)"},
        {"plot(x, 1, 2, 3)", axesJa, axesEn},
        {"plot(y, 1)", axesJa, axesEn},
        {"plot(x + y, 0, 1, 5, 1)", leftJa, leftEn},
        {"plot(y / 0)", "この式は 3 つの軸では描けません", "This expression can’t be drawn with three axes"},
        {"chart()", noneJa, noneEn},
        {"chart([])", noneJa, noneEn},
        {"chart(1, [2])", "グラフにできない値があります", "Some values can’t be charted"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(failure(c.line, Language::japanese), c.japanese) << c.line;
        EXPECT_EQ(failure(c.line, Language::english), c.english) << c.line;
    }
}

TEST(PlotBuilder, Surfaces) {
    struct Case {
        std::string line;
        PlotRange xRange;
        PlotRange yRange;
        PlotRange zRange;
        int holes;
    };
    const Case cases[] = {
        {"plot(x + 2y)", {-10, 10}, {-10, 10}, {-30, 30}, 0},
        {"plot(3y, 0, 1)", {0, 1}, {-10, 10}, {-30, 30}, 0},
        {"plot(x, 0, 1, 2, 4)", {0, 1}, {2, 4}, {0, 1}, 0},       // five arguments, even without y
        {"plot(1 / (x + y))", {-10, 10}, {-10, 10}, {-1, 1}, 21}, // the diagonal x + y = 0
    };
    for (const auto& c : cases) {
        const PlotSpec drawn = plot(c.line);
        ASSERT_EQ(drawn.kind, PlotSpec::Kind::surface) << c.line;
        ASSERT_EQ(drawn.surface.size(), 21u) << c.line;
        int holes = 0;
        for (const auto& row : drawn.surface) {
            ASSERT_EQ(row.size(), 21u) << c.line;
            for (const auto& height : row)
                holes += height ? 0 : 1;
        }
        EXPECT_EQ(holes, c.holes) << c.line;
        EXPECT_EQ(drawn.xRange, c.xRange) << c.line;
        EXPECT_EQ(drawn.yRange, c.yRange) << c.line;
        EXPECT_EQ(drawn.zRange, c.zRange) << c.line;
    }
    // Rows run along y, columns along x.
    const PlotSpec tilted = plot("plot(x + 2y)");
    EXPECT_EQ(tilted.surface[0][20], -10);
    EXPECT_EQ(tilted.surface[20][0], 10);
}

TEST(PlotBuilder, BarsLabelsAndUnits) {
    struct Case {
        std::string line;
        std::vector<PlotBar> bars;
        PlotRange yRange;
        std::optional<std::string> unitLabel;
    };
    const Case cases[] = {
        {"chart(3, 1, 4)", {{"3", 3}, {"1", 1}, {"4", 4}}, {0, 4 + 0.12 * 4}, {}},
        {"chart(家賃, 光熱費)", {{"家賃", 80000}, {"光熱費", 12000}}, {0, 80000 * 1.12}, {}},
        {"bars([10, a * 3])", {{"10", 10}, {"a * 3", 6}}, {0, 10 * 1.12}, {}},
        {"棒グラフ(costs)", {{"0", 5}, {"1", 9}}, {0, 9 * 1.12}, {}},
        {"chart(-2, 3)", {{"-2", -2}, {"3", 3}}, {-2 - 0.6, 3 + 0.6}, {}},
        {"chart(-2, -1)", {{"-2", -2}, {"-1", -1}}, {-2 - 0.24, 0}, {}},
        {"chart(0, 0)", {{"0", 0}, {"0", 0}}, {0, 1}, {}},
        {"chart(10%, 25%)", {{"10%", 10}, {"25%", 25}}, {0, 25 * 1.12}, "%"},
        {"chart(1 m, 50 cm)", {{"1 m", 1}, {"50 cm", 0.5}}, {0, 1.12}, "m"},
    };
    for (const auto& c : cases) {
        const PlotSpec drawn = plot(c.line);
        EXPECT_EQ(drawn.kind, PlotSpec::Kind::bars) << c.line;
        EXPECT_EQ(drawn.bars, c.bars) << c.line;
        EXPECT_DOUBLE_EQ(drawn.yRange.low, c.yRange.low) << c.line;
        EXPECT_DOUBLE_EQ(drawn.yRange.high, c.yRange.high) << c.line;
        EXPECT_EQ(drawn.unitLabel, c.unitLabel) << c.line;
        EXPECT_EQ(drawn.title, c.line);
    }
    EXPECT_EQ(plot("plot(x m)").unitLabel, "m");
    EXPECT_EQ(plot("グラフ（x＾2， 0， 1）").title, "グラフ(x^2, 0, 1)");
}

TEST(PlotBuilder, TitlesAndLabelsAsWritten) {
    // Labels run from comma to comma, so brackets and signs around an argument stay in them;
    // the title is the call itself, without brackets around it.
    const struct {
        std::string line;
        std::string title;
        std::vector<std::string> labels;
    } cases[] = {
        {"chart((a), +3 , -a)", "chart((a), +3 , -a)", {"(a)", "+3", "-a"}},
        {"(bars([(a) , 2 ]))", "bars([(a) , 2 ])", {"(a)", "2"}},
        {"chart(([1, 2]))", "chart(([1, 2]))", {"0", "1"}}, // not a literal list argument
        {"棒グラフ（［家賃、 光熱費］）", "棒グラフ([家賃, 光熱費])", {"家賃", "光熱費"}},
        {"(plot(x^2))", "plot(x^2)", {}},
    };
    for (const auto& c : cases) {
        const PlotSpec drawn = plot(c.line);
        EXPECT_EQ(drawn.title, c.title) << c.line;
        std::vector<std::string> labels;
        for (const PlotBar& bar : drawn.bars)
            labels.push_back(bar.label);
        EXPECT_EQ(labels, c.labels) << c.line;
    }
}
