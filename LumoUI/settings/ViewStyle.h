#pragma once

#include <QFont>
#include <QPalette>

#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/Theme.h"

namespace lumo {

/// How the preferences turn into what views draw with: the size of sheet text and the light or
/// dark colours. The editor, its answer column and the named values all take their font from
/// sheetFont(), so they grow and shrink together.
namespace ViewStyle {

/// The point size of sheet text at a text size.
qreal pointSize(TextSizeSetting size);
/// `base` at the text size's point size.
QFont sheetFont(const QFont& base, TextSizeSetting size);
/// The next size up or down; the end sizes stay where they are.
TextSizeSetting larger(TextSizeSetting size);
TextSizeSetting smaller(TextSizeSetting size);

/// Light or dark for a setting; "auto" asks `palette` (a view's, which follows the desktop's
/// while the application does) whether its windows are dark.
Appearance appearance(AppearanceSetting setting, const QPalette& palette);
bool isDark(const QPalette& palette);

} // namespace ViewStyle

} // namespace lumo
