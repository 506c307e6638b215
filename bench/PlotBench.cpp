// Plots in the sheet editor on the offscreen platform: painting a sheet with twenty plots in
// view (from cached drawings, and with every drawing made afresh), one frame of a surface
// being turned by dragging, and drawing one surface alone. Each run reports the median of its
// samples in milliseconds ("median_ms"); a turning frame should stay within 8 ms.
#include <benchmark/benchmark.h>

#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <string>

#include "bench/BenchHarness.h"
#include "LumoUI/editor/PlotLayer.h"
#include "LumoUI/plot/PlotPainter.h"
#include "LumoUI/plot/PlotStyle.h"

using namespace lumo;

namespace {

using namespace lumo::bench;

// Curves, bars and surfaces in turn, each a little different so no two drawings are alike.
std::string twentyPlots() {
    std::string text;
    for (int i = 0; i < 20; ++i) {
        const std::string k = std::to_string(i + 1);
        switch (i % 3) {
        case 0:
            text += "plot(sin(x * " + k + " / 7) * x^2, -6, 6)\n";
            break;
        case 1:
            text += "chart(" + k + ", -3, 7, 2.5, " + k + " * 2, 4)\n";
            break;
        default:
            text += "plot(sin(x) * cos(y) * " + k + ", -3, 3, -3, 3)\n";
            break;
        }
    }
    return text;
}

// An editor tall enough to show all twenty plots at the standard text size.
class Bench : public EditorHarness {
public:
    explicit Bench(const std::string& text, QSize size)
        : EditorHarness(size, StoreEvaluation::synchronous, AppearanceSetting::light) {
        store->updateText(*session->sheetID(), text);
        QApplication::processEvents();
        view->verticalScrollBar()->setValue(0);
        view->viewport()->repaint();
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, at, view->viewport()->mapToGlobal(at), button, buttons, {});
        QApplication::sendEvent(view->viewport(), &event);
    }
};

enum class Drawings { cached, fresh };

void paintTwentyPlots(benchmark::State& state, Drawings drawings) {
    Bench bench(twentyPlots(), QSize(1000, 6400));
    if (bench.view->plots()->plotBoxes().size() != 20) {
        state.SkipWithError("not every plot is in view");
        return;
    }
    Samples samples(state);
    bool dark = false;
    for (auto _ : state) {
        if (drawings == Drawings::fresh) {
            // New colours drop every drawing; changing them is not part of the measurement.
            dark = !dark;
            bench.view->setAppearance(dark ? Appearance::dark : Appearance::light);
        }
        samples.start();
        bench.view->viewport()->repaint();
        samples.stop();
    }
    samples.report();
}

void paintTwentyPlotsFromCache(benchmark::State& state) {
    paintTwentyPlots(state, Drawings::cached);
}
BENCHMARK(paintTwentyPlotsFromCache)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(40);

void paintTwentyPlotsDrawnAfresh(benchmark::State& state) {
    paintTwentyPlots(state, Drawings::fresh);
}
BENCHMARK(paintTwentyPlotsDrawnAfresh)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

// One step of a drag on a surface: the mouse move, the new projection and the band's repaint.
void surfaceRotationFrame(benchmark::State& state) {
    Bench bench("plot(sin(x) * cos(y), -3, 3, -3, 3)\n", QSize(1000, 700));
    const auto boxes = bench.view->plots()->plotBoxes();
    if (boxes.empty()) {
        state.SkipWithError("the surface is not in view");
        return;
    }
    const QPointF start = boxes.front().rect.center();
    bench.mouse(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    Samples samples(state);
    int step = 0;
    for (auto _ : state) {
        const QPointF at = start + QPointF((++step % 200) - 100, 0);
        samples.start();
        bench.mouse(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton);
        bench.view->viewport()->repaint(boxes.front().rect.toAlignedRect());
        samples.stop();
    }
    bench.mouse(QEvent::MouseButtonRelease, start, Qt::LeftButton, Qt::NoButton);
    samples.report();
}
BENCHMARK(surfaceRotationFrame)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(200);

// The surface alone drawn into an image of a card's size, without the editor around it.
void drawOneSurface(benchmark::State& state) {
    Bench bench("plot(sin(x) * cos(y), -3, 3, -3, 3)\n", QSize(1000, 700));
    const auto& results = bench.view->results();
    if (results.empty() || !results.front().outcome.plot()) {
        state.SkipWithError("no surface");
        return;
    }
    const PlotSpec& description = *results.front().outcome.plot();
    const PlotStyle style = PlotStyle::make(Appearance::light, {}, bench.view->font());
    QImage image(QSize(620, 260), QImage::Format_ARGB32_Premultiplied);
    Samples samples(state);
    double angle = 0;
    for (auto _ : state) {
        samples.start();
        image.fill(style.paper);
        QPainter painter(&image);
        paintPlot(painter, QRectF(0, 0, 620, 260), description, style, PlotView{angle += 3});
        painter.end();
        samples.stop();
    }
    samples.report();
}
BENCHMARK(drawOneSurface)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(200);

} // namespace
