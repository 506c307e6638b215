#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTextLayout>
#include <QToolButton>

#include <optional>
#include <set>

#include "LumoCalc/app/AppPalette.h"
#include "LumoCalc/dialogs/ConfirmationDialog.h"
#include "LumoCalc/dialogs/TermsDialog.h"
#include "LumoCalc/settings/SettingsWindow.h"
#include "LumoCalc/settings/SyntaxColorsPage.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/settings/ViewStyle.h"
#include "ShellTestSupport.h"

namespace lumo::test {
namespace {

class Settings : public ShellTest {
protected:
    void TearDown() override {
        // Every test starts from the desktop's own palette.
        QApplication::setPalette(QPalette());
        ShellTest::TearDown();
    }

    /// Opens the settings window from the first window's menu shortcut.
    SettingsWindow* openSettings(Application& app) {
        MainWindow* window = app.windows().value(0);
        QTest::keyClick(window, Qt::Key_Comma, Qt::ControlModifier);
        SettingsWindow* settings = app.settingsWindow();
        if (settings) {
            EXPECT_TRUE(QTest::qWaitForWindowExposed(settings));
        }
        return settings;
    }

    /// What the settings file holds under a key, as another run would read it.
    QString stored(const char* key) const {
        QSettings file(settingsFile(), QSettings::IniFormat);
        return file.value(QLatin1String(key)).toString();
    }

    static void showPageOf(SettingsWindow* window, QWidget* control) {
        QTabWidget* pages = window->pages();
        for (int index = 0; index < pages->count(); ++index) {
            if (pages->widget(index)->isAncestorOf(control))
                pages->setCurrentIndex(index);
        }
    }

