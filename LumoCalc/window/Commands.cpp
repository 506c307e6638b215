#include "LumoCalc/window/Commands.h"

#include <algorithm>

namespace lumo {

const std::vector<CommandDefinition>& allCommands() {
    using Key = QKeySequence;
    static const std::vector<CommandDefinition> commands{
        {Command::newSheet, {"新規シート", "New Sheet"}, Key::AddTab, "Ctrl+T"},
        {Command::newWindow, {"新規ウインドウ", "New Window"}, Key::New, "Ctrl+N"},
        {Command::closeWindow, {"ウインドウを閉じる", "Close Window"}, Key::Close, "Ctrl+W"},
        {Command::exportSheet, {"書き出す…", "Export…"}, Key::UnknownKey, "Ctrl+E"},
        {Command::print, {"プリント…", "Print…"}, Key::Print, "Ctrl+P"},
        {Command::settings, {"設定…", "Settings…"}, Key::Preferences, "Ctrl+,"},
        {Command::eraseAllContent, {"全ての内容を消去…", "Erase All Content…"}},
        {Command::quit, {"終了", "Quit"}, Key::Quit, "Ctrl+Q"},
        {Command::undo, {"取り消す", "Undo"}, Key::Undo, "Ctrl+Z"},
        {Command::redo, {"やり直す", "Redo"}, Key::Redo, "Ctrl+Shift+Z"},
        {Command::cut, {"切り取り", "Cut"}, Key::Cut, "Ctrl+X"},
        {Command::copy, {"コピー", "Copy"}, Key::Copy, "Ctrl+C"},
        {Command::paste, {"貼り付け", "Paste"}, Key::Paste, "Ctrl+V"},
        {Command::selectAll, {"すべてを選択", "Select All"}, Key::SelectAll, "Ctrl+A"},
        {Command::copyAnswer, {"答えをコピー", "Copy Answer"}, Key::UnknownKey, "Ctrl+Shift+C"},
        {Command::copySheetWithAnswers, {"答えと一緒にシートをコピー", "Copy Sheet with Answers"}},
        {Command::find, {"検索…", "Find…"}, Key::Find, "Ctrl+F"},
        {Command::replace, {"置換…", "Replace…"}, Key::UnknownKey, "Ctrl+H"},
        {Command::findNext, {"次を検索", "Find Next"}, Key::UnknownKey, "F3"},
        {Command::findPrevious, {"前を検索", "Find Previous"}, Key::UnknownKey, "Shift+F3"},
        {Command::goToLine, {"行へ移動…", "Go to Line…"}, Key::UnknownKey, "Ctrl+G"},
        {Command::toggleComment, {"コメントの切り替え", "Toggle Comment"}, Key::UnknownKey, "Ctrl+/"},
        {Command::clearSheet, {"シートを消去", "Clear Sheet"}},
        {Command::nextSheet, {"次のシート", "Next Sheet"}, Key::NextChild, "Ctrl+Tab"},
        {Command::previousSheet, {"前のシート", "Previous Sheet"}, Key::PreviousChild, "Ctrl+Shift+Tab"},
        {Command::zoomIn, {"拡大", "Zoom In"}, Key::ZoomIn, "Ctrl++"},
        {Command::zoomOut, {"縮小", "Zoom Out"}, Key::ZoomOut, "Ctrl+-"},
        {Command::actualSize, {"標準のサイズ", "Actual Size"}, Key::UnknownKey, "Ctrl+0"},
        {Command::showPlots, {"グラフを表示", "Show Plots"}, Key::UnknownKey, nullptr, true},
        {Command::showKeypad, {"キーパッドを表示", "Show Keypad"}, Key::UnknownKey, nullptr, true},
        {Command::showNamedValues,
         {"名前付きの値を表示", "Show Named Values"},
         Key::UnknownKey,
         nullptr,
         true},
        {Command::help, {"Lumo ヘルプ", "Lumo Help"}, Key::HelpContents, "F1"},
        {Command::termsOfUse, {"利用規約", "Terms of Use"}},
        {Command::about, {"Lumo について", "About Lumo"}},
    };
    return commands;
}

const CommandDefinition& commandDefinition(Command command) {
    const auto& commands = allCommands();
    return *std::find_if(commands.begin(), commands.end(), [command](const CommandDefinition& definition) {
        return definition.command == command;
    });
}

const std::vector<MenuDefinition>& menuBarLayout() {
    using C = Command;
    static const std::vector<MenuDefinition> layout{
        {{"ファイル(&F)", "&File"},
         {C::newSheet, C::newWindow, std::nullopt, C::exportSheet, C::print, std::nullopt, C::closeWindow,
          std::nullopt, C::settings, C::eraseAllContent, std::nullopt, C::quit}},
        {{"編集(&E)", "&Edit"},
         {C::undo, C::redo, std::nullopt, C::cut, C::copy, C::paste, C::selectAll, std::nullopt,
          C::copyAnswer, C::copySheetWithAnswers, std::nullopt, C::find, C::replace, C::findNext,
          C::findPrevious, C::goToLine, std::nullopt, C::toggleComment, C::clearSheet}},
        {{"表示(&V)", "&View"},
         {C::nextSheet, C::previousSheet, std::nullopt, C::zoomIn, C::zoomOut, C::actualSize, std::nullopt,
          C::showPlots, C::showKeypad, C::showNamedValues}},
        {{"ヘルプ(&H)", "&Help"}, {C::help, std::nullopt, C::termsOfUse, C::about}},
    };
    return layout;
}

QList<QKeySequence> shortcutsFor(const CommandDefinition& definition) {
    QList<QKeySequence> keys;
    if (definition.standardKey != QKeySequence::UnknownKey)
        keys = QKeySequence::keyBindings(definition.standardKey);
    // The portable key leads, so that menus and help show the same key on every platform and
    // never a spelling such as Ctrl+Shift+Backtab; the platform's own bindings still work.
    if (definition.portableKey) {
        const QKeySequence portable(QString::fromLatin1(definition.portableKey));
        keys.removeAll(portable);
        keys.prepend(portable);
    }
    return keys;
}

} // namespace lumo
