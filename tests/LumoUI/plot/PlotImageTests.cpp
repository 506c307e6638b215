#include <gtest/gtest.h>

#include <QFont>
#include <QPainter>

#include <cmath>

#include "LumoKit/sheet/PlotBuilder.h"
#include "LumoKit/values/Units.h"
#include "LumoUI/editor/EditorFixture.h"
#include "LumoUI/plot/AxisTicks.h"
#include "LumoUI/plot/PlotImage.h"
#include "LumoUI/plot/SurfaceProjection.h"
#include "support/EngineTestSupport.h"
#include "support/ImageComparison.h"

using namespace lumo;
using namespace lumo::test;

namespace {

// A plot line of a sheet that knows a few household figures.
PlotSpec build(const std::string& line) {
    MapContext context;
    const UnitRef yen = UnitRegistry::shared().find("円");
    context.names = {{"rent", Value::withUnit(82000, yen)},
                     {"food", Value::withUnit(41500, yen)},
                     {"travel", Value::withUnit(23000, yen)},
                     {"refund", Value::withUnit(-12000, yen)}};
    return buildPlot(*parseStatement(line).expr, line, context, englishOptions());
}

// Sizes in pixels, so the references do not depend on the screen's resolution.
PlotStyle styleFor(Appearance appearance) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(15);
    return PlotStyle::make(appearance, {}, font);
}

} // namespace

TEST(PlotImage, LooksLikeItsReference) {
    struct Case {
        std::string line;
        Appearance appearance;
        double angle;
        const char* reference;
    };
    const Case cases[] = {
        // Two branches with no line joining them across the asymptote.
        {"plot(1 / x)", Appearance::light, PlotView::defaultSurfaceAngle, "curve.png"},
        {"chart(rent, food, travel, refund)", Appearance::light, PlotView::defaultSurfaceAngle, "chart.png"},
        {"plot(sin(x) * cos(y), -3, 3, -3, 3)", Appearance::dark, 60, "surface.png"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.line);
        const QImage image = renderPlotImage(build(test.line), QSize(560, 300), styleFor(test.appearance),
                                             PlotView{test.angle});
        expectLooksLike(image, QStringLiteral("LumoUI/plot/references/") + test.reference);
    }
}

TEST(PlotImage, TurningASurfaceChangesItsPicture) {
    const PlotSpec surface = build("plot(x * y)");
    const PlotStyle style = styleFor(Appearance::light);
    const QImage at35 = renderPlotImage(surface, QSize(400, 240), style, PlotView{35});
    EXPECT_GT(compareImages(renderPlotImage(surface, QSize(400, 240), style, PlotView{125}), at35, 64)
                  .differingShare,
              0.02);
    // A full turn comes back to the same picture.
    EXPECT_LT(compareImages(renderPlotImage(surface, QSize(400, 240), style, PlotView{395}), at35, 64)
                  .differingShare,
              0.001);
}

TEST(PlotImage, ImagesHaveTheAskedSizeAtTheirDensity) {
    const QImage image =
        renderPlotImage(build("plot(x^2)"), QSize(300, 160), styleFor(Appearance::light), {}, 2);
    EXPECT_EQ(image.size(), QSize(600, 320));
    EXPECT_EQ(image.devicePixelRatio(), 2);
    EXPECT_FALSE(image.hasAlphaChannel() && image.pixelColor(0, 0).alpha() < 255);
}

TEST(PlotImage, SeveralFunctionsEachHaveTheirColourAndALegend) {
    const PlotSpec square = build("plot(x^2, -3, 3)");
    const PlotSpec line = build("plot(2x - 1, -3, 3)");
    const PlotSpec* curves[] = {&square, &line};
    const PlotStyle style = styleFor(Appearance::light);
    QImage image(QSize(480, 260), QImage::Format_ARGB32_Premultiplied);
    image.fill(style.paper);
    QPainter painter(&image);
    paintCurvePlot(painter, QRectF(0, 0, 480, 260), curves, style);
    painter.end();
    // Both colours are on the axes, and the legend's swatches sit in the header.
    const auto count = [&](const QColor& colour, int top, int bottom) {
        int found = 0;
        for (int y = top; y < bottom; ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) == colour)
                    ++found;
        return found;
    };
    for (std::size_t i : {0u, 1u}) {
        EXPECT_GT(count(style.series[i], 40, 260), 100) << i;
        EXPECT_GT(count(style.series[i], 0, 36), 5) << i;
    }
}

