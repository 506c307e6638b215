#pragma once

#include <QImage>
#include <QSize>

#include "LumoKit/sheet/PlotDescription.h"
#include "LumoUI/plot/PlotPainter.h"
#include "LumoUI/plot/PlotStyle.h"

namespace lumo {

/// Renders one plot description into a new image of `size` device-independent pixels at
/// `devicePixelRatio` (2 gives a sharp image for print or a high-density screen). The image is
/// opaque: the plot's card stands on the style's paper colour. Used for the editor's copied and
/// saved images and for exports, so a plot looks the same everywhere.
QImage renderPlotImage(const PlotSpec& description, QSize size, const PlotStyle& style,
                       const PlotView& view = {}, qreal devicePixelRatio = 1);

} // namespace lumo
