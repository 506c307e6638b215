#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "LumoUI/keypad/KeyDefinition.h"

namespace lumo {

/// How the user has arranged one tab: for each group, the keys shown on the tab in order and
/// the keys kept in the group's catalog only.
///
/// It is stored as panels (panel name → key identifiers): "<group>" lists the shown keys and
/// "<group>.catalog" the hidden ones. Identifiers and panels that this version does not know
/// (written by a newer or older one) are kept where they are but never shown; a key that no
/// panel mentions appears at its default place.
class KeyArrangement {
public:
    using Panels = std::map<std::string, std::vector<std::string>>;

    /// The default arrangement of `groups`, which must outlive the arrangement.
    explicit KeyArrangement(const std::vector<KeyGroup>& groups);
    /// A stored arrangement read over the defaults.
    KeyArrangement(const std::vector<KeyGroup>& groups, const Panels& stored);

    /// The panels to store.
    const Panels& panels() const { return m_panels; }

    /// The keys a group shows on the tab, in order; only keys this version knows.
    std::vector<const KeyDefinition*> shownKeys(const std::string& groupID) const;
    /// The keys a group keeps in its catalog only, in order.
    std::vector<const KeyDefinition*> hiddenKeys(const std::string& groupID) const;
    bool isShown(const std::string& groupID, const std::string& keyID) const;

    /// Moves a shown key so that it becomes the `toIndex`-th shown key of its group (clamped).
    /// False when the key is not shown there or already at that place.
    bool move(const std::string& groupID, const std::string& keyID, int toIndex);
    /// Shows a key of the catalog on the tab: at `atIndex` among the shown keys, or last.
    bool show(const std::string& groupID, const std::string& keyID,
              std::optional<int> atIndex = std::nullopt);
    /// Moves a shown key into the group's catalog.
    bool hide(const std::string& groupID, const std::string& keyID);

    bool isDefault() const;
    bool operator==(const KeyArrangement& other) const { return m_panels == other.m_panels; }

    static std::string catalogPanel(const std::string& groupID) { return groupID + ".catalog"; }

private:
    const KeyGroup* group(const std::string& groupID) const;
    std::vector<const KeyDefinition*> known(const KeyGroup& group, const std::string& panel) const;
    void placeMissingKeys();

    const std::vector<KeyGroup>* m_groups;
    Panels m_panels;
};

} // namespace lumo
