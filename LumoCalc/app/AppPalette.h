#pragma once

#include <QPalette>

#include "LumoUI/settings/AppSettings.h"

namespace lumo {

/// Light and dark for the whole application: the Fusion style with a palette of either kind,
/// or for "auto" the palette the platform started with.
namespace appPalette {

QPalette lightPalette();
QPalette darkPalette();
/// The palette for a setting; `system` is the platform's own palette.
QPalette paletteFor(AppearanceSetting setting, const QPalette& system);
bool isDark(const QPalette& palette);

} // namespace appPalette

} // namespace lumo
