#include "LumoCalc/window/MainWindow.h"

#include <algorithm>

#include <QAction>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSplitter>

#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"
#include "LumoUI/store/UndoCenter.h"

namespace lumo {

MainWindow::MainWindow(DocumentStore* store, AppSettings* settings, NotificationCenter* notifications,
                       QWidget* parent)
    : QMainWindow(parent), m_store(store), m_notifications(notifications) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("mainWindow"));
    setMinimumSize(420, 300);
    resize(900, 640);

    m_session = new SheetSession(store, this);

    auto* central = new QWidget(this);
    auto* column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    m_column = column;
    m_topRow = new QHBoxLayout;
    m_topRow->setContentsMargins(0, 0, 0, 0);
    column->addLayout(m_topRow);
    m_splitter = new QSplitter(Qt::Horizontal, central);
    m_splitter->setChildrenCollapsible(false);
    m_editor = new SheetEditor(m_session, settings, notifications, m_splitter);
    m_splitter->addWidget(m_editor);
    m_splitter->setStretchFactor(0, 1);
    column->addWidget(m_splitter, 1);
    setCentralWidget(central);
    setFocusProxy(m_editor->textView());

    buildMenus();

    CalcTextView* text = m_editor->textView();
    // Undo and redo belong to the store's history of the sheet, shared by every window on it,
    // so their keys must reach this window's menu rather than the text view's own handling.
    text->installEventFilter(this);
    connect(text, &QPlainTextEdit::copyAvailable, this, &MainWindow::updateEditActions);

    connect(m_session, &SheetSession::sheetIDChanged, this, &MainWindow::updateTitle);
    if (m_store) {
        connect(m_store, &DocumentStore::documentChanged, this, &MainWindow::updateTitle);
        if (UndoCenter* undo = m_store->undoCenter()) {
            connect(undo, &UndoCenter::canUndoChanged, action(Command::undo), &QAction::setEnabled);
            connect(undo, &UndoCenter::canRedoChanged, action(Command::redo), &QAction::setEnabled);
            action(Command::undo)->setEnabled(undo->canUndo());
            action(Command::redo)->setEnabled(undo->canRedo());
        }
    }
    if (m_notifications)
        m_notifications->observe(notification::languageChanged, this, [this] { retranslate(); });

    retranslate();
    updateTitle();
    updateEditActions();
}

MainWindow::~MainWindow() {
    // The editor observes the session; it goes first so it never sees a half-destroyed one.
    delete m_editor;
    m_editor = nullptr;
}

QAction* MainWindow::action(Command command) const {
    const auto found = m_actions.find(command);
    return found == m_actions.end() ? nullptr : found->second;
}

void MainWindow::buildMenus() {
    for (const CommandDefinition& definition : allCommands()) {
        auto* item = new QAction(this);
        item->setShortcuts(shortcutsFor(definition));
        item->setShortcutContext(Qt::WindowShortcut);
        if (definition.command == Command::quit)
            item->setMenuRole(QAction::QuitRole);
        else if (definition.command == Command::about)
            item->setMenuRole(QAction::AboutRole);
        else if (definition.command == Command::settings)
            item->setMenuRole(QAction::PreferencesRole);
        item->setCheckable(definition.checkable);
        connect(item, &QAction::triggered, this, [this, command = definition.command] { perform(command); });
        // Shortcuts work even while the menu bar is hidden or native.
        addAction(item);
        m_actions.emplace(definition.command, item);
    }
    for (const MenuDefinition& definition : menuBarLayout()) {
        QMenu* menu = menuBar()->addMenu(QString());
        for (const std::optional<Command>& entry : definition.entries) {
            if (entry)
                menu->addAction(action(*entry));
            else
                menu->addSeparator();
        }
        m_menus.append(menu);
    }
}

void MainWindow::retranslate() {
    const auto& layout = menuBarLayout();
    for (std::size_t index = 0; index < layout.size() && index < std::size_t(m_menus.size()); ++index)
        m_menus[qsizetype(index)]->setTitle(layout[index].title.text());
    for (const CommandDefinition& definition : allCommands())
        action(definition.command)->setText(definition.label.text());
}

void MainWindow::updateTitle() {
    const Sheet* sheet = m_store && m_session->sheetID() ? m_store->sheet(*m_session->sheetID()) : nullptr;
    setWindowTitle(sheet ? QStringLiteral("%1 — Lumo").arg(QString::fromStdString(sheet->name))
                         : QStringLiteral("Lumo"));
}

void MainWindow::updateEditActions() {
    const bool selected = m_editor->textView()->textCursor().hasSelection();
    action(Command::cut)->setEnabled(selected);
    action(Command::copy)->setEnabled(selected);
}

void MainWindow::setCommandHandler(Command command, CommandHandler handler) {
    m_handlers[command] = std::move(handler);
}

