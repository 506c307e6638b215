#include "LumoUI/plot/PlotImage.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace lumo {

QImage renderPlotImage(const PlotSpec& description, QSize size, const PlotStyle& style, const PlotView& view,
                       qreal devicePixelRatio) {
    const qreal ratio = devicePixelRatio > 0 ? devicePixelRatio : 1;
    const QSize pixels(std::max(1, int(std::ceil(size.width() * ratio))),
                       std::max(1, int(std::ceil(size.height() * ratio))));
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(style.paper);
    QPainter painter(&image);
    paintPlot(painter, QRectF(QPointF(0, 0), QSizeF(size)), description, style, view);
    painter.end();
    return image;
}

} // namespace lumo
