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

#include <memory>
#include <ostream>

#include "LumoCalc/app/Application.h"
#include "LumoCalc/window/MainWindow.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"
#include "support/QtTestSupport.h"

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE

namespace lumo::test {

/// One QApplication for the whole test program, with a fixed font so that geometry does not
/// depend on the machine.
inline const auto* const qtEnvironment = ::testing::AddGlobalTestEnvironment(
    new ApplicationEnvironment<QApplication>("LumoCalcTests", QFont(QStringLiteral("DejaVu Sans"), 10)));

/// Settings and data in a temporary folder, the terms accepted and the interface in English
/// unless a test says otherwise.
class ShellTest : public ::testing::Test {
protected:
    enum class Terms { accepted, notAccepted };

    void SetUp() override { ASSERT_TRUE(m_folder.isValid()); }
    void TearDown() override {
        if (HasFailure() && m_app) {
            for (MainWindow* window : m_app->windows())
                saveFailureScreenshot(window, QStringLiteral("-%1").arg(m_app->windows().indexOf(window)));
        }
        m_app.reset();
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
                        Terms terms = Terms::accepted, AppLanguage language = AppLanguage::english) {
        prepareSettings(terms, language);
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
