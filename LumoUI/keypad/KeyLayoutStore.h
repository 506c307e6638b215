#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <map>

#include "LumoKit/document/Document.h"
#include "LumoKit/document/Timestamp.h"
#include "LumoUI/keypad/KeyArrangement.h"
#include "LumoUI/keypad/KeyCatalog.h"

namespace lumo {

class AppSettings;
class NotificationCenter;

/// The user's arrangement of the function and unit tabs, kept in settings as
/// "lumo.keyLayout.<kind>" with the change time "lumo.keyLayout.updatedAt".
///
/// Every change is written at once and announced with "lumo.keyLayoutChanged", which the
/// document store answers by copying the layouts into the document, so they travel with the
/// synced copy. When a merge brings newer layouts, the store writes them to settings and posts
/// the same notification; this object then reads them again and tells the keypads.
class KeyLayoutStore : public QObject {
    Q_OBJECT

public:
    using Clock = std::function<Timestamp()>;

    /// `clock` dates the changes; the system clock when empty.
    KeyLayoutStore(AppSettings* settings, NotificationCenter* notifications, Clock clock = {},
                   QObject* parent = nullptr);

    const KeyArrangement& arrangement(KeyKind kind) const;
    /// Stores a changed arrangement of one tab; nothing happens when it is the same.
    void setArrangement(KeyKind kind, const KeyArrangement& arrangement);
    /// Puts a tab back in its default arrangement.
    void reset(KeyKind kind);

signals:
    /// A tab's arrangement changed, here or on another device.
    void arrangementChanged(lumo::KeyKind kind);

private:
    void reload();
    void store(const KeyLayouts& layouts);

    QPointer<AppSettings> m_settings;
    QPointer<NotificationCenter> m_notifications;
    Clock m_clock;
    std::map<KeyKind, KeyArrangement> m_arrangements;
};

} // namespace lumo
