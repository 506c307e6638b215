#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFont>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <iostream>
#include <memory>

#include "LumoCalc/app/Application.h"
#include "LumoCalc/window/MainWindow.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE

namespace lumo::test {

/// One QApplication for the whole test program, on the offscreen platform, with a fixed font
/// so that geometry does not depend on the machine.
class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "LumoCalcTests";
        static char* argv[] = {name, nullptr};
        m_application = std::make_unique<QApplication>(argc, argv);
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    }
    void TearDown() override { m_application.reset(); }

private:
    std::unique_ptr<QApplication> m_application;
};

inline ::testing::Environment* const qtEnvironment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

/// Settings and data in a temporary folder, the terms accepted and the interface in English
/// unless a test says otherwise.
class ShellTest : public ::testing::Test {
protected:
    enum class Terms { accepted, notAccepted };

    void SetUp() override { ASSERT_TRUE(m_folder.isValid()); }
    void TearDown() override {
        if (HasFailure() && m_app)
            saveScreenshots();
        m_app.reset();
    }

    /// Keeps a picture of every open window of a failed test in the build's test folder.
    void saveScreenshots() const {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        const QString stem = QStringLiteral("%1.%2").arg(QString::fromLatin1(info->test_suite_name()),
                                                         QString::fromLatin1(info->name()));
        QDir folder(QDir::current().filePath(QStringLiteral("failed-screenshots")));
        folder.mkpath(QStringLiteral("."));
        int index = 0;
        for (MainWindow* window : m_app->windows()) {
            const QString file = folder.filePath(QStringLiteral("%1-%2.png").arg(stem).arg(index++));
            if (window->grab().save(file))
                std::cerr << "screenshot of the failed test: " << file.toStdString() << '\n';
        }
    }

    QString settingsFile() const { return m_folder.filePath(QStringLiteral("settings.ini")); }
    QString dataDirectory() const { return m_folder.filePath(QStringLiteral("data")); }

    /// Writes the settings the application will start with.
    void prepareSettings(Terms terms, AppLanguage language = AppLanguage::english) {
        QSettings store(settingsFile(), QSettings::IniFormat);
        AppSettings settings(store, nullptr);
        settings.setLanguage(language);
        if (terms == Terms::accepted)
            settings.acceptTerms();
    }

    /// Starts the application; "-lumoFixture" keeps the sample document in memory, no
    /// argument uses the document file in the temporary data folder.
    Application& launch(QStringList arguments = {QStringLiteral("-lumoFixture")},
                        Terms terms = Terms::accepted) {
        prepareSettings(terms);
        arguments.prepend(QStringLiteral("lumo-calc"));
        m_app = std::make_unique<Application>(Application::Setup{arguments, settingsFile(), dataDirectory()});
        m_app->start();
        // Sheets are evaluated in the background; tests look at the answers of what is shown.
        m_app->store()->waitForIdle();
        return *m_app;
    }

    /// Makes a window the active one as the window system would, and waits for it.
    static void activate(MainWindow* window) {
        window->activateWindow();
        QApplication::setActiveWindow(window);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }

    static QString textOf(MainWindow* window) { return window->editor()->textView()->toPlainText(); }

    static void type(MainWindow* window, const QString& text) {
        CalcTextView* view = window->editor()->textView();
        view->setFocus();
        QTest::keyClicks(view, text);
        window->session()->store()->waitForIdle();
    }

    std::unique_ptr<Application> m_app;

private:
    QTemporaryDir m_folder;
};

} // namespace lumo::test
