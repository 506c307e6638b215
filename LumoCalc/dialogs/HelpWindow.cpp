#include "LumoCalc/dialogs/HelpWindow.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

#include "LumoCalc/dialogs/HelpGuide.h"
#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/settings/NotificationCenter.h"

namespace lumo {

HelpWindow::HelpWindow(NotificationCenter* notifications, QWidget* parent) : QWidget(parent, Qt::Window) {
    setObjectName(QStringLiteral("helpWindow"));
    resize(720, 760);

    m_find = new QLineEdit(this);
    m_find->setClearButtonEnabled(true);
    m_status = new QLabel(this);
    m_browser = new QTextBrowser(this);
    m_browser->setOpenLinks(false);
    m_browser->document()->setDocumentMargin(16);

    auto* top = new QHBoxLayout;
    top->addWidget(m_find, 1);
    top->addWidget(m_status);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->addLayout(top);
    layout->addWidget(m_browser, 1);

    connect(m_browser, &QTextBrowser::anchorClicked, this, &HelpWindow::openLink);
    connect(m_find, &QLineEdit::textEdited, this, [this] { findNext(true); });
    connect(m_find, &QLineEdit::returnPressed, this, [this] { findNext(false); });

    auto* focusFind = new QAction(this);
    focusFind->setShortcut(QKeySequence::Find);
    connect(focusFind, &QAction::triggered, this, [this] {
        m_find->setFocus();
        m_find->selectAll();
    });
    addAction(focusFind);
    auto* close = new QAction(this);
    close->setShortcuts({QKeySequence::Close, QKeySequence(Qt::Key_Escape)});
    connect(close, &QAction::triggered, this, &QWidget::close);
    addAction(close);

    if (notifications)
        notifications->observe(notification::languageChanged, this, [this] { rebuild(); });
    rebuild();
}

void HelpWindow::changeEvent(QEvent* event) {
    // A switch between light and dark changes the colours the guide is written in.
    if (event->type() == QEvent::PaletteChange && m_browser)
        rebuild();
    QWidget::changeEvent(event);
}

void HelpWindow::rebuild() {
    setWindowTitle(pickText("Lumo ヘルプ", "Lumo Help"));
    m_find->setPlaceholderText(pickText("ヘルプ内を検索", "Search Help"));
    m_status->clear();

    const QPalette& colours = palette();
    const bool dark = colours.color(QPalette::Base).lightness() < 128;
    HelpGuide::Colours guideColours;
    guideColours.text = colours.color(QPalette::Text);
    guideColours.exampleBackground = dark ? QColor(0x2a, 0x2d, 0x33) : QColor(0xf1, 0xf3, 0xf6);
    guideColours.answer = dark ? QColor(0x6c, 0xb6, 0xff) : QColor(0x1a, 0x5f, 0xb4);
    guideColours.failure = dark ? QColor(0xff, 0x7b, 0x72) : QColor(0xb4, 0x23, 0x18);
    guideColours.note = colours.color(QPalette::PlaceholderText);

    const int scroll = m_browser->verticalScrollBar()->value();
    HelpGuide guide = HelpGuide::build(guideColours);
    m_examples = std::move(guide.examples);
    m_browser->setHtml(guide.html);
    m_browser->verticalScrollBar()->setValue(scroll);
}

void HelpWindow::openLink(const QUrl& link) {
    if (link.scheme() != QLatin1String("copy"))
        return;
    bool ok = false;
    const int index = link.path().toInt(&ok);
    if (!ok || index < 0 || index >= m_examples.size())
        return;
    QGuiApplication::clipboard()->setText(m_examples[index]);
    m_status->setText(pickText("コピーしました", "Copied"));
}

void HelpWindow::findNext(bool fromStart) {
    const QString text = m_find->text();
    if (text.isEmpty()) {
        m_status->clear();
        return;
    }
    if (fromStart)
        m_browser->moveCursor(QTextCursor::Start);
    bool found = m_browser->find(text);
    if (!found && !fromStart) {
        // Wrap around to the top once.
        m_browser->moveCursor(QTextCursor::Start);
        found = m_browser->find(text);
    }
    m_status->setText(found ? QString() : pickText("見つかりません", "Not found"));
}

} // namespace lumo
