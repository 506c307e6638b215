#include "LumoCalc/window/SelectionStatus.h"

#include <QLabel>
#include <QStatusBar>

#include "LumoCalc/text/Bilingual.h"
#include "LumoCalc/window/MainWindow.h"
#include "LumoKit/sheet/SelectionSummary.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/LineAnswer.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

namespace {

QString describe(const SelectionSummary& summary) {
    const QString count = QString::number(summary.count);
    if (!summary.sum || !summary.average)
        return pickText("答え %1 個", "%1 answers").arg(count);
    return pickText("答え %1 個 · 合計 %2 · 平均 %3", "%1 answers · sum %2 · average %3")
        .arg(count, answerText(*summary.sum), answerText(*summary.average));
}

} // namespace

void installSelectionStatus(MainWindow* window, NotificationCenter* notifications) {
    auto* label = new QLabel(window);
    label->setObjectName(QStringLiteral("selectionSummary"));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setContentsMargins(8, 0, 12, 0);
    QStatusBar* bar = window->statusBar();
    bar->setSizeGripEnabled(false);
    bar->addPermanentWidget(label);
    bar->hide();

    CalcTextView* text = window->editor()->textView();
    const auto update = [text, label, bar] {
        SelectionSummary summary;
        if (text->textCursor().hasSelection()) {
            const auto [first, last] = text->selectedLines();
            summary = summarize(text->results(), std::size_t(first), std::size_t(last));
        }
        if (summary.count < 2) {
            bar->hide();
            return;
        }
        label->setText(describe(summary));
        bar->show();
    };
    QObject::connect(text, &QPlainTextEdit::selectionChanged, label, update);
    QObject::connect(window->session(), &SheetSession::resultsChanged, label, update);
    if (notifications)
        notifications->observe(notification::languageChanged, label, update);
}

} // namespace lumo
