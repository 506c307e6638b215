#include "LumoUI/export/SheetPrinter.h"

#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <memory>

#include "LumoKit/editing/SyntaxHighlighter.h"
#include "LumoUI/plot/PlotPainter.h"
#include "LumoUI/plot/PlotStyle.h"

namespace lumo {

namespace {

constexpr qreal columnGap = 18;    // between the text and the answer column
constexpr qreal answerPadding = 6; // inside the column, at either side
constexpr qreal plotGap = 6;       // above and below a plot
constexpr qreal maxPlotHeight = 230;

QColor fromRgba(std::uint32_t rgba) {
    return QColor(int(rgba >> 24) & 0xFF, int(rgba >> 16) & 0xFF, int(rgba >> 8) & 0xFF);
}

QColor blend(const QColor& a, const QColor& b, qreal amount) {
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * amount),
                            float(a.greenF() + (b.greenF() - a.greenF()) * amount),
                            float(a.blueF() + (b.blueF() - a.blueF()) * amount));
}

// The editor's colours for an appearance.
struct Ink {
    QColor paper;
    QColor text;
    QColor failure;
    QColor column;
    QColor muted;

    explicit Ink(Appearance appearance) {
        const bool dark = appearance == Appearance::dark;
        paper = dark ? QColor(0x1C, 0x1C, 0x1F) : QColor(0xFD, 0xFC, 0xF9);
        text = dark ? QColor(0xE9, 0xE9, 0xEC) : QColor(0x1B, 0x1A, 0x18);
        failure = dark ? QColor(0xFF, 0x85, 0x7A) : QColor(0xC0, 0x39, 0x2B);
        column = blend(paper, text, dark ? 0.035 : 0.025);
        muted = blend(paper, text, 0.55);
    }
};

// One line of the sheet, laid out for the page: its wrapped text, its answer and its plot.
struct PrintedLine {
    std::unique_ptr<QTextLayout> layout;
    qreal textHeight = 0;
    qreal plotHeight = 0;
    QString answer;
    bool failure = false;
    const PlotSpec* plot = nullptr;
};

// Sizes are in points: the painter is scaled so that one unit is one point on every device,
// and fonts are given in those units as pixel sizes so that the scale applies to them once.
QFont fontOfSize(const QString& family, qreal size) {
    QFont font(family);
    font.setStyleHint(QFont::TypeWriter);
    font.setPixelSize(std::max(1, qRound(size)));
    return font;
}

QList<QTextLayout::FormatRange> syntaxFormats(const std::string& line, const PrintLook& look) {
    QList<QTextLayout::FormatRange> formats;
    for (const SyntaxRange& range : highlightLine(line)) {
        QTextLayout::FormatRange format;
        format.start = int(range.offset);
        format.length = int(range.length);
        format.format.setForeground(fromRgba(Theme::color(range.kind, look.appearance, look.colors)));
        formats.append(format);
    }
    return formats;
}

} // namespace

std::vector<BlockPlacement> placeBlocks(const std::vector<qreal>& heights, qreal pageHeight) {
    std::vector<BlockPlacement> placements;
    placements.reserve(heights.size());
    int page = 0;
    qreal top = 0;
    for (qreal height : heights) {
        if (top > 0 && top + height > pageHeight) {
            ++page;
            top = 0;
        }
        placements.push_back({page, top});
        top += height;
    }
    return placements;
}

