#include "LumoCalc/app/Application.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMessageBox>
#include <QPixmap>
#include <QSettings>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>

#include "LumoCalc/app/AppPalette.h"
#include "LumoCalc/dialogs/ConfirmationDialog.h"
#include "LumoCalc/dialogs/HelpWindow.h"
#include "LumoCalc/dialogs/MessageBoxRoom.h"
#include "LumoCalc/dialogs/TermsDialog.h"
#include "LumoCalc/settings/SettingsWindow.h"
#include "LumoCalc/settings/TextZoom.h"
#include "LumoCalc/text/Bilingual.h"
#include "LumoCalc/window/Commands.h"
#include "LumoCalc/window/KeypadWiring.h"
#include "LumoCalc/window/MainWindow.h"
#include "LumoCalc/window/PlotsWiring.h"
#include "LumoCalc/window/SelectionStatus.h"
#include "LumoCalc/window/SheetCommandsWiring.h"
#include "LumoCalc/window/SheetListWiring.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/LaunchArguments.h"
#include "LumoUI/store/SheetSession.h"
#include "LumoUI/store/UndoCenter.h"

namespace lumo {

namespace {

// The size and place of the last window closed, for the first window of the next run.
constexpr auto windowGeometryKey = "lumo.windowGeometry";

std::unique_ptr<QSettings> openSettings(const QString& file) {
    if (file.isEmpty())
        return std::make_unique<QSettings>();
    return std::make_unique<QSettings>(file, QSettings::IniFormat);
}

DocumentStore::Options storeOptions(const Application::Setup& setup, const AppSettings* settings) {
    DocumentStore::Options options = DocumentStore::optionsForLaunch(setup.arguments, settings);
    if (options.source == DocumentStore::Source::file && !setup.dataDirectory.isEmpty())
        options.storageDirectory = setup.dataDirectory;
    // Typing never waits for a slow sheet: runs happen on a worker and stale ones are dropped.
    options.evaluation = StoreEvaluation::background;
    return options;
}

// Brings a window in front of the others; the offscreen platform has nothing to raise above.
void bringToFront(QWidget* window) {
    window->show();
    if (QGuiApplication::platformName() != QLatin1String("offscreen"))
        window->raise();
    window->activateWindow();
}

} // namespace

Application::Application(Setup setup, QObject* parent)
    : QObject(parent), m_settingsStore(openSettings(setup.settingsFile)),
      m_notifications(std::make_unique<NotificationCenter>()),
      m_settings(std::make_unique<AppSettings>(*m_settingsStore, m_notifications.get())),
      m_undoCenter(std::make_unique<UndoCenter>()) {
    m_store = std::make_unique<DocumentStore>(storeOptions(setup, m_settings.get()), m_notifications.get(),
                                              m_undoCenter.get(), m_settings.get());

    if (QStyle* style = QApplication::style())
        m_systemStyle = style->name();
    applyAppearance();
    connect(m_settings.get(), &AppSettings::appearanceChanged, this, &Application::applyAppearance);
    m_notifications->observe(notification::languageChanged, this, [this] { retranslateDialogs(); });

    // A new sync folder is used at once; LUMO_CLOUD_DIR, when set, keeps the store where it is.
    connect(m_settings.get(), &AppSettings::cloudFolderChanged, this,
            [this] { m_store->setCloudFolder(cloudFolderForLaunch(m_settings.get())); });
    connect(m_store.get(), &DocumentStore::clearSheetPromptChanged, this,
            &Application::clearSheetPromptChanged);
    // Nothing typed is lost when the user switches to another application or logs out.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive)
            m_store->flush();
    });
    connect(qApp, &QGuiApplication::commitDataRequest, this, [this] { m_store->flush(); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { m_store->flush(); });
}

Application::~Application() {
    m_quitting = true;
    // Windows and dialogs hold the store and settings weakly; they go before those do.
    for (const QPointer<MainWindow>& window : m_created)
        delete window;
    delete m_confirmation;
    delete m_about;
    delete m_settingsWindow;
    delete m_help;
    delete m_terms;
    m_store.reset();
}

void Application::start() {
    if (m_settings->hasAcceptedTerms()) {
        openWindow();
        return;
    }
    m_terms = new TermsDialog(TermsDialog::Mode::firstRun, m_settings.get(), m_notifications.get());
    m_terms->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_terms, &QDialog::accepted, this, [this] { openWindow(); });
    connect(m_terms, &QDialog::rejected, this, &Application::quit);
    bringToFront(m_terms);
}