    /// Presses Down or Up on a combo box until it shows the item stored as `raw`, as someone
    /// choosing with the keyboard would.
    static void chooseWithKeys(QComboBox* combo, int target) {
        combo->setFocus();
        for (int step = 0; step < combo->count() && combo->currentData().toInt() != target; ++step)
            QTest::keyClick(combo,
                            combo->findData(target) > combo->currentIndex() ? Qt::Key_Down : Qt::Key_Up);
    }
};

QColor colorOfRange(QPlainTextEdit* preview, SyntaxKind kind) {
    const QString text = preview->toPlainText();
    for (const SyntaxRange& range : highlightLine(text.toStdString())) {
        if (range.kind != kind)
            continue;
        for (const QTextLayout::FormatRange& format : preview->document()->firstBlock().layout()->formats()) {
            if (format.start == range.offset && format.length == range.length)
                return format.format.foreground().color();
        }
    }
    return {};
}

// Each control reaches its setting; that a setting tells its listeners is AppSettings's rule.
TEST_F(Settings, EachControlWritesItsKey) {
    enum class Edit { choose, type, toggle };
    struct Case {
        const char* control;
        Edit edit;
        int choice; // the enumeration's case, for a combo box
        const char* typed;
        const char* key;
        const char* expected;
    };
    // The first window's settings start as a fresh installation's, with English chosen.
    const Case cases[] = {
        {"appearance", Edit::choose, int(AppearanceSetting::light), "", "lumo.appearance", "light"},
        {"textSize", Edit::choose, int(TextSizeSetting::xlarge), "", "lumo.textSize", "xlarge"},
        {"resultColumnWidth", Edit::type, 0, "300", "lumo.resultColumnWidth", "300"},
        {"maxFractionDigits", Edit::type, 0, "3", "lumo.maxFractionDigits", "3"},
        {"angle", Edit::choose, int(AngleSetting::degrees), "", "lumo.angle", "degrees"},
        {"sheetListStyle", Edit::choose, int(SheetListStyle::sidebar), "", "lumo.sheetListStyle", "sidebar"},
        {"showsNamedValues", Edit::toggle, 0, "", "lumo.showsNamedValues", "false"},
        {"groupsDigits", Edit::toggle, 0, "", "lumo.groupsDigits", "false"},
        {"keypadSize", Edit::choose, int(KeypadSizeSetting::small), "", "lumo.keypadSize", "small"},
        {"keypadSide", Edit::choose, int(KeypadSide::left), "", "lumo.keypadSide", "left"},
        {"language", Edit::choose, int(AppLanguage::japanese), "", "lumo.language", "japanese"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.control);
        Application& app = launch();
        SettingsWindow* window = openSettings(app);
        ASSERT_NE(window, nullptr);
        auto* control = window->findChild<QWidget*>(QLatin1String(c.control));
        ASSERT_NE(control, nullptr);
        showPageOf(window, control);
        switch (c.edit) {
        case Edit::choose:
            chooseWithKeys(qobject_cast<QComboBox*>(control), c.choice);
            break;
        case Edit::type:
            control->setFocus();
            QTest::keyClick(control, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClicks(control, QString::fromLatin1(c.typed));
            QTest::keyClick(control, Qt::Key_Return);
            break;
        case Edit::toggle:
            QTest::mouseClick(control, Qt::LeftButton);
            break;
        }
        EXPECT_EQ(stored(c.key), QString::fromLatin1(c.expected));
        m_app.reset();
    }
}

TEST_F(Settings, AWidthChangedElsewhereShowsWithoutBeingWrittenBack) {
    Application& app = launch();
    SettingsWindow* window = openSettings(app);
    auto* width = window->findChild<QDoubleSpinBox*>(QStringLiteral("resultColumnWidth"));
    QSignalSpy posted(app.notifications(), &NotificationCenter::posted);
    app.settings()->setResultColumnWidth(250);
    EXPECT_EQ(width->value(), 250);
    EXPECT_EQ(posted.size(), 1);
}

TEST_F(Settings, OneWindowForTheWholeApplication) {
    Application& app = launch();
    SettingsWindow* first = openSettings(app);
    MainWindow* second = app.openWindow();
    activate(second);
    QTest::keyClick(second, Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(app.settingsWindow(), first);
    EXPECT_FALSE(first->isModal());
    // The sheet stays editable with the settings open.
    type(second, QStringLiteral("1+1"));
    EXPECT_TRUE(textOf(second).endsWith(QStringLiteral("1+1")));
}

TEST_F(Settings, ColoursAreChosenAndReset) {
    Application& app = launch();
    SettingsWindow* window = openSettings(app);
    SyntaxColorsPage* page = window->colorsPage();
    window->pages()->setCurrentWidget(page);
    const QColor commentDefault = colorOfRange(page->preview(Appearance::dark), SyntaxKind::comment);
    struct Case {
        SyntaxKind kind;
        Appearance appearance;
        QColor color;
        const char* key;
        const char* hex;
    };
    const Case cases[] = {
        {SyntaxKind::unit, Appearance::light, QColor(0x12, 0xab, 0x34), "unit.light", "#12AB34"},
        {SyntaxKind::comment, Appearance::dark, QColor(0, 0, 0x0a), "comment.dark", "#00000A"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        EXPECT_FALSE(page->resetButton(c.kind, c.appearance)->isEnabled()) << "nothing to reset yet";
        QTest::mouseClick(page->swatch(c.kind, c.appearance), Qt::LeftButton);
        QColorDialog* dialog = page->colorDialog();
        ASSERT_NE(dialog, nullptr);
        dialog->setCurrentColor(c.color);
        dialog->accept();
        EXPECT_EQ(app.settings()->syntaxColors().value(QLatin1String(c.key)), QLatin1String(c.hex));
        EXPECT_EQ(page->swatch(c.kind, c.appearance)->text(), QLatin1String(c.hex));
        EXPECT_TRUE(page->resetButton(c.kind, c.appearance)->isEnabled());
        EXPECT_EQ(colorOfRange(page->preview(c.appearance), c.kind), c.color);
    }

    // One reset removes its entry and brings the theme's colour back.
    QTest::mouseClick(page->resetButton(SyntaxKind::unit, Appearance::light), Qt::LeftButton);
    EXPECT_EQ(app.settings()->syntaxColors().keys(), QStringList{QStringLiteral("comment.dark")});
    EXPECT_EQ(page->swatch(SyntaxKind::unit, Appearance::light)->text(), QStringLiteral("#0E8A64"));
    EXPECT_EQ(colorOfRange(page->preview(Appearance::light), SyntaxKind::unit), QColor(0x0E, 0x8A, 0x64));

    // An entry that does not parse shows the default but can still be removed.
    QMap<QString, QString> colors = app.settings()->syntaxColors();
    colors.insert(QStringLiteral("number.light"), QStringLiteral("#12345"));
    app.settings()->setSyntaxColors(colors);
    EXPECT_EQ(page->swatch(SyntaxKind::number, Appearance::light)->text(), QStringLiteral("#1B1A18"));
    EXPECT_TRUE(page->resetButton(SyntaxKind::number, Appearance::light)->isEnabled());

    ASSERT_TRUE(page->resetAllButton()->isEnabled());
    QTest::mouseClick(page->resetAllButton(), Qt::LeftButton);
    EXPECT_TRUE(app.settings()->syntaxColors().isEmpty());
    EXPECT_FALSE(page->resetAllButton()->isEnabled());
    EXPECT_EQ(colorOfRange(page->preview(Appearance::dark), SyntaxKind::comment), commentDefault);
}

TEST_F(Settings, ColourListFollowsTheKindsAndThePreviewShowsEveryOne) {
    for (AppLanguage language : {AppLanguage::english, AppLanguage::japanese}) {
        L10n::setCurrent(language);
        std::set<SyntaxKind> shown;
        for (const SyntaxRange& range : highlightLine(SyntaxColorsPage::previewText().toStdString()))
            shown.insert(range.kind);
        EXPECT_EQ(shown.size(), allSyntaxKinds().size()) << rawValue(language);
    }
    Application& app = launch();
    SettingsWindow* window = openSettings(app);
    window->pages()->setCurrentWidget(window->colorsPage());
    // Rows go down in the order of the kinds, light on the left of dark.
    int lastTop = -1;
    for (SyntaxKind kind : allSyntaxKinds()) {
        QPushButton* light = window->colorsPage()->swatch(kind, Appearance::light);
        QPushButton* dark = window->colorsPage()->swatch(kind, Appearance::dark);
        EXPECT_GT(light->y(), lastTop) << rawValue(kind);
        EXPECT_EQ(light->y(), dark->y());
        EXPECT_LT(light->x(), dark->x());
        lastTop = light->y();
    }
}

TEST_F(Settings, EveryWindowIsRelabelledWhenTheLanguageChanges) {
    Application& app = launch({QStringLiteral("-lumoStarter")});
    MainWindow* window = app.windows().value(0);
    activate(window);
    SettingsWindow* settings = openSettings(app);
    window->action(Command::termsOfUse)->trigger();
    window->action(Command::about)->trigger();
    window->action(Command::clearSheet)->trigger();
    ASSERT_NE(app.confirmation(), nullptr);
    ASSERT_NE(app.termsDialog(), nullptr);
    const auto about = [&app]() -> QMessageBox* {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(widget);
            if (box && box != app.confirmation() && box->isVisible())
                return box;
        }
        return nullptr;
    };
    ASSERT_NE(about(), nullptr);

    struct Label {
        const char* what;
        std::function<QString()> shown;
        const char* japanese;
        const char* english;
    };
    const std::vector<Label> labels{
        {"window title", [window] { return window->windowTitle(); }, "はじめてのシート — Lumo",
         "Getting Started — Lumo"},
        {"settings title", [settings] { return settings->windowTitle(); }, "設定", "Settings"},
        {"settings tab", [settings] { return settings->pages()->tabText(2); }, "文字の色", "Syntax Colours"},
        {"terms", [&app] { return app.termsDialog()->windowTitle(); }, "Lumo の利用規約",
         "Lumo Terms of Use"},
        {"about", [&about] { return about()->windowTitle(); }, "Lumo について", "About Lumo"},
        {"confirmation", [&app] { return app.confirmation()->windowTitle(); }, "このシートを消去しますか？",
         "Clear This Sheet?"},
    };
    for (const Label& label : labels)
        EXPECT_EQ(label.shown(), QString::fromUtf8(label.english)) << label.what;

    // Chosen in the settings window; the untouched starter document switches too.
    auto* language = settings->findChild<QComboBox*>(QStringLiteral("language"));
    settings->pages()->setCurrentIndex(0);
    chooseWithKeys(language, int(AppLanguage::japanese));
    for (const Label& label : labels)
        EXPECT_EQ(label.shown(), QString::fromUtf8(label.japanese)) << label.what;
    EXPECT_EQ(language->currentText(), QStringLiteral("日本語"));
}

TEST_F(Settings, ZoomStepsThroughTheTextSizes) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    activate(window);
    SettingsWindow* settings = openSettings(app);
    auto* size = settings->findChild<QComboBox*>(QStringLiteral("textSize"));
    activate(window);
    CalcTextView* text = window->editor()->textView();
    struct Step {
        Qt::Key key;
        TextSizeSetting expected;
        bool zoomInEnabled;
        bool zoomOutEnabled;
    };
    const Step steps[] = {
        {Qt::Key_Plus, TextSizeSetting::large, true, true},
        {Qt::Key_Plus, TextSizeSetting::xlarge, false, true},
        {Qt::Key_Plus, TextSizeSetting::xlarge, false, true},
        {Qt::Key_Minus, TextSizeSetting::large, true, true},
        {Qt::Key_Minus, TextSizeSetting::standard, true, true},
        {Qt::Key_Minus, TextSizeSetting::small, true, false},
        {Qt::Key_Minus, TextSizeSetting::small, true, false},
        {Qt::Key_0, TextSizeSetting::standard, true, true},
        {Qt::Key_Plus, TextSizeSetting::large, true, true},
        {Qt::Key_0, TextSizeSetting::standard, true, true},
    };
    for (const Step& step : steps) {
        QTest::keyClick(text, step.key, Qt::ControlModifier);
        EXPECT_EQ(app.settings()->textSize(), step.expected);
        EXPECT_EQ(text->font().pointSizeF(), ViewStyle::pointSize(step.expected));
        EXPECT_EQ(size->currentData().toInt(), int(step.expected)) << "the settings window follows";
        EXPECT_EQ(window->action(Command::zoomIn)->isEnabled(), step.zoomInEnabled);
        EXPECT_EQ(window->action(Command::zoomOut)->isEnabled(), step.zoomOutEnabled);
        EXPECT_EQ(window->action(Command::actualSize)->isEnabled(),
                  step.expected != TextSizeSetting::standard);
    }
}

TEST_F(Settings, AppearanceColoursEveryWidgetAndAutoFollowsTheDesktop) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    SettingsWindow* settings = openSettings(app);
    CalcTextView* text = window->editor()->textView();
    const auto paperIsDark = [text] { return text->palette().color(QPalette::Base).lightness() < 128; };
    const auto windowIsDark = [settings] {
        return settings->palette().color(QPalette::Window).lightness() < 128;
    };

    struct Case {
        AppearanceSetting setting;
        // What the desktop switches to while Lumo runs; the offscreen desktop is light.
        std::optional<QPalette> desktop;
        Appearance expected;
    };
    const Case cases[] = {
        {AppearanceSetting::light, std::nullopt, Appearance::light},
        {AppearanceSetting::dark, std::nullopt, Appearance::dark},
        {AppearanceSetting::automatic, std::nullopt, Appearance::light},
        {AppearanceSetting::dark, std::nullopt, Appearance::dark},
        {AppearanceSetting::automatic, appPalette::darkPalette(), Appearance::dark},
        {AppearanceSetting::automatic, appPalette::lightPalette(), Appearance::light},
        {AppearanceSetting::automatic, appPalette::darkPalette(), Appearance::dark},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(rawValue(c.setting).toStdString() + " on a " +
                     (c.desktop && c.desktop->color(QPalette::Window).lightness() < 128 ? "dark" : "light") +
                     " desktop");
        app.settings()->setAppearance(c.setting);
        QCoreApplication::processEvents();
        if (c.desktop && c.setting == AppearanceSetting::automatic)
            QApplication::setPalette(*c.desktop);
        QCoreApplication::processEvents();
        const bool dark = c.expected == Appearance::dark;
        EXPECT_EQ(text->appearance(), c.expected);
        EXPECT_EQ(paperIsDark(), dark);
        EXPECT_EQ(windowIsDark(), dark) << "the settings window and every other widget";
    }
}

// Confirming and cancelling are the shell's erase command; here the button asks over its window.
TEST_F(Settings, EraseAllContentAsksFirst) {
    Application& app = launch();
    SettingsWindow* settings = openSettings(app);
    auto* erase = settings->findChild<QPushButton*>(QStringLiteral("eraseAllContent"));
    ASSERT_NE(erase, nullptr);
    showPageOf(settings, erase);
    QTest::mouseClick(erase, Qt::LeftButton);
    ConfirmationDialog* dialog = app.confirmation();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->parentWidget(), settings);
    QTest::mouseClick(dialog->confirmButton(), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(app.store()->document().sheets.size(), 1u);
}

TEST_F(Settings, SyncFolderIsChosenAndTurnedOff) {
    Application& app = launch();
    SettingsWindow* settings = openSettings(app);
    auto* folder = settings->findChild<QLineEdit*>(QStringLiteral("cloudFolder"));
    auto* stop = settings->findChild<QPushButton*>(QStringLiteral("stopSyncing"));
    auto* choose = settings->findChild<QPushButton*>(QStringLiteral("chooseCloudFolder"));
    showPageOf(settings, choose);
    EXPECT_TRUE(folder->text().isEmpty());
    EXPECT_FALSE(stop->isEnabled());

    QTemporaryDir cloud;
    QTest::mouseClick(choose, Qt::LeftButton);
    QFileDialog* dialog = settings->folderDialog();
    ASSERT_NE(dialog, nullptr);
    dialog->setDirectory(cloud.path());
    dialog->selectFile(cloud.path());
    QMetaObject::invokeMethod(dialog, "accept");
    EXPECT_EQ(stored("lumo.cloudFolder"), QDir::cleanPath(cloud.path()));
    EXPECT_EQ(folder->text(), QDir::toNativeSeparators(QDir::cleanPath(cloud.path())));
    EXPECT_TRUE(stop->isEnabled());

    QTest::mouseClick(stop, Qt::LeftButton);
    EXPECT_TRUE(stored("lumo.cloudFolder").isEmpty());
    EXPECT_TRUE(folder->text().isEmpty());
}

} // namespace
} // namespace lumo::test
