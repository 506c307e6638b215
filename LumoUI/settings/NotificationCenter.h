#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>

namespace lumo {

/// The names of the process's notifications. They are part of the product's interface:
/// keypads, menus and views post and observe them by these exact strings.
namespace notification {
inline constexpr auto languageChanged = "lumo.languageChanged";
inline constexpr auto keypadSizeChanged = "lumo.keypadSizeChanged";
inline constexpr auto resultWidthChanged = "lumo.resultWidthChanged";
inline constexpr auto syntaxColorsChanged = "lumo.syntaxColorsChanged";
inline constexpr auto keyLayoutChanged = "lumo.keyLayoutChanged";
inline constexpr auto insertSnippet = "lumo.insertSnippet";
inline constexpr auto deleteBackward = "lumo.deleteBackward";
inline constexpr auto toggleSign = "lumo.toggleSign";
inline constexpr auto moveCursor = "lumo.moveCursor";
inline constexpr auto setCaret = "lumo.setCaret";
inline constexpr auto undo = "lumo.undo";
inline constexpr auto redo = "lumo.redo";
inline constexpr auto clearSheet = "lumo.clearSheet";
} // namespace notification

/// Posts named notifications to whoever observes them. The application creates one and hands
/// it to the objects that post or observe; there is no global instance.
///
/// Delivery is synchronous on the posting thread, in the order observers were added.
class NotificationCenter : public QObject {
    Q_OBJECT

public:
    using Callback = std::function<void()>;
    using PayloadCallback = std::function<void(const QVariant& payload)>;

    explicit NotificationCenter(QObject* parent = nullptr);

    /// Posts `name`; `payload` is empty unless the notification carries something (a snippet's
    /// text, a caret position).
    void post(const QString& name, const QVariant& payload = {});

    /// Calls `callback` for every post of `name` until the returned connection is removed or
    /// `receiver` is destroyed.
    QMetaObject::Connection observe(const QString& name, QObject* receiver, Callback callback);
    QMetaObject::Connection observe(const QString& name, QObject* receiver, PayloadCallback callback);

    /// Stops an observation made by observe().
    static void remove(const QMetaObject::Connection& connection);

signals:
    void posted(const QString& name, const QVariant& payload);
};

} // namespace lumo
