// The sheet editor on the offscreen platform: how long a keystroke takes until its text and its
// answers are painted, how long a long sheet takes to open and to scroll by a page. Each run
// reports the median of its samples in milliseconds ("median_ms"), the number to watch.
#include <benchmark/benchmark.h>

#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlock>

#include <string>

#include "bench/BenchHarness.h"
#include "LumoUI/editor/DecorationOverlay.h"

using namespace lumo;

namespace {

using namespace lumo::bench;

// A loop that only the run's time limit stops.
const char* const endlessLoop = "n = 0\nwhile n >= 0:\n    n = n + sqrt(n + 1) / 1000\n";

// An editor whose sheets are evaluated on a worker, as in the application.
class Bench : public EditorHarness {
public:
    Bench() : EditorHarness(QSize(1000, 800), StoreEvaluation::background) {}

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

    // At the end of the typed line in the block nearest the middle.
    void placeCaretInMiddle() {
        const int blockSize = int(std::size(everydayLines));
        const QTextBlock line = view->document()->findBlockByNumber(
            view->document()->blockCount() / 2 / blockSize * blockSize + typedLine);
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
};

enum class Painted { text, answers };

void keystroke(benchmark::State& state, const std::string& sheet, Painted painted) {
    Bench bench;
    bench.showText(sheet);
    bench.placeCaretInMiddle();
    Samples samples(state);
    for (auto _ : state) {
        const int before = bench.resultsArrived;
        samples.start();
        bench.press(Qt::Key_1, QStringLiteral("1"));
        if (painted == Painted::text) {
            bench.paintText();
        } else {
            bench.waitForResults(before);
            bench.paintAnswers();
        }
        samples.stop();
        // Back to the same text, outside the measurement.
        bench.waitForResults(before);
        const int afterTyping = bench.resultsArrived;
        bench.press(Qt::Key_Backspace, {});
        bench.waitForResults(afterTyping);
    }
    samples.report();
}

void keystrokeToPaintedText(benchmark::State& state) {
    keystroke(state, everydaySheet(1000), Painted::text);
}
BENCHMARK(keystrokeToPaintedText)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(60);

void keystrokeToPaintedAnswers(benchmark::State& state) {
    keystroke(state, everydaySheet(1000), Painted::answers);
}
BENCHMARK(keystrokeToPaintedAnswers)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(60);

void keystrokeBesideEndlessLoop(benchmark::State& state) {
    keystroke(state, everydaySheet(1000, endlessLoop), Painted::text);
}
BENCHMARK(keystrokeBesideEndlessLoop)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

void openLongSheet(benchmark::State& state) {
    Bench bench;
    const Uuid small = *bench.session->sheetID();
    const Uuid large = bench.store->addSheet();
    bench.store->updateText(large, everydaySheet(10000));
    bench.session->showSheet(small);
    QApplication::processEvents();
    Samples samples(state);
    for (auto _ : state) {
        const int before = bench.resultsArrived;
        samples.start();
        bench.session->showSheet(large);
        bench.paintText();
        bench.waitForResults(before);
        bench.paintAnswers();
        samples.stop();
        bench.session->showSheet(small);
        QApplication::processEvents();
    }
    samples.report();
}
BENCHMARK(openLongSheet)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

void scrollLongSheetByPage(benchmark::State& state) {
    Bench bench;
    bench.showText(everydaySheet(10000));
    bench.placeCaretInMiddle();
    QScrollBar* bar = bench.view->verticalScrollBar();
    Samples samples(state);
    bool down = true;
    for (auto _ : state) {
        samples.start();
        bar->triggerAction(down ? QAbstractSlider::SliderPageStepAdd : QAbstractSlider::SliderPageStepSub);
        bench.paintText();
        bench.paintAnswers();
        samples.stop();
        down = !down;
    }
    samples.report();
}
BENCHMARK(scrollLongSheetByPage)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);

} // namespace
