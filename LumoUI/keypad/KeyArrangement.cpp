#include "LumoUI/keypad/KeyArrangement.h"

#include <algorithm>
#include <set>

namespace lumo {

namespace {

bool contains(const std::vector<std::string>& list, const std::string& id) {
    return std::find(list.begin(), list.end(), id) != list.end();
}

// Puts `id` into a stored panel so that it becomes the `index`-th of the keys this version
// knows, leaving unknown identifiers where they are.
void insertAmongKnown(std::vector<std::string>& panel, const KeyGroup& group, const std::string& id,
                      int index) {
    int seen = 0;
    std::size_t lastKnownEnd = 0;
    for (std::size_t at = 0; at < panel.size(); ++at) {
        if (!group.key(panel[at]))
            continue;
        if (seen == index) {
            panel.insert(panel.begin() + std::ptrdiff_t(at), id);
            return;
        }
        ++seen;
        lastKnownEnd = at + 1;
    }
    panel.insert(panel.begin() + std::ptrdiff_t(lastKnownEnd), id);
}

} // namespace

KeyArrangement::KeyArrangement(const std::vector<KeyGroup>& groups) : m_groups(&groups) {
    for (const KeyGroup& group : groups) {
        auto& shown = m_panels[group.id];
        auto& hidden = m_panels[catalogPanel(group.id)];
        for (const KeyDefinition& key : group.keys)
            (contains(group.hiddenByDefault, key.id) ? hidden : shown).push_back(key.id);
    }
}

KeyArrangement::KeyArrangement(const std::vector<KeyGroup>& groups, const Panels& stored)
    : m_groups(&groups), m_panels(stored) {
    // A key listed twice (by hand, or by two versions) keeps its first place, the tab first.
    for (const KeyGroup& group : groups) {
        std::set<std::string> seen;
        for (const std::string& panel : {group.id, catalogPanel(group.id)}) {
            auto found = m_panels.find(panel);
            if (found == m_panels.end())
                continue;
            std::erase_if(found->second,
                          [&](const std::string& id) { return group.key(id) && !seen.insert(id).second; });
        }
    }
    placeMissingKeys();
}

void KeyArrangement::placeMissingKeys() {
    for (const KeyGroup& group : *m_groups) {
        auto& shown = m_panels[group.id];
        auto& hidden = m_panels[catalogPanel(group.id)];
        for (std::size_t index = 0; index < group.keys.size(); ++index) {
            const std::string& id = group.keys[index].id;
            if (contains(shown, id) || contains(hidden, id))
                continue;
            if (contains(group.hiddenByDefault, id)) {
                hidden.push_back(id);
                continue;
            }
            // Right after the nearest key that comes before it by default and is on the tab.
            auto place = shown.begin();
            for (std::size_t before = index; before-- > 0;) {
                const auto found = std::find(shown.begin(), shown.end(), group.keys[before].id);
                if (found != shown.end()) {
                    place = found + 1;
                    break;
                }
            }
            shown.insert(place, id);
        }
    }
}

const KeyGroup* KeyArrangement::group(const std::string& groupID) const {
    const auto found =
        std::find_if(m_groups->begin(), m_groups->end(), [&](const KeyGroup& g) { return g.id == groupID; });
    return found == m_groups->end() ? nullptr : &*found;
}

std::vector<const KeyDefinition*> KeyArrangement::known(const KeyGroup& group,
                                                        const std::string& panel) const {
    std::vector<const KeyDefinition*> keys;
    const auto found = m_panels.find(panel);
    if (found == m_panels.end())
        return keys;
    for (const std::string& id : found->second) {
        if (const KeyDefinition* key = group.key(id))
            keys.push_back(key);
    }
    return keys;
}

std::vector<const KeyDefinition*> KeyArrangement::shownKeys(const std::string& groupID) const {
    const KeyGroup* g = group(groupID);
    return g ? known(*g, groupID) : std::vector<const KeyDefinition*>{};
}

std::vector<const KeyDefinition*> KeyArrangement::hiddenKeys(const std::string& groupID) const {
    const KeyGroup* g = group(groupID);
    return g ? known(*g, catalogPanel(groupID)) : std::vector<const KeyDefinition*>{};
}

bool KeyArrangement::isShown(const std::string& groupID, const std::string& keyID) const {
    const auto found = m_panels.find(groupID);
    return group(groupID) && found != m_panels.end() && contains(found->second, keyID);
}

bool KeyArrangement::move(const std::string& groupID, const std::string& keyID, int toIndex) {
    const KeyGroup* g = group(groupID);
    if (!g || !g->key(keyID) || !isShown(groupID, keyID))
        return false;
    const auto shown = shownKeys(groupID);
    const int from =
        int(std::find_if(shown.begin(), shown.end(), [&](auto* key) { return key->id == keyID; }) -
            shown.begin());
    const int to = std::clamp(toIndex, 0, int(shown.size()) - 1);
    if (from == to)
        return false;
    auto& panel = m_panels[groupID];
    std::erase(panel, keyID);
    insertAmongKnown(panel, *g, keyID, to);
    return true;
}

bool KeyArrangement::show(const std::string& groupID, const std::string& keyID, std::optional<int> atIndex) {
    const KeyGroup* g = group(groupID);
    auto& hidden = m_panels[catalogPanel(groupID)];
    if (!g || !g->key(keyID) || !contains(hidden, keyID))
        return false;
    std::erase(hidden, keyID);
    const int count = int(shownKeys(groupID).size());
    insertAmongKnown(m_panels[groupID], *g, keyID, std::clamp(atIndex.value_or(count), 0, count));
    return true;
}

bool KeyArrangement::hide(const std::string& groupID, const std::string& keyID) {
    const KeyGroup* g = group(groupID);
    if (!g || !g->key(keyID) || !isShown(groupID, keyID))
        return false;
    std::erase(m_panels[groupID], keyID);
    m_panels[catalogPanel(groupID)].push_back(keyID);
    return true;
}

bool KeyArrangement::isDefault() const {
    return m_panels == KeyArrangement(*m_groups).m_panels;
}

} // namespace lumo
