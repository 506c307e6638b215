#pragma once

#include <QKeySequence>
#include <QString>
#include <QVariant>

#include <string>
#include <vector>

#include "LumoKit/editing/LineEditor.h"

namespace lumo {

/// A text of the keypad in both languages, the Japanese one first.
struct KeyText {
    std::string japanese;
    std::string english;

    /// The text in the language in force now.
    QString text() const;
    bool operator==(const KeyText&) const = default;
};

/// What a key asks of the editor or the document store when it is pressed.
enum class KeyAction { insert, deleteBackward, toggleSign, moveCursor, undo, redo };

/// The colour family of a key's face.
enum class KeyStyle { digit, operation, control, function, unit, namedValue };

/// One key of the keypad. Keys know nothing of the editor: pressing one posts a "lumo."
/// notification (see notificationFor()).
struct KeyDefinition {
    /// Kept in the stored layouts, so it never changes: "7", "sqrt", "mm".
    std::string id;
    /// What the key face shows.
    std::string label;
    /// What the key is called, in tooltips and for accessibility.
    KeyText name;
    /// The one line a catalog shows beside the key.
    KeyText description;
    KeyAction action = KeyAction::insert;
    /// The text to insert and where the caret lands in it (for `insert`).
    InsertSnippet snippet;
    /// For `moveCursor`.
    CursorMove move = CursorMove::right;
    KeyStyle style = KeyStyle::digit;
    /// The keyboard's way of doing the same, when there is one.
    QKeySequence shortcut;

    /// The name (the description when the name is just the face), with the shortcut in
    /// brackets when there is one.
    QString toolTip() const;
};

/// A notification a key posts: its name and payload.
struct KeyNotification {
    QString name;
    QVariant payload;
};

/// The payload of "lumo.insertSnippet": a map with "text", "caretBack" and "isNamedValue".
QVariant snippetPayload(const InsertSnippet& snippet);
KeyNotification notificationFor(const KeyDefinition& key);

/// A snippet whose caret ends `caretBack` characters before its end.
InsertSnippet snippetOf(std::string text, std::int64_t caretBack = 0);

/// A group of keys that share a section of a tab and a catalog.
struct KeyGroup {
    /// Kept in the stored layouts: "trigonometry", "length".
    std::string id;
    KeyText title;
    /// Every key of the group in its default order.
    std::vector<KeyDefinition> keys;
    /// The keys that start in the catalog rather than on the tab.
    std::vector<std::string> hiddenByDefault;

    const KeyDefinition* key(const std::string& keyID) const;
};

} // namespace lumo
