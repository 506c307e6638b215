#pragma once

#include <QAccessibleInterface>
#include <QPointer>

namespace lumo {

class DecorationOverlay;

/// One answer of the column as assistive technology sees it: its text is the answer or the
/// failure's message, and its description names the line it belongs to.
class AnswerAccessible : public QAccessibleInterface {
public:
    AnswerAccessible(DecorationOverlay* overlay, int line);

    int line() const { return m_line; }

    bool isValid() const override;
    QObject* object() const override;
    QWindow* window() const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int index) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text kind, const QString& text) override;
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;

private:
    QPointer<DecorationOverlay> m_overlay;
    int m_line;
};

} // namespace lumo
