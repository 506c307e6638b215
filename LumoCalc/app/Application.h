#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

#include "LumoCalc/window/Commands.h"
#include "LumoUI/settings/AppSettings.h"

class QMessageBox;
class QSettings;

namespace lumo {

class AppSettings;
class ConfirmationDialog;
class DocumentStore;
class HelpWindow;
class MainWindow;
class NotificationCenter;
class SettingsWindow;
class TermsDialog;
class UndoCenter;

/// The running application: the one settings object, notification centre, undo centre and
/// document store of the process, and the windows, dialogs and help window that show them.
class Application : public QObject {
    Q_OBJECT

public:
    struct Setup {
        /// The launch arguments, program first; "-lumoFixture" and "-lumoStarter" choose an
        /// in-memory document.
        QStringList arguments;
        /// An INI file for the settings; empty for the platform's own place for Lumo's.
        QString settingsFile;
        /// The folder of "document.json"; empty for the user's data folder.
        QString dataDirectory;
    };

    explicit Application(Setup setup, QObject* parent = nullptr);
    ~Application() override;

    /// Shows the terms of use when the current ones have not been accepted yet, and the first
    /// window once they are.
    void start();
    MainWindow* openWindow();
    /// Opens a window, renders it into a PNG once its sheet is evaluated, and closes it; in
    /// `appearance` when given, which the settings keep only while the picture is taken.
    /// False when the file could not be written.
    bool renderScreenshot(const QString& file, std::optional<AppearanceSetting> appearance = std::nullopt);
    /// Saves what is pending, closes every window and leaves the event loop.
    void quit();

    QList<MainWindow*> windows() const;
    /// The window whose session is the store's active one; the newest window otherwise.
    MainWindow* activeWindow() const;
    TermsDialog* termsDialog() const;
    HelpWindow* helpWindow() const;
    SettingsWindow* settingsWindow() const;
    /// The confirmation being asked, if any.
    ConfirmationDialog* confirmation() const;
    bool isQuitting() const { return m_quitting; }

    AppSettings* settings() const { return m_settings.get(); }
    NotificationCenter* notifications() const { return m_notifications.get(); }
    UndoCenter* undoCenter() const { return m_undoCenter.get(); }
    DocumentStore* store() const { return m_store.get(); }

signals:
    void quitting();

private:
    void perform(Command command, MainWindow* from);
    void showTerms();
    void showHelp();
    void showAbout(QWidget* parent);
    void showSettings();
    void handBackFocusOnClose(QWidget* window);
    void addApplicationKeys(QWidget* window);
    void retranslateDialogs();
    void askToEraseAllContent(QWidget* parent);
    void clearSheetPromptChanged();
    void windowClosed(MainWindow* window);
    void applyAppearance();

    std::unique_ptr<QSettings> m_settingsStore;
    std::unique_ptr<NotificationCenter> m_notifications;
    std::unique_ptr<AppSettings> m_settings;
    std::unique_ptr<UndoCenter> m_undoCenter;
    std::unique_ptr<DocumentStore> m_store;

    QList<QPointer<MainWindow>> m_windows;
    // Also the closed windows whose deletion is still pending.
    QList<QPointer<MainWindow>> m_created;
    QPointer<TermsDialog> m_terms;
    QPointer<HelpWindow> m_help;
    QPointer<ConfirmationDialog> m_confirmation;
    QPointer<SettingsWindow> m_settingsWindow;
    QPointer<QMessageBox> m_about;
    QString m_systemStyle;
    bool m_quitting = false;
};

} // namespace lumo
