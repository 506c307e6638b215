#include "LumoKit/base/EvaluationOptions.h"

#include <atomic>

namespace lumo {

namespace {

std::atomic<bool> g_degrees{false};

} // namespace

bool AngleMode::degrees() {
    return g_degrees.load(std::memory_order_relaxed);
}

void AngleMode::setDegrees(bool degrees) {
    g_degrees.store(degrees, std::memory_order_relaxed);
}

} // namespace lumo
