#include "LumoUI/keypad/KeyLayoutStore.h"

#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"

namespace lumo {

KeyLayoutStore::KeyLayoutStore(AppSettings* settings, NotificationCenter* notifications, Clock clock,
                               QObject* parent)
    : QObject(parent), m_settings(settings), m_notifications(notifications),
      m_clock(clock ? std::move(clock) : Clock(&Timestamp::now)) {
    for (KeyKind kind : allKeyKinds())
        m_arrangements.emplace(kind, KeyArrangement(KeyCatalog::groups(kind)));
    reload();
    if (m_notifications)
        m_notifications->observe(notification::keyLayoutChanged, this, [this] { reload(); });
}

const KeyArrangement& KeyLayoutStore::arrangement(KeyKind kind) const {
    return m_arrangements.at(kind);
}

void KeyLayoutStore::reload() {
    const KeyLayouts layouts = m_settings ? m_settings->keyLayouts() : KeyLayouts{};
    for (KeyKind kind : allKeyKinds()) {
        const auto stored = layouts.find(std::string(rawValue(kind)));
        KeyArrangement fresh = stored == layouts.end()
                                   ? KeyArrangement(KeyCatalog::groups(kind))
                                   : KeyArrangement(KeyCatalog::groups(kind), stored->second);
        if (fresh == m_arrangements.at(kind))
            continue;
        m_arrangements.insert_or_assign(kind, std::move(fresh));
        emit arrangementChanged(kind);
    }
}

void KeyLayoutStore::setArrangement(KeyKind kind, const KeyArrangement& arrangement) {
    if (arrangement == m_arrangements.at(kind))
        return;
    m_arrangements.insert_or_assign(kind, arrangement);
    KeyLayouts layouts = m_settings ? m_settings->keyLayouts() : KeyLayouts{};
    layouts[std::string(rawValue(kind))] = arrangement.panels();
    store(layouts);
    emit arrangementChanged(kind);
}

void KeyLayoutStore::reset(KeyKind kind) {
    KeyArrangement defaults(KeyCatalog::groups(kind));
    KeyLayouts layouts = m_settings ? m_settings->keyLayouts() : KeyLayouts{};
    const bool wasStored = layouts.erase(std::string(rawValue(kind))) > 0;
    const bool changed = !(defaults == m_arrangements.at(kind));
    m_arrangements.insert_or_assign(kind, std::move(defaults));
    // The reset travels like any other arrangement: a newer layout without this kind.
    if (wasStored)
        store(layouts);
    if (changed)
        emit arrangementChanged(kind);
}

void KeyLayoutStore::store(const KeyLayouts& layouts) {
    if (!m_settings)
        return;
    m_settings->setKeyLayouts(layouts, m_clock());
    if (m_notifications)
        m_notifications->post(notification::keyLayoutChanged);
}

} // namespace lumo
