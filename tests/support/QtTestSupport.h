#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFont>
#include <QGuiApplication>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <iostream>
#include <memory>
#include <optional>

#include "LumoKit/base/Language.h"

namespace lumo::test {

/// One application object of type App for a test program, on the offscreen platform and in
/// English. Widget tests give a font, so that geometry does not depend on the machine. Add it
/// once per program with testing::AddGlobalTestEnvironment(new QtEnvironment("Name")).
template <class App> class ApplicationEnvironment : public testing::Environment {
public:
    explicit ApplicationEnvironment(const char* programName, std::optional<QFont> font = std::nullopt)
        : m_name(programName), m_font(std::move(font)) {}

    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_SCALE_FACTOR", "1");
        static int argc = 1;
        static char* argv[] = {const_cast<char*>(m_name), nullptr};
        m_application = std::make_unique<App>(argc, argv);
        if (m_font)
            QGuiApplication::setFont(*m_font);
        L10n::setCurrent(AppLanguage::english);
    }
    // The application goes before static destruction begins, while Qt's globals still exist.
    void TearDown() override {
        m_application.reset();
        L10n::setCurrent(AppLanguage::system);
    }

private:
    const char* m_name;
    std::optional<QFont> m_font;
    std::unique_ptr<App> m_application;
};

using QtEnvironment = ApplicationEnvironment<QCoreApplication>;
/// For tests that paint or need the platform's shortcuts but show no widgets.
using GuiEnvironment = ApplicationEnvironment<QGuiApplication>;

/// Keeps a picture of a widget of a failed test in the build's "failed-screenshots" folder.
inline void saveFailureScreenshot(QWidget* widget, const QString& suffix = {}) {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    QDir folder(QDir::current().filePath(QStringLiteral("failed-screenshots")));
    folder.mkpath(QStringLiteral("."));
    const QString file = folder.filePath(
        QStringLiteral("%1.%2%3.png")
            .arg(QString::fromUtf8(info->test_suite_name()), QString::fromUtf8(info->name()), suffix));
    if (widget->grab().save(file))
        std::cerr << "screenshot of the failed test: " << file.toStdString() << '\n';
}

/// Runs the event loop until `done` holds; false after the timeout.
inline bool waitUntil(const std::function<bool()>& done, int timeoutMs = 5000) {
    QElapsedTimer elapsed;
    elapsed.start();
    QTimer tick;
    tick.start(5);
    while (!done()) {
        if (elapsed.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

inline void runFor(int ms) {
    QElapsedTimer elapsed;
    elapsed.start();
    waitUntil([&] { return elapsed.elapsed() >= ms; }, ms + 1000);
}

} // namespace lumo::test
