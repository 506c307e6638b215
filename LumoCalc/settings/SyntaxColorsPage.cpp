#include "LumoCalc/settings/SyntaxColorsPage.h"

#include <QColorDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/editor/SheetHighlighter.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/HexColor.h"
#include "LumoUI/settings/ViewStyle.h"

namespace lumo {

namespace {

constexpr std::array<Appearance, 2> appearances{Appearance::light, Appearance::dark};

QColor displayColor(std::uint32_t rgba) {
    return QColor::fromRgb(QRgb(rgba >> 8) | 0xFF000000u);
}

QString keyOf(SyntaxKind kind, Appearance appearance) {
    return QString::fromStdString(Theme::colorKey(kind, appearance));
}

SyntaxColorOverrides overridesOf(const QMap<QString, QString>& colors) {
    SyntaxColorOverrides overrides;
    for (auto entry = colors.cbegin(); entry != colors.cend(); ++entry)
        overrides[entry.key().toStdString()] = entry.value().toStdString();
    return overrides;
}

QIcon swatchIcon(const QColor& color, const QColor& frame) {
    QPixmap square(36, 36);
    square.setDevicePixelRatio(2);
    square.fill(Qt::transparent);
    QPainter painter(&square);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(frame, 1));
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(0.5, 0.5, 17, 17), 3, 3);
    return QIcon(square);
}

std::size_t slot(Appearance appearance) {
    return appearance == Appearance::dark ? 1 : 0;
}

} // namespace

SyntaxColorsPage::SyntaxColorsPage(AppSettings* settings, QWidget* parent)
    : QWidget(parent), m_settings(settings) {
    setObjectName(QStringLiteral("syntaxColorsPage"));
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(6);
    m_lightHeading = new QLabel(this);
    m_darkHeading = new QLabel(this);
    for (QLabel* heading : {m_lightHeading, m_darkHeading}) {
        QFont bold = heading->font();
        bold.setBold(true);
        heading->setFont(bold);
    }
    grid->addWidget(m_lightHeading, 0, 1, 1, 2);
    grid->addWidget(m_darkHeading, 0, 4, 1, 2);

    int row = 1;
    for (SyntaxKind kind : allSyntaxKinds()) {
        auto* title = new QLabel(this);
        m_titles.push_back(title);
        grid->addWidget(title, row, 0);
        for (Appearance appearance : appearances) {
            const QString key = keyOf(kind, appearance);
            auto* swatch = new QPushButton(this);
            swatch->setObjectName(QStringLiteral("color.") + key);
            swatch->setMinimumWidth(swatch->fontMetrics().horizontalAdvance(QStringLiteral("#WWWWWW")) + 44);
            connect(swatch, &QPushButton::clicked, this,
                    [this, kind, appearance] { choose(kind, appearance); });
            auto* reset = new QToolButton(this);
            reset->setObjectName(QStringLiteral("reset.") + key);
            reset->setAutoRaise(true);
            reset->setFocusPolicy(Qt::StrongFocus);
            connect(reset, &QToolButton::clicked, this,
                    [this, kind, appearance] { store(kind, appearance, nullptr); });
            const int column = appearance == Appearance::light ? 1 : 4;
            grid->addWidget(swatch, row, column);
            grid->addWidget(reset, row, column + 1);
            m_entries.push_back({kind, appearance, swatch, reset});
        }
        ++row;
    }
    // A gap between the two appearances, so each swatch's reset clearly belongs to it.
    grid->setColumnMinimumWidth(3, 18);
    grid->setColumnStretch(6, 1);

    m_resetAll = new QPushButton(this);
    m_resetAll->setObjectName(QStringLiteral("resetAllColors"));
    connect(m_resetAll, &QPushButton::clicked, this, [this] {
        if (!m_settings)
            return;
        QMap<QString, QString> colors = m_settings->syntaxColors();
        for (const Entry& entry : m_entries)
            colors.remove(keyOf(entry.kind, entry.appearance));
        m_settings->setSyntaxColors(colors);
    });
    auto* resetRow = new QHBoxLayout;
    resetRow->addWidget(m_resetAll);
    resetRow->addStretch(1);

    m_previewHeading = new QLabel(this);
    QFont bold = m_previewHeading->font();
    bold.setBold(true);
    m_previewHeading->setFont(bold);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(24, 18, 24, 18);
    column->setSpacing(8);
    column->addLayout(grid);
    column->addSpacing(4);
    column->addLayout(resetRow);
    column->addSpacing(10);
    column->addWidget(m_previewHeading);
    for (Appearance appearance : appearances)
        column->addWidget(makePreview(appearance));
    column->addStretch(1);

    // The chain of Tab follows the rows: a colour, its reset, then the other appearance.
    QWidget* previous = nullptr;
    for (const Entry& entry : m_entries) {
        for (QWidget* next : {static_cast<QWidget*>(entry.swatch), static_cast<QWidget*>(entry.reset)}) {
            if (previous)
                setTabOrder(previous, next);
            previous = next;
        }
    }
    setTabOrder(previous, m_resetAll);

    if (m_settings)
        connect(m_settings, &AppSettings::syntaxColorsChanged, this, &SyntaxColorsPage::refresh);
    retranslate();
}

