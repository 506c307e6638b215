#include "LumoUI/keypad/KeyCatalog.h"

#include <algorithm>

namespace lumo {

const std::vector<KeyKind>& allKeyKinds() {
    static const std::vector<KeyKind> kinds{KeyKind::functions, KeyKind::units};
    return kinds;
}

std::string_view rawValue(KeyKind kind) {
    return kind == KeyKind::functions ? "functions" : "units";
}

std::optional<KeyKind> keyKindFromRaw(std::string_view raw) {
    for (KeyKind kind : allKeyKinds()) {
        if (rawValue(kind) == raw)
            return kind;
    }
    return std::nullopt;
}

namespace {

KeyDefinition inserting(std::string id, std::string label, KeyText name, KeyStyle style,
                        InsertSnippet snippet, QKeySequence shortcut = {}) {
    KeyDefinition key;
    key.id = std::move(id);
    key.label = std::move(label);
    key.name = std::move(name);
    key.description = key.name;
    key.snippet = std::move(snippet);
    key.style = style;
    key.shortcut = std::move(shortcut);
    return key;
}

// A key whose face, snippet and keyboard key are the same text.
KeyDefinition typing(const std::string& text, KeyText name, KeyStyle style) {
    return inserting(text, text, std::move(name), style, snippetOf(text),
                     QKeySequence(QString::fromStdString(text)));
}

KeyDefinition acting(std::string id, std::string label, KeyText name, KeyAction action,
                     QKeySequence shortcut) {
    KeyDefinition key;
    key.id = std::move(id);
    key.label = std::move(label);
    key.name = std::move(name);
    key.description = key.name;
    key.action = action;
    key.style = KeyStyle::control;
    key.shortcut = std::move(shortcut);
    return key;
}

KeyDefinition moving(CursorMove move, std::string label, KeyText name, QKeySequence shortcut) {
    KeyDefinition key = acting(std::string(rawValue(move)), std::move(label), std::move(name),
                               KeyAction::moveCursor, shortcut);
    key.move = move;
    return key;
}

std::vector<KeyDefinition> buildNumberKeys() {
    std::vector<KeyDefinition> keys;
    for (char digit = '0'; digit <= '9'; ++digit) {
        const std::string text(1, digit);
        keys.push_back(typing(text, {"数字 " + text, "Digit " + text}, KeyStyle::digit));
    }
    keys.push_back(inserting("00", "00", {"ゼロ 2 つ", "Double zero"}, KeyStyle::digit, snippetOf("00")));
    keys.push_back(typing(".", {"小数点", "Decimal point"}, KeyStyle::digit));
    keys.push_back(typing("+", {"足す", "Add"}, KeyStyle::operation));
    // The sign's face is the minus sign; it types the hyphen-minus that the sign key toggles.
    keys.push_back(inserting("-", "−", {"引く", "Subtract"}, KeyStyle::operation, snippetOf("-"),
                             QKeySequence(QStringLiteral("-"))));
    // The editor spaces "×" by what precedes the caret.
    keys.push_back(inserting("×", "×", {"掛ける", "Multiply"}, KeyStyle::operation, snippetOf("×"),
                             QKeySequence(QStringLiteral("*"))));
    keys.push_back(inserting("÷", "÷", {"割る", "Divide"}, KeyStyle::operation, snippetOf("÷"),
                             QKeySequence(QStringLiteral("/"))));
    keys.push_back(typing("(", {"始めのかっこ", "Opening parenthesis"}, KeyStyle::operation));
    keys.push_back(typing(")", {"終わりのかっこ", "Closing parenthesis"}, KeyStyle::operation));
    keys.push_back(typing("%", {"パーセント", "Percent"}, KeyStyle::operation));
    keys.push_back(typing("^", {"べき乗", "Power"}, KeyStyle::operation));
    keys.push_back(inserting("=", "=", {"名前を付ける", "Name a value"}, KeyStyle::operation,
                             snippetOf(" = "), QKeySequence(QStringLiteral("="))));
    keys.push_back(acting("sign", "±", {"符号を変える", "Change sign"}, KeyAction::toggleSign, {}));
    keys.push_back(acting("delete", "⌫", {"1 文字消す", "Delete"}, KeyAction::deleteBackward,
                          QKeySequence(Qt::Key_Backspace)));
    keys.push_back(inserting("return", "⏎", {"改行", "New line"}, KeyStyle::control, snippetOf("\n"),
                             QKeySequence(Qt::Key_Return)));
    keys.push_back(moving(CursorMove::up, "↑", {"上の行へ", "Up"}, QKeySequence(Qt::Key_Up)));
    keys.push_back(moving(CursorMove::down, "↓", {"下の行へ", "Down"}, QKeySequence(Qt::Key_Down)));
    keys.push_back(moving(CursorMove::left, "←", {"左へ", "Left"}, QKeySequence(Qt::Key_Left)));
    keys.push_back(moving(CursorMove::right, "→", {"右へ", "Right"}, QKeySequence(Qt::Key_Right)));
    keys.push_back(
        moving(CursorMove::lineStart, "⇤", {"行の先頭へ", "Start of line"}, QKeySequence(Qt::Key_Home)));
    keys.push_back(
        moving(CursorMove::lineEnd, "⇥", {"行の末尾へ", "End of line"}, QKeySequence(Qt::Key_End)));
    keys.push_back(
        acting("undo", "↶", {"取り消す", "Undo"}, KeyAction::undo, QKeySequence(QKeySequence::Undo)));
    keys.push_back(
        acting("redo", "↷", {"やり直す", "Redo"}, KeyAction::redo, QKeySequence(QKeySequence::Redo)));
    return keys;
}

} // namespace

namespace KeyCatalog {

const std::vector<KeyDefinition>& numberKeys() {
    static const std::vector<KeyDefinition> keys = buildNumberKeys();
    return keys;
}

const std::vector<KeyPlace>& numberPad() {
    // Editing keys on top, the digits in the calculator's order with the operators beside
    // them, and the cursor keys with return along the bottom.
    static const std::vector<KeyPlace> places = [] {
        const std::vector<std::vector<std::string>> rows{
            {"undo", "redo", "(", ")", "delete"}, {"7", "8", "9", "÷", "%"},  {"4", "5", "6", "×", "^"},
            {"1", "2", "3", "-", "sign"},         {"0", "00", ".", "+", "="},
        };
        std::vector<KeyPlace> out;
        for (int row = 0; row < int(rows.size()); ++row) {
            for (int column = 0; column < int(rows[row].size()); ++column)
                out.push_back({rows[row][column], row, column * 2});
        }
        const int last = int(rows.size());
        int column = 0;
        for (const char* id : {"lineStart", "left", "up", "down", "right", "lineEnd"})
            out.push_back({id, last, column++, 1, 1});
        out.push_back({"return", last, column, 1, 10 - column});
        return out;
    }();
    return places;
}

const KeyDefinition* numberKey(std::string_view id) {
    const auto& keys = numberKeys();
    const auto found =
        std::find_if(keys.begin(), keys.end(), [&](const KeyDefinition& key) { return key.id == id; });
    return found == keys.end() ? nullptr : &*found;
}

const std::vector<KeyGroup>& groups(KeyKind kind) {
    return kind == KeyKind::functions ? functionGroups() : unitGroups();
}

const KeyGroup* group(KeyKind kind, std::string_view groupID) {
    const auto& all = groups(kind);
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const KeyGroup& g) { return g.id == groupID; });
    return found == all.end() ? nullptr : &*found;
}

const KeyDefinition& conversionKey() {
    static const KeyDefinition key = [] {
        KeyDefinition k =
            inserting("in", "in", {"単位を変換する（5 km in m）", "Convert to a unit (5 km in m)"},
                      KeyStyle::operation, snippetOf("in "));
        return k;
    }();
    return key;
}

KeyDefinition namedValueKey(const std::string& name, const std::string& answer) {
    InsertSnippet snippet = snippetOf(name);
    snippet.isNamedValue = true;
    KeyDefinition key = inserting(name, name, {name + " = " + answer, name + " = " + answer},
                                  KeyStyle::namedValue, std::move(snippet));
    return key;
}

} // namespace KeyCatalog

} // namespace lumo
