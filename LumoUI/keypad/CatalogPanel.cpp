#include "LumoUI/keypad/CatalogPanel.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

#include "LumoKit/base/Language.h"

namespace lumo {

namespace {

QString pick(const char* japanese, const char* english) {
    return QString::fromStdString(L10n::pick(japanese, english));
}

} // namespace

CatalogPanel::CatalogPanel(const KeyGroup& group, const KeyArrangement& arrangement,
                           const KeypadMetrics& metrics, QWidget* parent)
    : QWidget(parent), m_groupID(group.id) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);

    auto* header = new QHBoxLayout;
    m_back = new QToolButton(this);
    m_back->setText(pick("‹ 戻る", "‹ Back"));
    m_back->setAutoRaise(true);
    m_back->setFocusPolicy(Qt::NoFocus);
    connect(m_back, &QToolButton::clicked, this, &CatalogPanel::closeRequested);
    m_title = new QLabel(group.title.text(), this);
    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    titleFont.setPixelSize(metrics.fontPixels - 2);
    m_title->setFont(titleFont);
    m_title->setAlignment(Qt::AlignCenter);
    m_reset = new QPushButton(pick("リセット", "Reset"), this);
    m_reset->setFocusPolicy(Qt::NoFocus);
    m_reset->setToolTip(
        pick("このタブのキーを最初の並びに戻します", "Put this tab’s keys back as they first were"));
    m_reset->setEnabled(!arrangement.isDefault());
    connect(m_reset, &QPushButton::clicked, this, &CatalogPanel::resetRequested);
    header->addWidget(m_back);
    header->addWidget(m_title, 1);
    header->addWidget(m_reset);
    column->addLayout(header);

    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* list = new QWidget(scroll);
    auto* rows = new QVBoxLayout(list);
    rows->setContentsMargins(0, 0, 4, 0);
    rows->setSpacing(4);
    KeypadMetrics chip = metrics;
    chip.keyHeight = std::max(28, metrics.keyHeight - 10);
    QFont descriptionFont = font();
    descriptionFont.setPixelSize(std::max(11, metrics.fontPixels - 5));
    for (const KeyDefinition& key : group.keys) {
        Row row;
        row.key = new KeyButton(key, chip, list);
        row.key->setFixedWidth(metrics.keyWidth + metrics.keyWidth / 3);
        connect(row.key, &KeyButton::clicked, this,
                [this, button = row.key] { emit keyPressed(button->key()); });
        row.description = new QLabel(key.description.text(), list);
        row.description->setFont(descriptionFont);
        row.description->setWordWrap(true);
        row.description->setToolTip(key.description.text());
        row.shown = new QCheckBox(list);
        row.shown->setFocusPolicy(Qt::NoFocus);
        row.shown->setChecked(arrangement.isShown(group.id, key.id));
        row.shown->setToolTip(pick("タブに表示", "Show on the tab"));
        row.shown->setAccessibleName(pick("タブに表示: ", "Show on the tab: ") +
                                     QString::fromStdString(key.label));
        connect(row.shown, &QCheckBox::toggled, this,
                [this, id = key.id](bool checked) { emit shownChanged(id, checked); });
        auto* line = new QHBoxLayout;
        line->setSpacing(8);
        line->addWidget(row.key, 0, Qt::AlignTop);
        line->addWidget(row.description, 1);
        line->addWidget(row.shown, 0, Qt::AlignVCenter);
        rows->addLayout(line);
        m_rows.push_back(row);
    }
    rows->addStretch(1);
    scroll->setWidget(list);
    column->addWidget(scroll, 1);
}

KeyButton* CatalogPanel::keyButton(const std::string& keyID) const {
    for (const Row& row : m_rows) {
        if (row.key->key().id == keyID)
            return row.key;
    }
    return nullptr;
}

QCheckBox* CatalogPanel::shownBox(const std::string& keyID) const {
    for (const Row& row : m_rows) {
        if (row.key->key().id == keyID)
            return row.shown;
    }
    return nullptr;
}

} // namespace lumo
