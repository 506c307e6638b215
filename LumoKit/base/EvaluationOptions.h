#pragma once

#include "LumoKit/base/Language.h"

namespace lumo {

enum class AngleUnit { radians, degrees };

/// Everything besides its text that a sheet's answers depend on. A run reads its options and
/// nothing process-wide, so runs with different options can go on side by side on any threads.
struct EvaluationOptions {
    Language language = Language::japanese; // of the failure messages
    AngleUnit angles = AngleUnit::radians;  // how sin, cos, tan read plain numbers, and asin … answer
    int maxFractionDigits = 10;             // of the answers as text

    /// The process-wide defaults as they are now (the language setting resolved with the
    /// preferred languages). The settings and the command line set the defaults; whoever starts
    /// a run takes a snapshot.
    static EvaluationOptions current();

    friend bool operator==(const EvaluationOptions&, const EvaluationOptions&) = default;
};

/// The process-wide default angle mode: true when plain numbers are angles in degrees.
struct AngleMode {
    static bool degrees();
    static void setDegrees(bool degrees);
};

/// The process-wide default maximum of fraction digits (10 at start), kept between 0 and 20.
struct FractionDigits {
    static int maximum();
    static void setMaximum(int digits);
};

} // namespace lumo
