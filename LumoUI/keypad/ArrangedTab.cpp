#include "LumoUI/keypad/ArrangedTab.h"

#include <QMenu>
#include <QScrollBar>
#include <QVBoxLayout>

#include "LumoKit/base/Language.h"
#include "LumoUI/keypad/KeyLayoutStore.h"
#include "LumoUI/keypad/KeySection.h"

namespace lumo {

namespace {

QString pick(const char* japanese, const char* english) {
    return QString::fromStdString(L10n::pick(japanese, english));
}

} // namespace

ArrangedTab::ArrangedTab(KeyKind kind, KeyLayoutStore* layouts, const KeypadMetrics& metrics, QWidget* parent)
    : QScrollArea(parent), m_kind(kind), m_layouts(layouts), m_metrics(metrics) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    if (m_layouts) {
        connect(m_layouts, &KeyLayoutStore::arrangementChanged, this, [this](KeyKind changed) {
            if (changed == m_kind)
                rebuild();
        });
    }
    rebuild();
}

QList<KeySection*> ArrangedTab::sections() const {
    return m_content ? m_content->findChildren<KeySection*>(Qt::FindDirectChildrenOnly)
                     : QList<KeySection*>{};
}

KeySection* ArrangedTab::section(const std::string& groupID) const {
    for (KeySection* candidate : sections()) {
        if (candidate->groupID() == groupID)
            return candidate;
    }
    return nullptr;
}

void ArrangedTab::setMetrics(const KeypadMetrics& metrics) {
    m_metrics = metrics;
    rebuild();
}

void ArrangedTab::rebuild() {
    const int scrolled = verticalScrollBar()->value();
    // The old sections may be in the middle of handling the drop that caused this.
    if (QWidget* old = takeWidget())
        old->deleteLater();
    m_conversion = nullptr;

    m_content = new QWidget;
    m_content->setAutoFillBackground(false);
    auto* column = new QVBoxLayout(m_content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(m_metrics.spacing + 2);
    if (m_kind == KeyKind::units) {
        m_conversion = new KeyButton(KeyCatalog::conversionKey(), m_metrics, m_content);
        connect(m_conversion, &KeyButton::clicked, this, [this] { emit keyPressed(m_conversion->key()); });
        column->addWidget(m_conversion);
    }
    const int columns = m_kind == KeyKind::functions ? 4 : 5;
    for (const KeyGroup& group : KeyCatalog::groups(m_kind)) {
        const auto shown = m_layouts ? m_layouts->arrangement(m_kind).shownKeys(group.id)
                                     : KeyArrangement(KeyCatalog::groups(m_kind)).shownKeys(group.id);
        auto* section = new KeySection(group.id, shown, m_metrics, columns, m_content);
        section->setTitle(group.title.text());
        const std::string groupID = group.id;
        connect(section, &KeySection::keyPressed, this, &ArrangedTab::keyPressed);
        connect(section, &KeySection::catalogRequested, this,
                [this, groupID] { emit catalogRequested(groupID); });
        connect(section, &KeySection::moveRequested, this,
                [this, groupID](const std::string& keyID, int toIndex) { moveKey(groupID, keyID, toIndex); });
        connect(section, &KeySection::hideRequested, this,
                [this, groupID](const std::string& keyID) { hideKey(groupID, keyID); });
        connect(section, &KeySection::contextMenuRequested, this,
                [this, groupID](const std::string& keyID, const QPoint& at) {
                    showContextMenu(groupID, keyID, at);
                });
        column->addWidget(section);
    }
    column->addStretch(1);
    setWidget(m_content);
    verticalScrollBar()->setValue(scrolled);
}

void ArrangedTab::moveKey(const std::string& groupID, const std::string& keyID, int toIndex) {
    if (!m_layouts)
        return;
    KeyArrangement arrangement = m_layouts->arrangement(m_kind);
    if (arrangement.move(groupID, keyID, toIndex))
        m_layouts->setArrangement(m_kind, arrangement);
}

void ArrangedTab::hideKey(const std::string& groupID, const std::string& keyID) {
    if (!m_layouts)
        return;
    KeyArrangement arrangement = m_layouts->arrangement(m_kind);
    if (arrangement.hide(groupID, keyID))
        m_layouts->setArrangement(m_kind, arrangement);
}

void ArrangedTab::showContextMenu(const std::string& groupID, const std::string& keyID,
                                  const QPoint& globalPosition) {
    QMenu menu(this);
    menu.addAction(pick("一覧へ移す（タブから外す）", "Move to the Catalog"),
                   [this, groupID, keyID] { hideKey(groupID, keyID); });
    menu.addAction(pick("一覧を開く", "Open the Catalog"),
                   [this, groupID] { emit catalogRequested(groupID); });
    menu.addSeparator();
    QAction* reset = menu.addAction(pick("このタブを元の並びに戻す", "Reset This Tab"), [this] {
        if (m_layouts)
            m_layouts->reset(m_kind);
    });
    reset->setEnabled(m_layouts && !m_layouts->arrangement(m_kind).isDefault());
    menu.exec(globalPosition);
}

} // namespace lumo
