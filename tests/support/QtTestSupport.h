#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTimer>

#include <functional>
#include <memory>

#include "LumoKit/base/Language.h"

namespace lumo::test {

/// One QCoreApplication for a test program, in English. Add it once per program with
/// testing::AddGlobalTestEnvironment(new lumo::test::QtEnvironment("Name")).
class QtEnvironment : public testing::Environment {
public:
    explicit QtEnvironment(const char* programName) : m_name(programName) {}

    void SetUp() override {
        static int argc = 1;
        static char* argv[] = {const_cast<char*>(m_name), nullptr};
        m_application = std::make_unique<QCoreApplication>(argc, argv);
        L10n::setCurrent(AppLanguage::english);
    }
    // The application goes before static destruction begins, while Qt's globals still exist.
    void TearDown() override {
        m_application.reset();
        L10n::setCurrent(AppLanguage::system);
    }

private:
    const char* m_name;
    std::unique_ptr<QCoreApplication> m_application;
};

/// One QGuiApplication on the offscreen platform, for tests that paint or need the platform's
/// shortcuts but show no widgets.
class GuiEnvironment : public testing::Environment {
public:
    explicit GuiEnvironment(const char* programName) : m_name(programName) {}

    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char* argv[] = {const_cast<char*>(m_name), nullptr};
        m_application = std::make_unique<QGuiApplication>(argc, argv);
    }
    void TearDown() override {
        m_application.reset();
        L10n::setCurrent(AppLanguage::system);
    }

private:
    const char* m_name;
    std::unique_ptr<QGuiApplication> m_application;
};

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
