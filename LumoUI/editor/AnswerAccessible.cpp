#include "LumoUI/editor/AnswerAccessible.h"

#include <QTextBlock>
#include <QWidget>

#include "LumoKit/base/Language.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/DecorationOverlay.h"

namespace lumo {

AnswerAccessible::AnswerAccessible(DecorationOverlay* overlay, int line) : m_overlay(overlay), m_line(line) {}

bool AnswerAccessible::isValid() const {
    return m_overlay && m_overlay->owner();
}

QObject* AnswerAccessible::object() const {
    return nullptr;
}

QWindow* AnswerAccessible::window() const {
    return m_overlay && m_overlay->window() ? m_overlay->window()->windowHandle() : nullptr;
}

QAccessibleInterface* AnswerAccessible::childAt(int, int) const {
    return nullptr;
}

QAccessibleInterface* AnswerAccessible::parent() const {
    return m_overlay ? QAccessible::queryAccessibleInterface(m_overlay) : nullptr;
}

QAccessibleInterface* AnswerAccessible::child(int) const {
    return nullptr;
}

int AnswerAccessible::childCount() const {
    return 0;
}

int AnswerAccessible::indexOfChild(const QAccessibleInterface*) const {
    return -1;
}

QString AnswerAccessible::text(QAccessible::Text kind) const {
    if (!isValid())
        return {};
    const CalcTextView* view = m_overlay->owner();
    const std::optional<LineAnswer>& answer = view->answer(m_line);
    switch (kind) {
    case QAccessible::Name:
        return answer ? answer->text : QString();
    case QAccessible::Description: {
        const QString number = QString::number(m_line + 1);
        const QString line = view->document()->findBlockByNumber(m_line).text().trimmed();
        return QString::fromStdString(
                   L10n::pick("行 " + number.toStdString() + "：", "Line " + number.toStdString() + ": ")) +
               line;
    }
    default:
        return {};
    }
}

void AnswerAccessible::setText(QAccessible::Text, const QString&) {}

QRect AnswerAccessible::rect() const {
    if (!isValid())
        return {};
    const QRect local = m_overlay->owner()->answerRect(m_line).toAlignedRect();
    return local.isEmpty() ? QRect() : QRect(m_overlay->mapToGlobal(local.topLeft()), local.size());
}

QAccessible::Role AnswerAccessible::role() const {
    return QAccessible::StaticText;
}

QAccessible::State AnswerAccessible::state() const {
    QAccessible::State state;
    state.readOnly = true;
    state.invisible = rect().isEmpty();
    state.offscreen = state.invisible;
    return state;
}

} // namespace lumo
