#include "LumoUI/keypad/KeyDefinition.h"

#include <QVariantMap>

#include <algorithm>

#include "LumoKit/base/Language.h"
#include "LumoUI/settings/NotificationCenter.h"

namespace lumo {

QString KeyText::text() const {
    return QString::fromStdString(L10n::pick(japanese, english));
}

QString KeyDefinition::toolTip() const {
    // A name that only repeats the face (a unit's symbol) says less than the description.
    const bool nameIsFace = name.japanese == label && name.english == label;
    const QString title = nameIsFace ? description.text() : name.text();
    if (shortcut.isEmpty())
        return title;
    return QStringLiteral("%1 (%2)").arg(title, shortcut.toString(QKeySequence::NativeText));
}

QVariant snippetPayload(const InsertSnippet& snippet) {
    return QVariantMap{
        {QStringLiteral("text"), QString::fromStdString(snippet.text)},
        {QStringLiteral("caretBack"), qlonglong(snippet.caretBack)},
        {QStringLiteral("isNamedValue"), snippet.isNamedValue},
    };
}

KeyNotification notificationFor(const KeyDefinition& key) {
    switch (key.action) {
    case KeyAction::insert:
        return {QString::fromLatin1(notification::insertSnippet), snippetPayload(key.snippet)};
    case KeyAction::deleteBackward:
        return {QString::fromLatin1(notification::deleteBackward), {}};
    case KeyAction::toggleSign:
        return {QString::fromLatin1(notification::toggleSign), {}};
    case KeyAction::moveCursor:
        return {QString::fromLatin1(notification::moveCursor), QString::fromUtf8(rawValue(key.move))};
    case KeyAction::undo:
        return {QString::fromLatin1(notification::undo), {}};
    case KeyAction::redo:
        return {QString::fromLatin1(notification::redo), {}};
    }
    return {};
}

InsertSnippet snippetOf(std::string text, std::int64_t caretBack) {
    InsertSnippet snippet;
    snippet.text = std::move(text);
    snippet.caretBack = caretBack;
    return snippet;
}

const KeyDefinition* KeyGroup::key(const std::string& keyID) const {
    const auto found =
        std::find_if(keys.begin(), keys.end(), [&](const KeyDefinition& k) { return k.id == keyID; });
    return found == keys.end() ? nullptr : &*found;
}

} // namespace lumo