MainWindow* Application::openWindow() {
    auto* window = new MainWindow(m_store.get(), m_settings.get(), m_notifications.get());
    installSheetList(window, m_store.get(), m_settings.get(), m_notifications.get());
    installPlotCommands(window, m_settings.get());
    m_windows.append(window);
    m_created.removeAll(nullptr);
    m_created.append(window);
    connect(window, &MainWindow::commandRequested, this,
            [this, window](Command command) { perform(command, window); });
    connect(window, &MainWindow::closed, this, [this, window] { windowClosed(window); });
    installSheetCommands(window, m_settings.get(), m_notifications.get());
    installSelectionStatus(window, m_notifications.get());
    installTextZoom(window, m_settings.get());
    installKeypad(window, this, m_settings.get(), m_notifications.get());
    // The first window comes back where the user left the last one; a further window
    // cascades from the one the user is working in.
    if (m_windows.size() == 1) {
        const QByteArray geometry =
            m_settings->viewPreference(QLatin1String(windowGeometryKey), QByteArray()).toByteArray();
        if (!geometry.isEmpty())
            window->restoreGeometry(geometry);
        else
            window->makeRoomForEditor();
    } else if (MainWindow* current = activeWindow(); current && current != window) {
        window->resize(current->size());
        window->move(current->pos() + QPoint(28, 28));
    }
    // The new window is where the user works next, before the window system says so.
    window->session()->activate();
    bringToFront(window);
    window->editor()->textView()->setFocus(Qt::ActiveWindowFocusReason);
    return window;
}

QList<MainWindow*> Application::windows() const {
    QList<MainWindow*> open;
    for (const QPointer<MainWindow>& window : m_windows) {
        if (window)
            open.append(window);
    }
    return open;
}

TermsDialog* Application::termsDialog() const {
    return m_terms;
}

HelpWindow* Application::helpWindow() const {
    return m_help;
}

SettingsWindow* Application::settingsWindow() const {
    return m_settingsWindow;
}

ConfirmationDialog* Application::confirmation() const {
    return m_confirmation;
}

MainWindow* Application::activeWindow() const {
    const QList<MainWindow*> open = windows();
    for (MainWindow* window : open) {
        if (window->session() == m_store->activeSession())
            return window;
    }
    return open.isEmpty() ? nullptr : open.last();
}

void Application::windowClosed(MainWindow* window) {
    m_settings->setViewPreference(QLatin1String(windowGeometryKey), window->saveGeometry());
    if (const int width = window->sidebarWidth(); width > 0)
        m_settings->setViewPreference(QLatin1String(sideColumnWidthKey), width);
    m_windows.removeAll(window);
    m_windows.removeAll(nullptr);
    if (m_windows.isEmpty() && !m_quitting && !m_terms)
        quit();
}

void Application::quit() {
    if (m_quitting)
        return;
    m_quitting = true;
    m_store->flush();
    emit quitting();
    for (MainWindow* window : windows())
        window->close();
    if (m_help)
        m_help->close();
    if (m_settingsWindow)
        m_settingsWindow->close();
    if (m_terms)
        m_terms->hide();
    QCoreApplication::quit();
}

void Application::perform(Command command, MainWindow* from) {
    switch (command) {
    case Command::newWindow:
        openWindow();
        return;
    case Command::quit:
        quit();
        return;
    case Command::help:
        showHelp();
        return;
    case Command::termsOfUse:
        showTerms();
        return;
    case Command::about:
        showAbout(from);
        return;
    case Command::eraseAllContent:
        askToEraseAllContent(from);
        return;
    case Command::settings:
        showSettings();
        return;
    default:
        from->perform(command);
        return;
    }
}

void Application::showHelp() {
    if (!m_help) {
        m_help = new HelpWindow(m_notifications.get());
        m_help->setAttribute(Qt::WA_DeleteOnClose);
        handBackFocusOnClose(m_help);
        addApplicationKeys(m_help);
    }
    bringToFront(m_help);
}

void Application::showTerms() {
    if (m_terms) {
        bringToFront(m_terms);
        return;
    }
    m_terms =
        new TermsDialog(TermsDialog::Mode::reading, m_settings.get(), m_notifications.get(), activeWindow());
    m_terms->setAttribute(Qt::WA_DeleteOnClose);
    handBackFocusOnClose(m_terms);
    m_terms->open();
}

void Application::showAbout(QWidget* parent) {
    if (m_about) {
        bringToFront(m_about);
        return;
    }
    m_about = new QMessageBox(parent);
    m_about->setAttribute(Qt::WA_DeleteOnClose);
    handBackFocusOnClose(m_about);
    m_about->setIconPixmap(QApplication::windowIcon().pixmap(64, 64));
    giveSentencesRoom(m_about);
    m_about->setText(QStringLiteral("<b>Lumo %1</b>").arg(QCoreApplication::applicationVersion()));
    retranslateDialogs();
    m_about->open();
}