int printSheet(QPagedPaintDevice& device, const EvaluatedSheet& sheet, const EvaluationOptions& options,
               const PrintLook& look) {
    QPainter painter(&device);
    if (!painter.isActive())
        return 0;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const qreal scale = device.logicalDpiY() / 72.0;
    painter.scale(scale, scale);
    const QRectF page = device.pageLayout().paintRect(QPageLayout::Point);
    const qreal width = page.width();

    const Ink ink(look.appearance);
    const QFont textFont = fontOfSize(look.fontFamily, look.textSize);
    QFont headerFont = fontOfSize(look.fontFamily, look.textSize * 1.1);
    headerFont.setBold(true);
    const QFont footerFont = fontOfSize(look.fontFamily, look.textSize * 0.8);
    const QFontMetricsF metrics(textFont);
    const qreal lineHeight = metrics.lineSpacing();
    const qreal headerHeight = QFontMetricsF(headerFont).lineSpacing() * 2;
    const qreal footerHeight = QFontMetricsF(footerFont).lineSpacing() * 2;
    const qreal bodyHeight = std::max<qreal>(lineHeight, page.height() - headerHeight - footerHeight);

    // The answer column is as wide as the widest answer, up to two fifths of the page.
    std::vector<PrintedLine> lines(sheet.lines.size());
    qreal answerWidth = 0;
    for (std::size_t i = 0; i < lines.size() && i < sheet.results.size(); ++i) {
        const LineResult& result = sheet.results[i];
        lines[i].answer = QString::fromStdString(answerText(result, options, Grouping::grouped));
        lines[i].failure = result.outcome.kind == LineOutcome::Kind::failure;
        if (result.outcome.kind == LineOutcome::Kind::plot)
            lines[i].plot = result.outcome.plot();
        if (!lines[i].answer.isEmpty())
            answerWidth =
                std::max(answerWidth, metrics.horizontalAdvance(lines[i].answer) + 2 * answerPadding);
    }
    answerWidth = std::clamp(answerWidth, width * 0.15, width * 0.4);
    const qreal textWidth = width - answerWidth - columnGap;
    const qreal plotHeight = std::min(maxPlotHeight, width * 0.5);

    std::vector<qreal> heights;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        PrintedLine& line = lines[i];
        line.layout = std::make_unique<QTextLayout>(QString::fromStdString(sheet.lines[i]), textFont);
        QTextOption wrapping;
        wrapping.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        line.layout->setTextOption(wrapping);
        line.layout->setFormats(syntaxFormats(sheet.lines[i], look));
        line.layout->beginLayout();
        qreal y = 0;
        for (QTextLine row = line.layout->createLine(); row.isValid(); row = line.layout->createLine()) {
            row.setLineWidth(textWidth);
            row.setPosition(QPointF(0, y));
            y += lineHeight;
        }
        line.layout->endLayout();
        line.textHeight = std::max(lineHeight, y);
        line.plotHeight = line.plot ? plotHeight + 2 * plotGap : 0;
        // A line and its plot stay on one page.
        heights.push_back(line.textHeight + line.plotHeight);
    }
    const std::vector<BlockPlacement> placements = placeBlocks(heights, bodyHeight);
    const int pageCount = placements.empty() ? 1 : placements.back().page + 1;

    const PlotStyle plotStyle = PlotStyle::make(look.appearance, look.colors, textFont);
    const auto paintPage = [&](int number) {
        // Light paper is the sheet of paper itself; a dark look brings its own.
        if (look.appearance == Appearance::dark)
            painter.fillRect(QRectF(0, 0, width, page.height()), ink.paper);
        painter.fillRect(QRectF(width - answerWidth, headerHeight, answerWidth, bodyHeight), ink.column);
        painter.setFont(headerFont);
        painter.setPen(ink.text);
        painter.drawText(QRectF(0, 0, width, headerHeight / 2 + lineHeight / 2), Qt::AlignLeft | Qt::AlignTop,
                         QString::fromStdString(sheet.name));
        painter.setFont(footerFont);
        painter.setPen(ink.muted);
        painter.drawText(QRectF(0, page.height() - footerHeight / 2, width, footerHeight / 2),
                         Qt::AlignHCenter | Qt::AlignBottom,
                         QStringLiteral("%1 / %2").arg(number + 1).arg(pageCount));
    };

    int currentPage = 0;
    paintPage(0);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const PrintedLine& line = lines[i];
        if (placements[i].page != currentPage) {
            device.newPage();
            currentPage = placements[i].page;
            paintPage(currentPage);
        }
        const qreal top = headerHeight + placements[i].top;
        painter.setPen(ink.text);
        line.layout->draw(&painter, QPointF(0, top));
        if (!line.answer.isEmpty()) {
            painter.setFont(textFont);
            painter.setPen(line.failure ? ink.failure : ink.text);
            const QRectF cell(width - answerWidth + answerPadding, top, answerWidth - 2 * answerPadding,
                              lineHeight);
            painter.drawText(cell, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                             metrics.elidedText(line.answer, Qt::ElideRight, cell.width()));
        }
        if (line.plot)
            paintPlot(painter, QRectF(0, top + line.textHeight + plotGap, width, plotHeight), *line.plot,
                      plotStyle);
    }
    return pageCount;
}

} // namespace lumo
