#include "LumoUI/store/KeyLayoutBridge.h"

#include <limits>

#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"

namespace lumo {

namespace {

// A missing time counts as the distant past.
double secondsOrDistantPast(const std::optional<Timestamp>& time) {
    return time ? time->seconds : -std::numeric_limits<double>::infinity();
}

} // namespace

KeyLayoutBridge::KeyLayoutBridge(AppSettings* settings, NotificationCenter* notifications)
    : m_settings(settings), m_notifications(notifications) {}

std::optional<KeyLayoutBridge::DatedLayouts> KeyLayoutBridge::reconcile(const LumoDocument& document,
                                                                        Timestamp now) {
    if (!m_settings)
        return std::nullopt;
    const KeyLayouts stored = m_settings->keyLayouts();
    const std::optional<Timestamp> storedAt = m_settings->keyLayoutsUpdatedAt();
    const double storedTime = secondsOrDistantPast(storedAt);
    const double documentTime = secondsOrDistantPast(document.keyLayoutsUpdatedAt);
    if (documentTime > storedTime) {
        // Newer layouts came with the document: the keypad learns of them like of its own.
        m_settings->setKeyLayouts(document.keyLayouts, document.keyLayoutsUpdatedAt);
        if (m_notifications)
            m_notifications->post(notification::keyLayoutChanged);
        return std::nullopt;
    }
    if (storedTime == documentTime && stored == document.keyLayouts)
        return std::nullopt;
    const Timestamp changedAt = storedTime > documentTime ? *storedAt : now;
    if (!storedAt || storedTime == documentTime)
        m_settings->setKeyLayouts(stored, changedAt);
    return DatedLayouts{stored, changedAt};
}

} // namespace lumo