void Application::showSettings() {
    if (!m_settingsWindow) {
        m_settingsWindow = new SettingsWindow(m_settings.get(), m_notifications.get());
        m_settingsWindow->setAttribute(Qt::WA_DeleteOnClose);
        handBackFocusOnClose(m_settingsWindow);
        addApplicationKeys(m_settingsWindow);
        connect(m_settingsWindow, &SettingsWindow::eraseAllContentRequested, this,
                [this] { askToEraseAllContent(m_settingsWindow); });
    }
    bringToFront(m_settingsWindow);
}

// A window manager gives the keyboard back to the window the user came from when another one
// closes; on a bare X server nothing does, and every shortcut would go nowhere. So once a help,
// settings or about window has gone, the window the user works in takes the keyboard back,
// unless some window of ours already has it.
void Application::handBackFocusOnClose(QWidget* window) {
    connect(window, &QObject::destroyed, this, [this] {
        QTimer::singleShot(0, this, [this] {
            if (m_quitting || QApplication::activeWindow())
                return;
            if (MainWindow* window = activeWindow())
                window->activateWindow();
        });
    });
}

// Help and Settings are windows of their own, without the menu bar; the application's own
// commands work from them as they do from the main windows.
void Application::addApplicationKeys(QWidget* window) {
    for (const Command command : {Command::newWindow, Command::settings, Command::quit, Command::help}) {
        auto* item = new QAction(window);
        item->setShortcuts(shortcutsFor(commandDefinition(command)));
        item->setShortcutContext(Qt::WindowShortcut);
        connect(item, &QAction::triggered, this, [this, command] { perform(command, activeWindow()); });
        window->addAction(item);
    }
}

// Windows relabel themselves; the dialogs that are only shown for a moment are relabelled here.
void Application::retranslateDialogs() {
    if (m_confirmation)
        m_confirmation->retranslate();
    if (m_about) {
        m_about->setWindowTitle(pickText("Lumo について", "About Lumo"));
        m_about->setInformativeText(
            pickText("打つと、その行の右に答えが出る計算用のメモ帳です。\n"
                     "シートはこのコンピューターと、指定した同期フォルダーだけに保存されます。",
                     "The calculation notepad that answers every line as you type.\n"
                     "Your sheets stay on this computer and in the synced folder you choose."));
    }
}

void Application::askToEraseAllContent(QWidget* parent) {
    if (m_confirmation)
        return;
    m_confirmation = ConfirmationDialog::eraseAllContent(parent);
    connect(m_confirmation, &ConfirmationDialog::confirmed, this, [this] { m_store->eraseAllContent(); });
    m_confirmation->open();
}

void Application::clearSheetPromptChanged() {
    const std::optional<std::string>& prompt = m_store->clearSheetPrompt();
    if (!prompt) {
        // The request went away by itself (its sheet was deleted on another device).
        if (m_confirmation && m_confirmation->property("clearSheet").toBool())
            m_confirmation->close();
        return;
    }
    if (m_confirmation)
        return;
    m_confirmation = ConfirmationDialog::clearSheet(activeWindow());
    m_confirmation->setProperty("clearSheet", true);
    connect(m_confirmation, &ConfirmationDialog::confirmed, m_store.get(), &DocumentStore::confirmClearSheet);
    connect(m_confirmation, &ConfirmationDialog::cancelled, m_store.get(), &DocumentStore::cancelClearSheet);
    m_confirmation->open();
}

void Application::applyAppearance() {
    const AppearanceSetting setting = m_settings->appearance();
    if (setting == AppearanceSetting::automatic) {
        if (!m_systemStyle.isEmpty())
            QApplication::setStyle(QStyleFactory::create(m_systemStyle));
        // A palette that sets no colour takes every one from the desktop, and keeps following
        // it when the desktop switches between light and dark.
        QApplication::setPalette(QPalette());
        return;
    }
    // Fusion draws with the palette it is given on every platform, so light and dark look
    // the same everywhere.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(appPalette::paletteFor(setting, QPalette()));
}

bool Application::renderScreenshot(const QString& file, std::optional<AppearanceSetting> appearance) {
    const AppearanceSetting saved = m_settings->appearance();
    if (appearance)
        m_settings->setAppearance(*appearance);
    MainWindow* window = openWindow();
    window->resize(980, 680);
    SheetSession* session = window->session();
    if (session->results().empty()) {
        QEventLoop waiting;
        connect(session, &SheetSession::resultsChanged, &waiting, &QEventLoop::quit);
        QTimer::singleShot(5000, &waiting, &QEventLoop::quit);
        waiting.exec();
    }
    // Let layout, colouring and the answer column settle before the picture is taken.
    QElapsedTimer settling;
    settling.start();
    while (settling.elapsed() < 300)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    const bool written = window->grab().save(file, "PNG");
    // Deleted rather than closed: a picture taken must not become the size the next run opens at.
    delete window;
    if (appearance)
        m_settings->setAppearance(saved);
    return written;
}

} // namespace lumo
