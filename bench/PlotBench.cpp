// Plots in the sheet editor on the offscreen platform: painting a sheet with twenty plots in
// view (from cached drawings, and with every drawing made afresh), one frame of a surface
// being turned by dragging, and drawing one surface alone. Each run reports the median of its
// samples in milliseconds ("median_ms"); a turning frame should stay within 8 ms.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/PlotLayer.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/plot/PlotPainter.h"
#include "LumoUI/plot/PlotStyle.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

using namespace lumo;
using Clock = std::chrono::steady_clock;

namespace {

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

QApplication& application() {
    static int argc = 1;
    static char name[] = "PlotBench";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", "1");
    static QApplication app(argc, argv);
    return app;
}

double milliseconds(Clock::duration elapsed) {
    return std::chrono::duration<double, std::milli>(elapsed).count();
}

void report(benchmark::State& state, std::vector<double> samples) {
    if (samples.empty())
        return;
    std::sort(samples.begin(), samples.end());
    state.counters["median_ms"] = samples[samples.size() / 2];
    state.counters["p90_ms"] = samples[samples.size() * 9 / 10];
}

// An editor tall enough to show all twenty plots at the standard text size.
class Bench {
public:
    explicit Bench(const std::string& text, QSize size) {
        application();
        m_settingsStore =
            std::make_unique<QSettings>(m_folder.filePath("settings.ini"), QSettings::IniFormat);
        notifications = std::make_unique<NotificationCenter>();
        settings = std::make_unique<AppSettings>(*m_settingsStore, notifications.get());
        settings->setAppearance(AppearanceSetting::light);
        DocumentStore::Options options;
        options.source = DocumentStore::Source::starter;
        store = std::make_unique<DocumentStore>(options, notifications.get(), nullptr, settings.get());
        session = std::make_unique<SheetSession>(store.get());
        session->activate();
        editor = std::make_unique<SheetEditor>(session.get(), settings.get(), notifications.get());
        editor->resize(size);
        editor->show();
        store->updateText(*session->sheetID(), text);
        QApplication::processEvents();
        view = editor->textView();
        view->verticalScrollBar()->setValue(0);
        view->viewport()->repaint();
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, at, view->viewport()->mapToGlobal(at), button, buttons, {});
        QApplication::sendEvent(view->viewport(), &event);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<QSettings> m_settingsStore;
    std::unique_ptr<NotificationCenter> notifications;
    std::unique_ptr<AppSettings> settings;
    std::unique_ptr<DocumentStore> store;
    std::unique_ptr<SheetSession> session;
    std::unique_ptr<SheetEditor> editor;
    CalcTextView* view = nullptr;
};

enum class Drawings { cached, fresh };

void paintTwentyPlots(benchmark::State& state, Drawings drawings) {
    Bench bench(twentyPlots(), QSize(1000, 6400));
    if (bench.view->plots()->plotBoxes().size() != 20) {
        state.SkipWithError("not every plot is in view");
        return;
    }
    std::vector<double> samples;
    bool dark = false;
    for (auto _ : state) {
        if (drawings == Drawings::fresh) {
            // New colours drop every drawing; changing them is not part of the measurement.
            dark = !dark;
            bench.view->setAppearance(dark ? Appearance::dark : Appearance::light);
        }
        const Clock::time_point start = Clock::now();
        bench.view->viewport()->repaint();
        const double elapsed = milliseconds(Clock::now() - start);
        state.SetIterationTime(elapsed / 1000);
        samples.push_back(elapsed);
    }
    report(state, samples);
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
    std::vector<double> samples;
    int step = 0;
    for (auto _ : state) {
        const QPointF at = start + QPointF((++step % 200) - 100, 0);
        const Clock::time_point clockStart = Clock::now();
        bench.mouse(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton);
        bench.view->viewport()->repaint(boxes.front().rect.toAlignedRect());
        const double elapsed = milliseconds(Clock::now() - clockStart);
        state.SetIterationTime(elapsed / 1000);
        samples.push_back(elapsed);
    }
    bench.mouse(QEvent::MouseButtonRelease, start, Qt::LeftButton, Qt::NoButton);
    report(state, samples);
}
BENCHMARK(surfaceRotationFrame)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(200);

// The surface alone drawn into an image of a card's size, without the editor around it.
void drawOneSurface(benchmark::State& state) {
    application();
    Bench bench("plot(sin(x) * cos(y), -3, 3, -3, 3)\n", QSize(1000, 700));
    const auto& results = bench.view->results();
    if (results.empty() || !results.front().outcome.plot) {
        state.SkipWithError("no surface");
        return;
    }
    const PlotSpec& description = *results.front().outcome.plot;
    const PlotStyle style = PlotStyle::make(Appearance::light, {}, bench.view->font());
    QImage image(QSize(620, 260), QImage::Format_ARGB32_Premultiplied);
    std::vector<double> samples;
    double angle = 0;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        image.fill(style.paper);
        QPainter painter(&image);
        paintPlot(painter, QRectF(0, 0, 620, 260), description, style, PlotView{angle += 3});
        painter.end();
        const double elapsed = milliseconds(Clock::now() - start);
        state.SetIterationTime(elapsed / 1000);
        samples.push_back(elapsed);
    }
    report(state, samples);
}
BENCHMARK(drawOneSurface)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(200);

} // namespace
