#include "LumoUI/editor/PlotLayer.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QTextBlock>

#include <cmath>

#include "LumoKit/base/Language.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/DecorationOverlay.h"
#include "LumoUI/editor/SheetTextLayout.h"
#include "LumoUI/plot/PlotImage.h"

namespace lumo {

namespace {

QString pick(const char* japanese, const char* english) {
    return QString::fromStdString(L10n::pick(japanese, english));
}

// Copied and saved images are drawn at twice the screen's density at least, so they stay sharp
// when pasted into a document and printed.
constexpr qreal minimumImageRatio = 2;

} // namespace

PlotLayer::PlotLayer(CalcTextView* owner) : QObject(owner), m_owner(owner) {}

void PlotLayer::setShowsPlots(bool shows) {
    if (shows == m_showsPlots)
        return;
    m_showsPlots = shows;
    m_hover.reset();
    m_rotating.reset();
    updateBands();
}

const PlotSpec* PlotLayer::descriptionOf(int line) const {
    const auto& results = m_owner->results();
    if (line < 0 || std::size_t(line) >= results.size())
        return nullptr;
    const LineOutcome& outcome = results[std::size_t(line)].outcome;
    return outcome.plot();
}

qreal PlotLayer::bandHeight(int line) const {
    return line >= 0 && std::size_t(line) < m_bands.size() ? m_bands[std::size_t(line)] : 0;
}

QRectF PlotLayer::bandRect(int line) const {
    const qreal band = bandHeight(line);
    const QTextBlock block = m_owner->document()->findBlockByNumber(line);
    if (band <= 0 || !block.isValid() || !block.isVisible())
        return {};
    const QRectF geometry = m_owner->blockBoundingGeometry(block).translated(m_owner->contentOffset());
    const qreal margin = m_owner->document()->documentMargin();
    return QRectF(geometry.left() + margin, geometry.bottom() - band,
                  std::max<qreal>(0, m_owner->viewport()->width() - 2 * margin), band);
}

QRectF PlotLayer::cardRect(int line) const {
    const QRectF band = bandRect(line);
    return band.isEmpty() ? QRectF() : QRectF(PlotBand::cardRect(band, m_owner->font()).toAlignedRect());
}

double PlotLayer::surfaceAngle(const QString& title) const {
    const auto found = m_angles.find(title);
    return found != m_angles.end() ? found->second : PlotView::defaultSurfaceAngle;
}

void PlotLayer::resultsChanged() {
    m_hover.reset();
    m_cache.dropFrom(int(m_owner->results().size()));
    updateBands();
    // A plot can change without its line changing (a name it uses did), so every plot in view
    // is painted again; the drawings that stayed the same come from the cache.
    for (const PlotBox& box : plotBoxes())
        m_owner->viewport()->update(box.rect.toAlignedRect());
}

void PlotLayer::fontChanged() {
    updateBands();
}

void PlotLayer::setStyle(const PlotStyle& style) {
    m_cache.setStyle(style);
    m_owner->viewport()->update();
}

void PlotLayer::updateBands() {
    std::vector<qreal> bands;
    if (m_showsPlots) {
        const qreal height = PlotBand::height(m_owner->font());
        const auto& results = m_owner->results();
        bands.resize(results.size(), 0);
        for (std::size_t line = 0; line < results.size(); ++line)
            if (descriptionOf(int(line)))
                bands[line] = height;
        while (!bands.empty() && bands.back() == 0)
            bands.pop_back();
    }
    if (bands == m_bands)
        return;
    m_bands = std::move(bands);
    if (auto* layout = qobject_cast<SheetTextLayout*>(m_owner->document()->documentLayout()))
        layout->bandsChanged();
    m_owner->overlay()->update();
}

int PlotLayer::viewportHeight() const {
    return m_owner->viewport()->height();
}

std::vector<PlotLayer::PlotBox> PlotLayer::boxesIn(qreal top, qreal bottom) const {
    std::vector<PlotBox> boxes;
    if (!m_showsPlots || m_bands.empty())
        return boxes;
    m_owner->forEachVisibleLine(top, bottom, [&](const QTextBlock& block, const QRectF&) {
        const int line = block.blockNumber();
        const PlotSpec* description = descriptionOf(line);
        if (!description || bandHeight(line) <= 0)
            return;
        const QRectF card = cardRect(line);
        if (!card.isEmpty() && card.bottom() >= top && card.top() <= bottom)
            boxes.push_back({card, QString::fromStdString(description->title), line});
    });
    return boxes;
}

void PlotLayer::paint(QPainter& painter, const QRect& exposed) {
    const qreal ratio = m_owner->viewport()->devicePixelRatioF();
    const auto& results = m_owner->results();
    for (const PlotBox& box : boxesIn(exposed.top(), exposed.bottom() + 1)) {
        const PlotSpec& description = *descriptionOf(box.line);
        PlotView view;
        if (description.kind == PlotSpec::Kind::surface)
            view.surfaceAngle = surfaceAngle(box.title);
        const QPixmap& drawing =
            m_cache.drawing(box.line, results[std::size_t(box.line)].outcome.sharedPlot(),
                            box.rect.size().toSize(), ratio, view);
        painter.drawPixmap(box.rect.topLeft(), drawing);
        if (m_hover && m_hover->first == box.line) {
            const PlotSpec* curves[] = {&description};
            paintCurveHover(painter, curveFrameFor(box.rect, description, m_cache.style()), curves,
                            m_hover->second, m_cache.style());
        }
    }
}

std::optional<int> PlotLayer::plotLineAt(const QPointF& point) const {
    for (const PlotBox& box : boxesIn(point.y(), point.y()))
        if (box.rect.contains(point))
            return box.line;
    return std::nullopt;
}

void PlotLayer::repaintLine(int line) {
    const QRectF band = bandRect(line);
    if (!band.isEmpty())
        m_owner->viewport()->update(band.toAlignedRect().adjusted(-2, -2, 2, 2));
}

void PlotLayer::updateCursor(std::optional<int> line) {
    QWidget* viewport = m_owner->viewport();
    Qt::CursorShape shape = Qt::IBeamCursor;
    if (m_rotating)
        shape = Qt::ClosedHandCursor;
    else if (line)
        shape = descriptionOf(*line) && descriptionOf(*line)->kind == PlotSpec::Kind::surface
                    ? Qt::OpenHandCursor
                    : Qt::ArrowCursor;
    if (viewport->cursor().shape() != shape)
        viewport->setCursor(shape);
}

bool PlotLayer::mousePress(QMouseEvent* event) {
    const std::optional<int> line = plotLineAt(event->position());
    if (!line)
        return false;
    const PlotSpec* description = descriptionOf(*line);
    if (event->button() == Qt::LeftButton && description && description->kind == PlotSpec::Kind::surface) {
        const QString title = QString::fromStdString(description->title);
        m_rotating = Rotating{title, event->position(), surfaceAngle(title)};
        m_rotatingLine = line;
        m_hover.reset();
        updateCursor(line);
    }
    // A press on a plot never moves the caret or starts a selection in the text.
    return true;
}

bool PlotLayer::mouseMove(QMouseEvent* event) {
    if (m_rotating && m_rotatingLine) {
        const double turned =
            m_rotating->startAngle + (event->position().x() - m_rotating->start.x()) * degreesPerPixel;
        m_angles[m_rotating->title] = std::fmod(std::fmod(turned, 360.0) + 360.0, 360.0);
        // Every plot with this title turns alike, as they show the same surface.
        for (const PlotBox& box : plotBoxes())
            if (box.title == m_rotating->title)
                repaintLine(box.line);
        return true;
    }
    if (event->buttons() != Qt::NoButton)
        return false;
    const std::optional<int> line = plotLineAt(event->position());
    updateCursor(line);
    std::optional<std::pair<int, CurveHover>> hover;
    if (line) {
        const PlotSpec* description = descriptionOf(*line);
        if (description && description->kind == PlotSpec::Kind::curve) {
            const PlotSpec* curves[] = {description};
            if (auto point = curveHoverAt(curveFrameFor(cardRect(*line), *description, m_cache.style()),
                                          curves, event->position()))
                hover = std::pair{*line, *point};
        }
    }
    const bool changed = hover.has_value() != m_hover.has_value() ||
                         (hover && (hover->first != m_hover->first || hover->second.x != m_hover->second.x ||
                                    hover->second.y != m_hover->second.y));
    if (changed) {
        if (m_hover)
            repaintLine(m_hover->first);
        m_hover = hover;
        if (m_hover)
            repaintLine(m_hover->first);
    }
    return line.has_value();
}

bool PlotLayer::mouseRelease(QMouseEvent* event) {
    if (m_rotating) {
        m_rotating.reset();
        m_rotatingLine.reset();
        updateCursor(plotLineAt(event->position()));
        return true;
    }
    return plotLineAt(event->position()).has_value();
}

void PlotLayer::pointerLeft() {
    if (m_hover) {
        repaintLine(m_hover->first);
        m_hover.reset();
    }
}

bool PlotLayer::contextMenu(QContextMenuEvent* event) {
    const std::optional<int> line = plotLineAt(event->pos());
    if (!line)
        return false;
    auto* menu = new QMenu(m_owner);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const int plotLine = *line;
    QAction* copy = menu->addAction(pick("画像をコピー", "Copy Image"), this,
                                    [this, plotLine] { copyPlotImage(plotLine); });
    copy->setObjectName(QStringLiteral("copyPlotImage"));
    QAction* save = menu->addAction(pick("画像を保存…", "Save Image…"), this, [this, plotLine] {
        const QString path =
            QFileDialog::getSaveFileName(m_owner, pick("画像を保存", "Save Image"),
                                         pick("グラフ.png", "Plot.png"), QStringLiteral("PNG (*.png)"));
        if (!path.isEmpty())
            savePlotImage(plotLine,
                          path.endsWith(QStringLiteral(".png"), Qt::CaseInsensitive) ? path : path + ".png");
    });
    save->setObjectName(QStringLiteral("savePlotImage"));
    menu->popup(event->globalPos());
    return true;
}

QImage PlotLayer::plotImage(int line) const {
    const PlotSpec* description = descriptionOf(line);
    const QRectF card = cardRect(line);
    if (!description || card.isEmpty())
        return {};
    PlotView view;
    if (description->kind == PlotSpec::Kind::surface)
        view.surfaceAngle = surfaceAngle(QString::fromStdString(description->title));
    const qreal ratio = std::max(minimumImageRatio, m_owner->devicePixelRatioF());
    return renderPlotImage(*description, card.size().toSize(), m_cache.style(), view, ratio);
}

bool PlotLayer::savePlotImage(int line, const QString& path) const {
    const QImage image = plotImage(line);
    return !image.isNull() && image.save(path, "PNG");
}

void PlotLayer::copyPlotImage(int line) const {
    const QImage image = plotImage(line);
    if (!image.isNull())
        QApplication::clipboard()->setImage(image);
}

} // namespace lumo