void MainWindow::perform(Command command) {
    if (const auto handler = m_handlers.find(command); handler != m_handlers.end() && handler->second) {
        QAction* item = action(command);
        handler->second(item && item->isChecked());
        return;
    }
    CalcTextView* text = m_editor->textView();
    const auto post = [this](const char* name, const QVariant& payload = {}) {
        // The store acts on the active session, which must be this window's.
        m_session->activate();
        if (m_notifications)
            m_notifications->post(QString::fromLatin1(name), payload);
    };
    switch (command) {
    case Command::newSheet:
        if (!m_store)
            return;
        m_session->activate();
        m_store->addSheet();
        text->setFocus(Qt::ShortcutFocusReason);
        text->moveCursor(QTextCursor::End);
        return;
    case Command::closeWindow:
        close();
        return;
    case Command::undo:
        post(notification::undo);
        return;
    case Command::redo:
        post(notification::redo);
        return;
    case Command::cut:
        text->cut();
        return;
    case Command::copy:
        text->copy();
        return;
    case Command::paste:
        text->paste();
        return;
    case Command::selectAll:
        text->setFocus(Qt::ShortcutFocusReason);
        text->selectAll();
        return;
    case Command::copyAnswer:
        m_editor->copyAnswerAtCaret();
        return;
    case Command::toggleComment:
        m_editor->toggleComments();
        return;
    case Command::clearSheet:
        if (m_session->sheetID())
            post(notification::clearSheet, QString::fromStdString(m_session->sheetID()->toString()));
        return;
    case Command::newWindow:
    case Command::settings:
    case Command::eraseAllContent:
    case Command::quit:
    case Command::help:
    case Command::termsOfUse:
    case Command::about:
        emit commandRequested(command);
        return;
    case Command::exportSheet:
    case Command::print:
    case Command::copySheetWithAnswers:
    case Command::find:
    case Command::replace:
    case Command::findNext:
    case Command::findPrevious:
    case Command::goToLine:
    case Command::nextSheet:
    case Command::previousSheet:
    case Command::zoomIn:
    case Command::zoomOut:
    case Command::actualSize:
    case Command::showPlots:
    case Command::showKeypad:
    case Command::showNamedValues:
        // Handled by the window's features once they are installed.
        return;
    }
}

void MainWindow::setSheetTabs(QWidget* tabs) {
    m_topRow->addWidget(tabs);
}

void MainWindow::setBarAboveSheet(QWidget* bar) {
    m_column->insertWidget(m_column->indexOf(m_splitter), bar);
}

void MainWindow::setSheetSidebar(QWidget* sidebar) {
    delete m_sidebar;
    m_sidebar = sidebar;
    m_splitter->insertWidget(0, sidebar);
    m_splitter->setStretchFactor(m_splitter->indexOf(sidebar), 0);
}

int MainWindow::sidebarWidth() const {
    return m_sidebar && m_sidebar->isVisible() ? m_sidebar->width() : 0;
}

void MainWindow::setKeypad(QWidget* keypad, Side side) {
    if (m_keypad != keypad)
        delete m_keypad;
    m_keypad = keypad;
    const int editorAt = m_splitter->indexOf(m_editor);
    m_splitter->insertWidget(side == Side::left ? editorAt : editorAt + 1, keypad);
    m_splitter->setStretchFactor(m_splitter->indexOf(keypad), 0);
}

void MainWindow::makeRoomForEditor() {
    // Room for a line of text beside the answer column at its default width.
    constexpr int comfortableEditorWidth = 560;
    if (windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen))
        return;
    // The splitter spans the window, so the window needs the editor's room and the panels'.
    int wanted = comfortableEditorWidth;
    for (int index = 0; index < m_splitter->count(); ++index) {
        QWidget* panel = m_splitter->widget(index);
        if (panel == m_editor || !panel->isVisibleTo(this))
            continue;
        // A panel just shown may not be laid out yet; it takes at least the width it hints.
        wanted += std::max(panel->width(), panel->sizeHint().width()) + m_splitter->handleWidth();
    }
    const QScreen* shown = screen();
    if (shown)
        wanted = std::min(wanted, shown->availableGeometry().width() - (frameGeometry().width() - width()));
    if (wanted <= width())
        return;
    resize(wanted, height());
    // A window near the screen's right edge grows to the left instead of off the screen.
    if (shown && isVisible()) {
        const QRect available = shown->availableGeometry();
        if (const int overflow = frameGeometry().right() - available.right(); overflow > 0)
            move(std::max(available.left(), x() - overflow), y());
    }
}

void MainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange) {
        if (isActiveWindow())
            m_session->activate();
        else if (m_store)
            // Whatever the user typed is on disk by the time they look at another window.
            m_store->flush();
    }
    QMainWindow::changeEvent(event);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    if (event->isAccepted())
        emit closed();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        // Left unaccepted, the key goes on to this window's Undo and Redo.
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo))
            return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace lumo
