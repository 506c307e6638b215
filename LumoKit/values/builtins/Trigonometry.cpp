// sin, cos, tan and their inverses; plain numbers are read in the run's angle unit.

#include <cmath>
#include <limits>
#include <optional>

#include "LumoKit/values/builtins/BuiltinCall.h"

namespace lumo {

namespace {

constexpr double degree = 0.017453292519943295; // π/180, the factor of the unit deg

enum class Trig { sine, cosine, tangent };

// Whole quarter turns given in degrees answer exactly, so sin(180) in degree mode is 0 and
// tan(90) fails, instead of showing the rounding residue of π.
std::optional<double> quarterTurnValue(Trig trig, double degrees) {
    if (std::fmod(degrees, 90) != 0)
        return std::nullopt;
    const int quarter = static_cast<int>(std::fmod(std::fmod(degrees / 90, 4) + 4, 4));
    static constexpr double sines[] = {0, 1, 0, -1};
    static constexpr double cosines[] = {1, 0, -1, 0};
    switch (trig) {
    case Trig::sine:
        return sines[quarter];
    case Trig::cosine:
        return cosines[quarter];
    case Trig::tangent:
        return quarter % 2 == 0 ? 0.0 : std::numeric_limits<double>::infinity();
    }
    return std::nullopt;
}

template <Trig trig> Value trigonometric(const BuiltinCall& call) {
    const Value x = numberArgument(call.name, call.args.front());
    std::optional<double> degrees;
    double radians = x.number;
    if (x.unit) {
        const bool isAngle = x.unit->dimensions.size() == 1 && x.unit->dimensions.count("angle") == 1 &&
                             x.unit->dimensions.at("angle") == 1;
        if (!isAngle)
            throw CalcError(MessageKind::needsAngle, {call.name});
        if (x.unit->factor == degree) {
            degrees = x.number;
        } else {
            radians = x.number * x.unit->factor;
        }
    } else if (call.options.angles == AngleUnit::degrees) {
        degrees = x.number;
    }
    if (degrees) {
        if (auto exact = quarterTurnValue(trig, *degrees))
            return Value::plain(*exact);
        radians = *degrees * degree;
    }
    switch (trig) {
    case Trig::sine:
        return Value::plain(std::sin(radians));
    case Trig::cosine:
        return Value::plain(std::cos(radians));
    case Trig::tangent:
        return Value::plain(std::tan(radians));
    }
    return Value::plain(radians);
}

Value angleAnswer(double radians, const EvaluationOptions& options) {
    if (options.angles == AngleUnit::degrees)
        return Value::withUnit(radians / degree, UnitRegistry::shared().lookup("deg"));
    return Value::withUnit(radians, UnitRegistry::shared().lookup("rad"));
}

template <double (*function)(double)> Value inverseSineOrCosine(const BuiltinCall& call) {
    const double x = plainArgument(call.name, call.args.front());
    if (!(x >= -1 && x <= 1))
        throw CalcError(MessageKind::outsideMinusOneToOne, {call.name});
    return angleAnswer(function(x), call.options);
}

double asinOf(double x) {
    return std::asin(x);
}
double acosOf(double x) {
    return std::acos(x);
}

} // namespace

Value sine(const BuiltinCall& call) {
    return trigonometric<Trig::sine>(call);
}

Value cosine(const BuiltinCall& call) {
    return trigonometric<Trig::cosine>(call);
}

Value tangent(const BuiltinCall& call) {
    return trigonometric<Trig::tangent>(call);
}

Value arcsine(const BuiltinCall& call) {
    return inverseSineOrCosine<asinOf>(call);
}

Value arccosine(const BuiltinCall& call) {
    return inverseSineOrCosine<acosOf>(call);
}

Value arctangent(const BuiltinCall& call) {
    return angleAnswer(std::atan(plainArgument(call.name, call.args.front())), call.options);
}

} // namespace lumo