QPlainTextEdit* SyntaxColorsPage::makePreview(Appearance appearance) {
    auto* preview = new QPlainTextEdit(this);
    preview->setObjectName(appearance == Appearance::dark ? QStringLiteral("preview.dark")
                                                          : QStringLiteral("preview.light"));
    preview->setReadOnly(true);
    preview->setFocusPolicy(Qt::NoFocus);
    preview->setLineWrapMode(QPlainTextEdit::NoWrap);
    preview->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    preview->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    preview->setFont(ViewStyle::sheetFont(font(), TextSizeSetting::standard));
    preview->document()->setDocumentMargin(8);
    QPalette colors = preview->palette();
    const QColor paper = displayColor(Theme::paperColor(appearance));
    const QColor ink = displayColor(Theme::inkColor(appearance));
    for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        colors.setColor(group, QPalette::Base, paper);
        colors.setColor(group, QPalette::Text, ink);
    }
    preview->setPalette(colors);
    preview->setFixedHeight(QFontMetrics(preview->font()).height() + 2 * 8 + 2 * preview->frameWidth() + 4);
    m_previews[slot(appearance)] = preview;
    m_highlighters[slot(appearance)] = new SheetHighlighter(preview->document());
    return preview;
}

QString SyntaxColorsPage::previewText() {
    return pickText("if area > 2: total = sqrt(120 mm) × 3 + \"ok\"  // メモ",
                    "if area > 2: total = sqrt(120 mm) × 3 + \"ok\"  // note");
}

QPushButton* SyntaxColorsPage::swatch(SyntaxKind kind, Appearance appearance) const {
    return entry(kind, appearance).swatch;
}

QToolButton* SyntaxColorsPage::resetButton(SyntaxKind kind, Appearance appearance) const {
    return entry(kind, appearance).reset;
}

QPlainTextEdit* SyntaxColorsPage::preview(Appearance appearance) const {
    return m_previews[slot(appearance)];
}

const SyntaxColorsPage::Entry& SyntaxColorsPage::entry(SyntaxKind kind, Appearance appearance) const {
    return *std::find_if(m_entries.begin(), m_entries.end(), [kind, appearance](const Entry& candidate) {
        return candidate.kind == kind && candidate.appearance == appearance;
    });
}

void SyntaxColorsPage::retranslate() {
    m_lightHeading->setText(pickText("ライト", "Light"));
    m_darkHeading->setText(pickText("ダーク", "Dark"));
    m_previewHeading->setText(pickText("見本", "Preview"));
    m_resetAll->setText(pickText("すべて既定の色に戻す", "Reset All Colours"));
    const std::vector<SyntaxKind>& kinds = allSyntaxKinds();
    for (std::size_t index = 0; index < kinds.size(); ++index)
        m_titles[index]->setText(QString::fromStdString(title(kinds[index])));
    for (QPlainTextEdit* preview : m_previews)
        preview->setPlainText(previewText());
    refresh();
}

void SyntaxColorsPage::refresh() {
    const QMap<QString, QString> colors = m_settings ? m_settings->syntaxColors() : QMap<QString, QString>{};
    const SyntaxColorOverrides overrides = overridesOf(colors);
    const QColor frame = palette().color(QPalette::Mid);
    for (const Entry& entry : m_entries) {
        const std::uint32_t rgba = Theme::color(entry.kind, entry.appearance, overrides);
        const QString hex = QString::fromStdString(HexColor::format(rgba));
        const QString kindTitle = QString::fromStdString(title(entry.kind));
        const QString side =
            entry.appearance == Appearance::dark ? pickText("ダーク", "dark") : pickText("ライト", "light");
        entry.swatch->setText(hex);
        entry.swatch->setIcon(swatchIcon(displayColor(rgba), frame));
        entry.swatch->setToolTip(pickText("クリックして色を選ぶ", "Click to choose a colour"));
        entry.swatch->setAccessibleName(QStringLiteral("%1, %2: %3").arg(kindTitle, side, hex));
        const bool customised = colors.contains(keyOf(entry.kind, entry.appearance));
        entry.reset->setEnabled(customised);
        entry.reset->setText(pickText("戻す", "Reset"));
        entry.reset->setToolTip(pickText("既定の色に戻す", "Reset to the default colour"));
        entry.reset->setAccessibleName(
            pickText("%1（%2）を既定の色に戻す", "Reset %1 (%2)").arg(kindTitle, side));
    }
    bool anyCustomised = false;
    for (const Entry& entry : m_entries)
        anyCustomised = anyCustomised || entry.reset->isEnabled();
    m_resetAll->setEnabled(anyCustomised);
    for (Appearance appearance : appearances)
        m_highlighters[slot(appearance)]->setColors(overrides, appearance);
}

void SyntaxColorsPage::choose(SyntaxKind kind, Appearance appearance) {
    if (m_dialog)
        m_dialog->close();
    const QMap<QString, QString> colors = m_settings ? m_settings->syntaxColors() : QMap<QString, QString>{};
    const QColor current = displayColor(Theme::color(kind, appearance, overridesOf(colors)));
    m_dialog = new QColorDialog(current, this);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    const QString kindTitle = QString::fromStdString(title(kind));
    m_dialog->setWindowTitle(appearance == Appearance::dark
                                 ? pickText("%1（ダーク）の色", "%1 (Dark)").arg(kindTitle)
                                 : pickText("%1（ライト）の色", "%1 (Light)").arg(kindTitle));
    connect(m_dialog, &QColorDialog::colorSelected, this, [this, kind, appearance](const QColor& color) {
        const auto rgba = (std::uint32_t(color.red()) << 24) | (std::uint32_t(color.green()) << 16) |
                          (std::uint32_t(color.blue()) << 8) | 0xFFu;
        const QString hex = QString::fromStdString(HexColor::format(rgba));
        store(kind, appearance, &hex);
    });
    m_dialog->open();
}

void SyntaxColorsPage::store(SyntaxKind kind, Appearance appearance, const QString* hex) {
    if (!m_settings)
        return;
    QMap<QString, QString> colors = m_settings->syntaxColors();
    if (hex)
        colors.insert(keyOf(kind, appearance), *hex);
    else
        colors.remove(keyOf(kind, appearance));
    m_settings->setSyntaxColors(colors);
}

} // namespace lumo