TEST(AxisTicks, RoundValuesInsideTheRange) {
    struct Case {
        PlotRange range;
        int count;
        double step;
        std::vector<double> values;
    };
    const Case cases[] = {
        {{-10, 10}, 5, 5, {-10, -5, 0, 5, 10}},
        {{0, 1}, 4, 0.25, {0, 0.25, 0.5, 0.75, 1}},
        {{-0.3, 0.95}, 5, 0.25, {-0.25, 0, 0.25, 0.5, 0.75}},
        {{1200, 9800}, 4, 2500, {2500, 5000, 7500}},
        {{0.001, 0.0049}, 4, 0.001, {0.001, 0.002, 0.003, 0.004}},
        // A constant function still gets ticks around its value.
        {{3, 3}, 4, 0.2, {2.8, 3, 3.2}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(::testing::Message() << test.range.low << "…" << test.range.high);
        const AxisTicks ticks = AxisTicks::inside(test.range, test.count);
        EXPECT_DOUBLE_EQ(ticks.step, test.step);
        ASSERT_EQ(ticks.values.size(), test.values.size());
        for (std::size_t i = 0; i < test.values.size(); ++i)
            EXPECT_NEAR(ticks.values[i], test.values[i], 1e-12);
    }
}

TEST(AxisTicks, LabelsAreWrittenLikeAnswers) {
    struct Case {
        double value;
        double step;
        std::optional<std::string> unit;
        const char* expected;
    };
    const Case cases[] = {
        {0.30000000000000004, 0.1, std::nullopt, "0.3"},
        {-1e-17, 0.1, std::nullopt, "0"},
        {-2.5, 0.5, std::nullopt, "-2.5"},
        {12000, 2000, "円", "12,000円"},
        {1500000, 500000, std::nullopt, "1,500,000"},
        {2.5, 0.5, "m", "2.5 m"},
        {50, 10, "%", "50%"},
        {3, 1, "widgets", "3 widgets"},
    };
    for (const Case& test : cases)
        EXPECT_EQ(tickLabel(test.value, test.step, test.unit).toStdString(), test.expected);
}

TEST(SurfaceProjection, NearerFacesComeLastAndHolesLeaveGaps) {
    PlotSpec description = build("plot(x * y)");
    const QRectF rect(0, 0, 400, 240);
    for (double angle : {0.0, 35.0, 90.0, 200.0, 330.0}) {
        SCOPED_TRACE(angle);
        const SurfaceProjection projection(description, rect, angle);
        ASSERT_EQ(projection.faces().size(), 400u);
        for (std::size_t i = 1; i < projection.faces().size(); ++i)
            EXPECT_GE(projection.faces()[i - 1].depth, projection.faces()[i].depth);
        // The box fits the same rectangle at every turn.
        for (const auto& row : projection.points())
            for (const auto& point : row)
                EXPECT_TRUE(rect.adjusted(-1, -1, 1, 1).contains(*point));
    }
    // One hole turns its four cells into triangles; a hole's neighbours along a row and a column
    // take two corners from each cell between them, which are then dropped.
    description.surface[5][5].reset();
    EXPECT_EQ(SurfaceProjection(description, rect, 35).faces().size(), 400u);
    description.surface[5][6].reset();
    const auto faces = SurfaceProjection(description, rect, 35).faces();
    EXPECT_EQ(faces.size(), 398u);
    EXPECT_EQ(
        std::count_if(faces.begin(), faces.end(), [](const auto& face) { return face.cornerCount == 3; }), 4);
}

TEST(CurveHover, ReadsTheSampleUnderThePointerAndNothingInAGap) {
    const PlotSpec description = build("plot(1 / x)");
    const PlotSpec* curves[] = {&description};
    const PlotStyle style = styleFor(Appearance::light);
    const CurveFrame frame = curveFrameFor(QRectF(0, 0, 560, 300), description, style);
    const QPointF atTwo = frame.toPixel(2, 0.5);
    const auto hover = curveHoverAt(frame, curves, atTwo + QPointF(0.4, 30));
    ASSERT_TRUE(hover);
    EXPECT_NEAR(hover->x, 2, 1e-9);
    EXPECT_NEAR(hover->y, 0.5, 1e-9);
    // x = 0 is a gap between the branches: no sample answers there.
    EXPECT_FALSE(curveHoverAt(frame, curves, frame.toPixel(0, 0)));
    EXPECT_FALSE(curveHoverAt(frame, curves, frame.area().bottomRight() + QPointF(20, 20)));
}
