#include "LumoUI/editor/OverlayAccessible.h"

#include <algorithm>

#include "LumoKit/base/Language.h"
#include "LumoUI/editor/AnswerAccessible.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/DecorationOverlay.h"

namespace lumo {

namespace {

QAccessibleInterface* createOverlayAccessible(const QString& className, QObject* object) {
    if (className == QLatin1String(DecorationOverlay::staticMetaObject.className()) && object)
        return new OverlayAccessible(static_cast<DecorationOverlay*>(object));
    return nullptr;
}

} // namespace

OverlayAccessible::OverlayAccessible(DecorationOverlay* overlay)
    : QAccessibleWidget(overlay, QAccessible::List) {}

OverlayAccessible::~OverlayAccessible() {
    for (QAccessible::Id id : std::as_const(m_answers))
        QAccessible::deleteAccessibleInterface(id);
}

void OverlayAccessible::install() {
    static const bool installed = [] {
        QAccessible::installFactory(&createOverlayAccessible);
        return true;
    }();
    (void)installed;
}

DecorationOverlay* OverlayAccessible::overlay() const {
    return static_cast<DecorationOverlay*>(widget());
}

std::vector<int> OverlayAccessible::answeredLines() const {
    std::vector<int> lines;
    const CalcTextView* view = overlay() ? overlay()->owner() : nullptr;
    if (!view)
        return lines;
    const int count = std::min(int(view->results().size()), view->document()->blockCount());
    for (int line = 0; line < count; ++line) {
        if (view->answer(line))
            lines.push_back(line);
    }
    return lines;
}

int OverlayAccessible::childCount() const {
    return int(answeredLines().size());
}

QAccessibleInterface* OverlayAccessible::child(int index) const {
    const std::vector<int> lines = answeredLines();
    if (index < 0 || index >= int(lines.size()))
        return nullptr;
    const int line = lines[std::size_t(index)];
    auto found = m_answers.find(line);
    if (found == m_answers.end())
        found = m_answers.insert(
            line, QAccessible::registerAccessibleInterface(new AnswerAccessible(overlay(), line)));
    return QAccessible::accessibleInterface(*found);
}

int OverlayAccessible::indexOfChild(const QAccessibleInterface* child) const {
    const auto* answer = dynamic_cast<const AnswerAccessible*>(child);
    if (!answer)
        return -1;
    const std::vector<int> lines = answeredLines();
    const auto found = std::find(lines.begin(), lines.end(), answer->line());
    return found == lines.end() ? -1 : int(found - lines.begin());
}

QAccessibleInterface* OverlayAccessible::childAt(int x, int y) const {
    const CalcTextView* view = overlay() ? overlay()->owner() : nullptr;
    if (!view)
        return nullptr;
    const std::optional<int> line = view->answerLineAt(overlay()->mapFromGlobal(QPoint(x, y)));
    if (!line)
        return nullptr;
    const std::vector<int> lines = answeredLines();
    const auto found = std::find(lines.begin(), lines.end(), *line);
    return found == lines.end() ? nullptr : child(int(found - lines.begin()));
}

QString OverlayAccessible::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Name)
        return QString::fromStdString(L10n::pick("答え", "Answers"));
    return QAccessibleWidget::text(kind);
}

} // namespace lumo
