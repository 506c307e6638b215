#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "LumoKit/editing/SyntaxHighlighter.h"

namespace lumo {

/// Light or dark appearance of the interface.
enum class Appearance { light, dark };

/// The user's syntax colours: "<raw value>.light" / "<raw value>.dark" → hex colour text.
using SyntaxColorOverrides = std::map<std::string, std::string>;

/// The application's colour constants.
namespace Theme {

/// The sheet's paper and the colour of text that no kind claims, as 0xRRGGBBFF.
std::uint32_t paperColor(Appearance appearance);
std::uint32_t inkColor(Appearance appearance);
/// The built-in colour of a kind, as 0xRRGGBBFF.
std::uint32_t defaultColor(SyntaxKind kind, Appearance appearance);
/// The key of a kind's entry in the user's colours, e.g. "quoted.light".
std::string colorKey(SyntaxKind kind, Appearance appearance);
/// The colour to draw a kind with: the user's entry when it parses, otherwise the default.
std::uint32_t color(SyntaxKind kind, Appearance appearance, const SyntaxColorOverrides& userColors);

} // namespace Theme

} // namespace lumo
