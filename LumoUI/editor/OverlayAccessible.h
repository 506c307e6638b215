#pragma once

#include <QAccessibleWidget>
#include <QHash>

#include <vector>

namespace lumo {

class DecorationOverlay;

/// The answer column as a list with one child per answered line, in line order, so a screen
/// reader can go through a sheet's results.
class OverlayAccessible : public QAccessibleWidget {
public:
    explicit OverlayAccessible(DecorationOverlay* overlay);
    ~OverlayAccessible() override;

    /// Makes Qt create this interface for every answer column.
    static void install();

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QString text(QAccessible::Text kind) const override;

private:
    DecorationOverlay* overlay() const;
    std::vector<int> answeredLines() const;

    mutable QHash<int, QAccessible::Id> m_answers;
};

} // namespace lumo
