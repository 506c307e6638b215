#pragma once

#include "LumoKit/base/Language.h"

namespace lumo {

/// The process-wide angle mode: true when plain numbers are angles in degrees.
struct AngleMode {
    static bool degrees();
    static void setDegrees(bool degrees);
};

} // namespace lumo
