#include <QClipboard>
#include <QLineEdit>
#include <QTextBrowser>

#include "LumoCalc/dialogs/HelpGuide.h"
#include "LumoCalc/dialogs/HelpWindow.h"
#include "ShellTestSupport.h"

namespace lumo::test {
namespace {

TEST(HelpGuide, EveryExampleAnswersInBothLanguages) {
    for (AppLanguage language : {AppLanguage::japanese, AppLanguage::english}) {
        SCOPED_TRACE(std::string(rawValue(language)));
        L10n::setCurrent(language);
        HelpGuide::Colours colours;
        colours.failure = QColor(0x12, 0x34, 0x56);
        const HelpGuide guide = HelpGuide::build(colours);
        // Examples call functions from other tutorial sheets; evaluated alone they would fail.
        EXPECT_FALSE(guide.html.contains(colours.failure.name())) << guide.html.toStdString();
        EXPECT_GE(guide.examples.size(), 20);
        for (const QString& example : guide.examples) {
            EXPECT_FALSE(example.trimmed().isEmpty());
            EXPECT_FALSE(example.contains(QStringLiteral("//"))) << "notes are prose, not examples";
        }
        EXPECT_TRUE(guide.html.contains(HelpGuide::copyLink(int(guide.examples.size()) - 1)));
    }
    L10n::setCurrent(AppLanguage::english);
}

TEST(HelpGuide, IndentedExamplesKeepTheirIndentation) {
    L10n::setCurrent(AppLanguage::english);
    const HelpGuide guide = HelpGuide::build({});
    const auto withDef =
        std::find_if(guide.examples.begin(), guide.examples.end(),
                     [](const QString& example) { return example.startsWith(QStringLiteral("def area")); });
    ASSERT_NE(withDef, guide.examples.end());
    EXPECT_TRUE(withDef->contains(QStringLiteral("\n    return width × depth")));
}

TEST(HelpGuide, ListsTheKeysOfTheMenuCommands) {
    struct Case {
        AppLanguage language;
        const char* command;
        const char* key;
    };
    const Case cases[] = {
        {AppLanguage::english, "Next Sheet", "Ctrl+Tab"},
        {AppLanguage::english, "Go to Line…", "Ctrl+G"},
        {AppLanguage::japanese, "検索…", "Ctrl+F"},
        {AppLanguage::japanese, "新規シート", "Ctrl+T"},
    };
    for (const Case& c : cases) {
        L10n::setCurrent(c.language);
        const QString html = HelpGuide::build({}).html;
        const QString row = QStringLiteral("<td>%1</td><td style=\"padding-left:24px\"><b>%2</b>")
                                .arg(QString::fromUtf8(c.command).toHtmlEscaped(), QString::fromUtf8(c.key));
        EXPECT_TRUE(html.contains(row)) << c.command;
    }
    L10n::setCurrent(AppLanguage::english);
    EXPECT_FALSE(HelpGuide::build({}).html.contains(QStringLiteral("<td>Clear Sheet</td>")))
        << "a command without a key is left out";
}

class Help : public ShellTest {};

TEST_F(Help, CopyLinksPutTheExampleOnTheClipboard) {
    Application& app = launch();
    activate(app.windows().value(0));
    QTest::keyClick(app.windows().value(0), Qt::Key_F1);
    HelpWindow* help = app.helpWindow();
    ASSERT_NE(help, nullptr);
    ASSERT_FALSE(help->examples().isEmpty());
    const int last = int(help->examples().size()) - 1;
    emit help->browser()->anchorClicked(QUrl(HelpGuide::copyLink(last)));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), help->examples().last());

    // F1 again brings back the same window rather than another.
    activate(app.windows().value(0));
    QTest::keyClick(app.windows().value(0), Qt::Key_F1);
    EXPECT_EQ(app.helpWindow(), help);

    QTest::keyClicks(help->findField(), QStringLiteral("prev"));
    EXPECT_EQ(help->browser()->textCursor().selectedText(), QStringLiteral("prev"));
}

} // namespace
} // namespace lumo::test
