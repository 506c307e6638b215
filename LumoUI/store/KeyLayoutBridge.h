#pragma once

#include <QPointer>

#include <optional>

#include "LumoKit/document/Document.h"

namespace lumo {

class AppSettings;
class NotificationCenter;

/// Keeps the keypad's layouts in settings and the layouts in the document in step.
///
/// The keypad keeps its layouts in settings ("lumo.keyLayout.<kind>" and
/// "lumo.keyLayout.updatedAt") and posts "lumo.keyLayoutChanged". The bridge compares the
/// change times: newer layouts in settings are copied into the document, newer layouts in the
/// document (from another device) are written to settings and announced with the same
/// notification, which then finds both sides already in step.
class KeyLayoutBridge {
public:
    /// Without settings the bridge does nothing; without notifications nothing is announced.
    KeyLayoutBridge(AppSettings* settings, NotificationCenter* notifications);

    struct DatedLayouts {
        KeyLayouts layouts;
        Timestamp updatedAt;
    };

    /// Brings settings in step with the document and returns the layouts the document should
    /// take, or nothing when it already holds the latest. Layouts written without a change
    /// time are dated `now`.
    std::optional<DatedLayouts> reconcile(const LumoDocument& document, Timestamp now);

private:
    QPointer<AppSettings> m_settings;
    QPointer<NotificationCenter> m_notifications;
};

} // namespace lumo
