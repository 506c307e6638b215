// The sheet editor on the offscreen platform: how long a keystroke takes until its text and its
// answers are painted, how long a long sheet takes to open and to scroll by a page. Each run
// reports the median of its samples in milliseconds ("median_ms"), the number to watch.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextBlock>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/DecorationOverlay.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

using namespace lumo;
using Clock = std::chrono::steady_clock;

namespace {

const char* const block[] = {
    "price = 1200",
    "qty = 35",
    "price × qty + 10%",
    "width = 120 mm",
    "depth = 300 mm",
    "area = width × depth",
    "36 kN / area in N/mm2",
    "rent = 82000円",
    "rent × 12",
    "2 h + 30 min in min",
    "prices = [4800, 12000, 3200]",
    "sum(prices)",
    "prev × 2",
    "",
    "// a note",
    "def half(v):",
    "    return v / 2",
    "half(prev)",
    "sqrt(2) * sin(pi / 4)",
    "5 km in m",
};

// A loop that only the run's time limit stops.
const char* const endlessLoop = "n = 0\nwhile n >= 0:\n    n = n + sqrt(n + 1) / 1000\n";

std::string sheetOf(int lines, const char* prefix = "") {
    std::string text = prefix;
    for (int written = 0; written < lines; ++written) {
        text += block[static_cast<std::size_t>(written) % std::size(block)];
        if (written + 1 < lines)
            text += '\n';
    }
    return text;
}

QApplication& application() {
    static int argc = 1;
    static char name[] = "EditorBench";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", "1");
    static QApplication app(argc, argv);
    return app;
}

double milliseconds(Clock::duration elapsed) {
    return std::chrono::duration<double, std::milli>(elapsed).count();
}

void reportMedian(benchmark::State& state, std::vector<double> samples) {
    if (samples.empty())
        return;
    std::sort(samples.begin(), samples.end());
    state.counters["median_ms"] = samples[samples.size() / 2];
    state.counters["p90_ms"] = samples[samples.size() * 9 / 10];
}

// An editor on an in-memory document with settings in a temporary folder.
class Bench {
public:
    Bench() {
        application();
        m_settingsStore =
            std::make_unique<QSettings>(m_folder.filePath("settings.ini"), QSettings::IniFormat);
        notifications = std::make_unique<NotificationCenter>();
        settings = std::make_unique<AppSettings>(*m_settingsStore, notifications.get());
        DocumentStore::Options options;
        options.source = DocumentStore::Source::starter;
        // As in the application: sheets are evaluated on a worker.
        options.evaluation = StoreEvaluation::background;
        store = std::make_unique<DocumentStore>(options, notifications.get(), nullptr, settings.get());
        session = std::make_unique<SheetSession>(store.get());
        session->activate();
        QObject::connect(session.get(), &SheetSession::resultsChanged, [this] { ++resultsArrived; });
        editor = std::make_unique<SheetEditor>(session.get(), settings.get(), notifications.get());
        editor->resize(1000, 800);
        editor->show();
        QApplication::processEvents();
        view = editor->textView();
    }

    void showText(const std::string& text) {
        store->updateText(*session->sheetID(), text);
        waitForResults(0);
        QApplication::processEvents();
    }

    // Waits until results arrive after `before` arrivals; evaluation may run elsewhere.
    void waitForResults(int before) {
        while (resultsArrived <= before)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void paintText() { view->viewport()->repaint(); }
    void paintAnswers() { view->overlay()->repaint(); }

    void placeCaretInMiddle() {
        const QTextBlock line =
            view->document()->findBlockByNumber(view->document()->blockCount() / 2 / 20 * 20 + 8);
        QTextCursor cursor(line);
        cursor.movePosition(QTextCursor::EndOfBlock);
        view->setTextCursor(cursor);
        view->centerCursor();
        QApplication::processEvents();
    }

    void press(Qt::Key key, const QString& text) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(view, &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QApplication::sendEvent(view, &release);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<QSettings> m_settingsStore;
    std::unique_ptr<NotificationCenter> notifications;
    std::unique_ptr<AppSettings> settings;
    std::unique_ptr<DocumentStore> store;
    std::unique_ptr<SheetSession> session;
    std::unique_ptr<SheetEditor> editor;
    CalcTextView* view = nullptr;
    int resultsArrived = 0;
};

enum class Painted { text, answers };

void keystroke(benchmark::State& state, const std::string& sheet, Painted painted) {
    Bench bench;
    bench.showText(sheet);
    bench.placeCaretInMiddle();
    std::vector<double> samples;
    for (auto _ : state) {
        const int before = bench.resultsArrived;
        const Clock::time_point start = Clock::now();
        bench.press(Qt::Key_1, QStringLiteral("1"));
        if (painted == Painted::text) {
            bench.paintText();
        } else {
            bench.waitForResults(before);
            bench.paintAnswers();
        }
        const double elapsed = milliseconds(Clock::now() - start);
        state.SetIterationTime(elapsed / 1000);
        samples.push_back(elapsed);
        // Back to the same text, outside the measurement.
        bench.waitForResults(before);
        const int afterTyping = bench.resultsArrived;
        bench.press(Qt::Key_Backspace, {});
        bench.waitForResults(afterTyping);
    }
    reportMedian(state, samples);
}

void keystrokeToPaintedText(benchmark::State& state) {
    keystroke(state, sheetOf(1000), Painted::text);
}
BENCHMARK(keystrokeToPaintedText)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(60);

void keystrokeToPaintedAnswers(benchmark::State& state) {
    keystroke(state, sheetOf(1000), Painted::answers);
}
BENCHMARK(keystrokeToPaintedAnswers)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(60);

void keystrokeBesideEndlessLoop(benchmark::State& state) {
    keystroke(state, sheetOf(1000, endlessLoop), Painted::text);
}
BENCHMARK(keystrokeBesideEndlessLoop)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

void openLongSheet(benchmark::State& state) {
    Bench bench;
    const Uuid small = *bench.session->sheetID();
    const Uuid large = bench.store->addSheet();
    bench.store->updateText(large, sheetOf(10000));
    bench.session->showSheet(small);
    QApplication::processEvents();
    std::vector<double> samples;
    for (auto _ : state) {
        const int before = bench.resultsArrived;
        const Clock::time_point start = Clock::now();
        bench.session->showSheet(large);
        bench.paintText();
        bench.waitForResults(before);
        bench.paintAnswers();
        const double elapsed = milliseconds(Clock::now() - start);
        state.SetIterationTime(elapsed / 1000);
        samples.push_back(elapsed);
        bench.session->showSheet(small);
        QApplication::processEvents();
    }
    reportMedian(state, samples);
}
BENCHMARK(openLongSheet)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

void scrollLongSheetByPage(benchmark::State& state) {
    Bench bench;
    bench.showText(sheetOf(10000));
    bench.placeCaretInMiddle();
    QScrollBar* bar = bench.view->verticalScrollBar();
    std::vector<double> samples;
    bool down = true;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        bar->triggerAction(down ? QAbstractSlider::SliderPageStepAdd : QAbstractSlider::SliderPageStepSub);
        bench.paintText();
        bench.paintAnswers();
        const double elapsed = milliseconds(Clock::now() - start);
        state.SetIterationTime(elapsed / 1000);
        samples.push_back(elapsed);
        down = !down;
    }
    reportMedian(state, samples);
}
BENCHMARK(scrollLongSheetByPage)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);

} // namespace
