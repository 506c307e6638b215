#pragma once

// What the Qt module's benchmarks share: a sheet of everyday lines, an offscreen application,
// timing by hand with the median of the samples reported, and an editor on an in-memory
// document with its settings in a temporary folder.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QSettings>
#include <QSize>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LumoKit/base/HeapPolicy.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo::bench {

/// Everyday lines: names, units, percentages, lists, prev and a small function.
inline const char* const everydayLines[] = {
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
/// The line "rent × 12" of the block, where digits are typed.
constexpr int typedLine = 8;

/// `lines` everyday lines in turn after `prefix`, without a line feed after the last.
inline std::string everydaySheet(int lines, const char* prefix = "") {
    std::string text = prefix;
    for (int written = 0; written < lines; ++written) {
        text += everydayLines[static_cast<std::size_t>(written) % std::size(everydayLines)];
        if (written + 1 < lines)
            text += '\n';
    }
    return text;
}

/// The application as lumo-calc starts it: offscreen, and with the heap kept between runs.
inline QApplication& offscreenApplication() {
    static const bool heapKept = (lumo::keepHeapBetweenRuns(), true);
    (void)heapKept;
    static int argc = 1;
    static char name[] = "LumoBench";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", "1");
    static QApplication app(argc, argv);
    return app;
}

/// Times each iteration by hand; report() gives the median and the 90th percentile in
/// milliseconds ("median_ms", "p90_ms").
class Samples {
public:
    using Clock = std::chrono::steady_clock;

    explicit Samples(benchmark::State& state) : m_state(state) {}

    void start() { m_start = Clock::now(); }
    void stop() {
        const double elapsed = std::chrono::duration<double, std::milli>(Clock::now() - m_start).count();
        m_state.SetIterationTime(elapsed / 1000);
        m_samples.push_back(elapsed);
    }
    void report() {
        if (m_samples.empty())
            return;
        std::sort(m_samples.begin(), m_samples.end());
        m_state.counters["median_ms"] = m_samples[m_samples.size() / 2];
        m_state.counters["p90_ms"] = m_samples[m_samples.size() * 9 / 10];
    }

private:
    benchmark::State& m_state;
    Clock::time_point m_start;
    std::vector<double> m_samples;
};

/// A shown editor on an in-memory starter document, with its settings in a temporary folder.
class EditorHarness {
public:
    EditorHarness(QSize size, StoreEvaluation evaluation, std::optional<AppearanceSetting> appearance = {}) {
        offscreenApplication();
        m_settingsStore =
            std::make_unique<QSettings>(m_folder.filePath("settings.ini"), QSettings::IniFormat);
        notifications = std::make_unique<NotificationCenter>();
        settings = std::make_unique<AppSettings>(*m_settingsStore, notifications.get());
        if (appearance)
            settings->setAppearance(*appearance);
        DocumentStore::Options options;
        options.source = DocumentStore::Source::starter;
        options.evaluation = evaluation;
        store = std::make_unique<DocumentStore>(options, notifications.get(), nullptr, settings.get());
        session = std::make_unique<SheetSession>(store.get());
        session->activate();
        QObject::connect(session.get(), &SheetSession::resultsChanged, [this] { ++resultsArrived; });
        editor = std::make_unique<SheetEditor>(session.get(), settings.get(), notifications.get());
        editor->resize(size);
        editor->show();
        QApplication::processEvents();
        view = editor->textView();
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

} // namespace lumo::bench
