#include "LumoKit/values/Builtins.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>

#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/base/Language.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

namespace {

using Arguments = std::vector<Value>;
using Handler = Value (*)(const std::string& fn, const Arguments& args);

constexpr double degree = 0.017453292519943295;            // π/180, the factor of the unit deg
constexpr double largestExactInteger = 9007199254740992.0; // 2^53

// ---- Argument checks shared by the functions ----

[[noreturn]] void fail(const std::string& japanese, const std::string& english) {
    throw CalcError(L10n::pick(japanese, english));
}

[[noreturn]] void throwCantTake(const std::string& fn, const Value& value) {
    fail(fn + " に" + kindNameJapanese(value) + " は渡せません",
         fn + " can’t take " + kindNameEnglish(value));
}

const Value& onlyArgument(const std::string& fn, const Arguments& args) {
    if (args.size() != 1)
        fail(fn + " は引数が 1 つ必要です", fn + " needs one argument");
    return args.front();
}

// A number argument with a percent made its fraction; any unit is kept.
Value numberArgument(const std::string& fn, const Value& value) {
    if (!value.isNumber())
        throwCantTake(fn, value);
    return withoutPercent(value);
}

double plainArgument(const std::string& fn, const Value& value) {
    const Value number = numberArgument(fn, value);
    if (number.unit)
        fail(fn + " に単位付きの値は渡せません", fn + " can’t take a value with a unit");
    return number.number;
}

double onlyPlainArgument(const std::string& fn, const Arguments& args) {
    return plainArgument(fn, onlyArgument(fn, args));
}

Value numberIn(double number, const UnitRef& unit) {
    return unit ? Value::withUnit(number, unit) : Value::plain(number);
}

bool isWhole(double number) {
    return std::isfinite(number) && number == std::round(number);
}

// min, max, sum and avg take values and lists alike; nested lists count item by item.
void flattenInto(const Arguments& args, Arguments& out) {
    for (const Value& arg : args) {
        if (arg.isList()) {
            flattenInto(arg.items, out);
        } else {
            out.push_back(arg);
        }
    }
}

Arguments flattened(const Arguments& args) {
    Arguments out;
    flattenInto(args, out);
    return out;
}

// ---- Roots, logarithms and exponentials ----

Value squareRoot(const std::string& fn, const Arguments& args) {
    const double x = onlyPlainArgument(fn, args);
    if (x < 0)
        fail("負の数の平方根は計算できません", "Can’t take the square root of a negative number");
    return Value::plain(std::sqrt(x));
}

Value cubeRoot(const std::string& fn, const Arguments& args) {
    return Value::plain(std::cbrt(onlyPlainArgument(fn, args)));
}

template <double (*function)(double)> Value logarithm(const std::string& fn, const Arguments& args) {
    const double x = onlyPlainArgument(fn, args);
    // The message names log for every base: it is the word users know the family by.
    if (x <= 0)
        fail("log は正の数にだけ使えます", "log works only on positive numbers");
    return Value::plain(function(x));
}

double log10Of(double x) {
    return std::log10(x);
}
double log2Of(double x) {
    return std::log2(x);
}
double lnOf(double x) {
    return std::log(x);
}

Value exponential(const std::string& fn, const Arguments& args) {
    return Value::plain(std::exp(onlyPlainArgument(fn, args)));
}

// ---- Sign and magnitude ----

Value absolute(const std::string& fn, const Arguments& args) {
    Value x = numberArgument(fn, onlyArgument(fn, args));
    x.number = std::fabs(x.number);
    return x;
}

Value signOf(const std::string& fn, const Arguments& args) {
    const double x = numberArgument(fn, onlyArgument(fn, args)).number;
    if (std::isnan(x))
        return Value::plain(x); // refused as not finite by the dispatcher
    return Value::plain(x > 0 ? 1 : (x < 0 ? -1 : 0));
}

// ---- Rounding ----

// Removes the binary noise that scaling adds (1.005 × 100 is 100.49999999999999), so that
// the rounding sees the decimal figure the user wrote. Locale-independent on purpose.
double toFifteenDigits(double x) {
    char buffer[64];
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, x, std::chars_format::general, 15);
    double clean = x;
    std::from_chars(buffer, written.ptr, clean);
    return clean;
}

int digitsArgument(const std::string& fn, const Value& value) {
    const Value number = numberArgument(fn, value);
    if (number.unit)
        fail("桁数に単位は使えません", "Digits can’t have a unit");
    if (!isWhole(number.number) || std::fabs(number.number) > 15) {
        fail("桁数は -15〜15 で指定してください", "Digits must be between -15 and 15");
    }
    return static_cast<int>(number.number);
}

double roundTo(double x, int digits, double (*rounding)(double)) {
    if (digits == 0)
        return rounding(x);
    const double scale = std::pow(10.0, std::abs(digits));
    if (digits < 0)
        return rounding(toFifteenDigits(x / scale)) * scale;
    const double scaled = x * scale;
    // Past 2^53 a double has no fraction left to round away.
    if (!std::isfinite(scaled) || std::fabs(scaled) >= largestExactInteger)
        return x;
    return rounding(toFifteenDigits(scaled)) / scale;
}

template <double (*rounding)(double)> Value roundingFunction(const std::string& fn, const Arguments& args) {
    if (args.empty() || args.size() > 2) {
        fail(fn + "(値) または " + fn + "(値, 桁数) で使います",
             "Use " + fn + "(value) or " + fn + "(value, digits)");
    }
    Value x = numberArgument(fn, args[0]);
    const int digits = args.size() == 2 ? digitsArgument(fn, args[1]) : 0;
    x.number = roundTo(x.number, digits, rounding);
    return x;
}

double roundHalfAway(double x) {
    return std::round(x);
}
double floorOf(double x) {
    return std::floor(x);
}
double ceilOf(double x) {
    return std::ceil(x);
}
double truncOf(double x) {
    return std::trunc(x);
}

// ---- Aggregates ----

template <bool largest> Value extreme(const std::string& fn, const Arguments& args) {
    const Arguments values = flattened(args);
    if (values.empty())
        fail(fn + " には値が必要です", fn + " needs values");
    Value best = numberArgument(fn, values.front());
    for (std::size_t i = 1; i < values.size(); ++i) {
        const Value candidate = numberArgument(fn, values[i]);
        const AlignedNumbers aligned = alignUnits(best, candidate);
        if (largest ? aligned.right > aligned.left : aligned.right < aligned.left)
            best = candidate;
    }
    return best;
}

Value total(const Arguments& values) {
    Value sum = withoutPercent(values.front());
    for (std::size_t i = 1; i < values.size(); ++i)
        sum = add(sum, withoutPercent(values[i]));
    return sum;
}

Value sumOf(const std::string&, const Arguments& args) {
    const Arguments values = flattened(args);
    if (values.empty())
        fail("sum には値が必要です", "sum needs values");
    return total(values);
}

Value averageOf(const std::string&, const Arguments& args) {
    const Arguments values = flattened(args);
    // average is a synonym and shares the message of avg.
    if (values.empty())
        fail("avg には値が必要です", "avg needs values");
    return divide(total(values), Value::plain(static_cast<double>(values.size())));
}

// ---- Lists and texts ----

Value lengthOf(const std::string&, const Arguments& args) {
    if (args.size() != 1 || args.front().isNumber()) {
        fail("len は表か文字の長さを数えます", "len counts the length of a list or text");
    }
    const Value& x = args.front();
    const std::size_t count = x.isList() ? x.items.size() : unicode::graphemeCount(x.text);
    return Value::plain(static_cast<double>(count));
}

Value textOf(const std::string& fn, const Arguments& args) {
    const Value& x = onlyArgument(fn, args);
    // A text is already text: str("a") is "a", not the quoted form the answer column shows.
    if (x.isText())
        return x;
    // Without grouping, so that the text reads back as a number and does not depend on a
    // display setting; this is the answer column's form otherwise (str(120 mm) is 120 mm).
    return Value::makeText(ValueFormatter::format(x, Grouping::none));
}

Value characterList(const std::string&, const std::string& text) {
    Arguments items;
    for (std::string& character : unicode::graphemes(text))
        items.push_back(Value::makeText(std::move(character)));
    return Value::list(std::move(items));
}

Value listOf(const std::string& fn, const Arguments& args) {
    const Value& x = onlyArgument(fn, args);
    // A list is already what list() makes.
    if (x.isList())
        return x;
    if (!x.isText())
        throwCantTake(fn, x);
    return characterList(fn, x.text);
}

Arguments sortedNumbers(const Arguments& items) {
    // Every item is read in the unit of the first item that has one, so 50 cm sorts before 1 m.
    const auto withUnit =
        std::find_if(items.begin(), items.end(), [](const Value& v) { return v.unit != nullptr; });
    const Value reference = withUnit == items.end() ? Value::plain(0) : withoutPercent(*withUnit);
    std::vector<std::pair<double, std::size_t>> keys;
    for (std::size_t i = 0; i < items.size(); ++i) {
        keys.emplace_back(alignUnits(reference, withoutPercent(items[i])).right, i);
    }
    // NaN goes last, so the ordering stays strict and weak.
    std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) {
        if (std::isnan(a.first) || std::isnan(b.first))
            return !std::isnan(a.first) && std::isnan(b.first);
        return a.first < b.first;
    });
    Arguments sorted;
    for (const auto& key : keys)
        sorted.push_back(items[key.second]);
    return sorted;
}

Arguments sortedTexts(Arguments items) {
    std::vector<std::pair<std::u32string, std::size_t>> keys;
    for (std::size_t i = 0; i < items.size(); ++i)
        keys.emplace_back(unicode::decode(unicode::nfc(items[i].text)), i);
    std::stable_sort(keys.begin(), keys.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    Arguments sorted;
    for (const auto& key : keys)
        sorted.push_back(std::move(items[key.second]));
    return sorted;
}

Value sortOf(const std::string& fn, const Arguments& args) {
    const Value& x = onlyArgument(fn, args);
    if (!x.isList())
        fail("sort は表の中身を並べ替えます", "sort arranges the items of a list");
    const auto isNumber = [](const Value& v) { return v.isNumber(); };
    const auto isText = [](const Value& v) { return v.isText(); };
    if (std::all_of(x.items.begin(), x.items.end(), isNumber))
        return Value::list(sortedNumbers(x.items));
    if (std::all_of(x.items.begin(), x.items.end(), isText))
        return Value::list(sortedTexts(x.items));
    fail("sort で並べ替えられるのは、数どうしか文字どうしです", "sort needs all numbers or all text");
}

Value reverseOf(const std::string&, const Arguments& args) {
    if (args.size() != 1 || args.front().isNumber()) {
        fail("reverse は表か文字を逆に並べます", "reverse works on a list or text");
    }
    const Value& x = args.front();
    if (x.isList())
        return Value::list(Arguments(x.items.rbegin(), x.items.rend()));
    std::vector<std::string> characters = unicode::graphemes(x.text);
    std::string reversed;
    reversed.reserve(x.text.size());
    for (auto it = characters.rbegin(); it != characters.rend(); ++it)
        reversed += *it;
    return Value::makeText(std::move(reversed));
}

// ---- Trigonometry ----

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

template <Trig trig> Value trigonometric(const std::string& fn, const Arguments& args) {
    const Value x = numberArgument(fn, onlyArgument(fn, args));
    std::optional<double> degrees;
    double radians = x.number;
    if (x.unit) {
        const bool isAngle = x.unit->dimensions.size() == 1 && x.unit->dimensions.count("angle") == 1 &&
                             x.unit->dimensions.at("angle") == 1;
        if (!isAngle)
            fail(fn + " には角度を渡してください", fn + " needs an angle");
        if (x.unit->factor == degree) {
            degrees = x.number;
        } else {
            radians = x.number * x.unit->factor;
        }
    } else if (AngleMode::degrees()) {
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

Value angleAnswer(double radians) {
    if (AngleMode::degrees())
        return Value::withUnit(radians / degree, UnitRegistry::shared().lookup("deg"));
    return Value::withUnit(radians, UnitRegistry::shared().lookup("rad"));
}

template <double (*function)(double)>
Value inverseSineOrCosine(const std::string& fn, const Arguments& args) {
    const double x = onlyPlainArgument(fn, args);
    if (!(x >= -1 && x <= 1))
        fail(fn + " は -1〜1 の値にだけ使えます", fn + " needs a value between -1 and 1");
    return angleAnswer(function(x));
}

double asinOf(double x) {
    return std::asin(x);
}
double acosOf(double x) {
    return std::acos(x);
}

Value arctangent(const std::string& fn, const Arguments& args) {
    return angleAnswer(std::atan(onlyPlainArgument(fn, args)));
}

// ---- Two-argument arithmetic ----

Value powerOf(const std::string&, const Arguments& args) {
    if (args.size() != 2)
        fail("pow(値, 指数) で使います", "Use pow(value, exponent)");
    return power(args[0], args[1]);
}

Value remainderOf(const std::string& fn, const Arguments& args) {
    if (args.size() != 2)
        fail("mod(値, 値) で使います", "Use mod(value, value)");
    const AlignedNumbers aligned = alignUnits(numberArgument(fn, args[0]), numberArgument(fn, args[1]));
    if (aligned.right == 0)
        fail("0 では割れません", "Cannot divide by zero");
    return numberIn(std::fmod(aligned.left, aligned.right), aligned.unit);
}

Value hypotenuse(const std::string& fn, const Arguments& args) {
    if (args.size() != 2)
        fail("hypot(値, 値) で使います", "Use hypot(value, value)");
    const AlignedNumbers aligned = alignUnits(numberArgument(fn, args[0]), numberArgument(fn, args[1]));
    return numberIn(std::hypot(aligned.left, aligned.right), aligned.unit);
}

[[noreturn]] void throwIntegerUsage(const std::string& fn) {
    fail(fn + "(整数, 整数) で使います", "Use " + fn + "(integer, integer)");
}

std::uint64_t integerArgument(const std::string& fn, const Value& value) {
    const double x = plainArgument(fn, value);
    if (!isWhole(x))
        throwIntegerUsage(fn);
    if (std::fabs(x) > largestExactInteger)
        fail(fn + " には大きすぎる数です", "The numbers are too large for " + fn);
    return static_cast<std::uint64_t>(std::fabs(x));
}

std::pair<std::uint64_t, std::uint64_t> integerPair(const std::string& fn, const Arguments& args) {
    if (args.size() != 2)
        throwIntegerUsage(fn);
    const std::uint64_t a = integerArgument(fn, args[0]);
    return {a, integerArgument(fn, args[1])};
}

[[noreturn]] void throwZero() {
    fail("0 は使えません", "Zero can’t be used here");
}

// gcd(0, n) is n, but gcd(0, 0) has no greatest divisor.
Value greatestCommonDivisor(const std::string& fn, const Arguments& args) {
    const auto [a, b] = integerPair(fn, args);
    if (a == 0 && b == 0)
        throwZero();
    return Value::plain(static_cast<double>(std::gcd(a, b)));
}

// Zero has no positive multiple, so any zero is refused.
Value leastCommonMultiple(const std::string& fn, const Arguments& args) {
    const auto [a, b] = integerPair(fn, args);
    if (a == 0 || b == 0)
        throwZero();
    std::uint64_t result = 0;
    const bool overflow = __builtin_mul_overflow(a / std::gcd(a, b), b, &result);
    if (overflow || result > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        fail("lcm の答えが大きすぎます", "The lcm result is too large");
    }
    return Value::plain(static_cast<double>(result));
}

// ---- The table ----

struct Builtin {
    std::string_view name;
    Handler handler;
};

// In the engine's order; the catalogs and the name checks list them this way.
constexpr Builtin builtins[] = {
    {"sqrt", squareRoot},
    {"cbrt", cubeRoot},
    {"abs", absolute},
    {"sign", signOf},
    {"round", roundingFunction<roundHalfAway>},
    {"floor", roundingFunction<floorOf>},
    {"ceil", roundingFunction<ceilOf>},
    {"trunc", roundingFunction<truncOf>},
    {"min", extreme<false>},
    {"max", extreme<true>},
    {"sum", sumOf},
    {"avg", averageOf},
    {"average", averageOf},
    {"len", lengthOf},
    {"str", textOf},
    {"list", listOf},
    {"sort", sortOf},
    {"reverse", reverseOf},
    {"ln", logarithm<lnOf>},
    {"log", logarithm<log10Of>},
    {"log2", logarithm<log2Of>},
    {"log10", logarithm<log10Of>},
    {"exp", exponential},
    {"sin", trigonometric<Trig::sine>},
    {"cos", trigonometric<Trig::cosine>},
    {"tan", trigonometric<Trig::tangent>},
    {"asin", inverseSineOrCosine<asinOf>},
    {"acos", inverseSineOrCosine<acosOf>},
    {"atan", arctangent},
    {"pow", powerOf},
    {"mod", remainderOf},
    {"hypot", hypotenuse},
    {"gcd", greatestCommonDivisor},
    {"lcm", leastCommonMultiple},
};

const Builtin* findBuiltin(std::string_view name) {
    for (const Builtin& builtin : builtins) {
        if (builtin.name == name)
            return &builtin;
    }
    return nullptr;
}

} // namespace

const std::vector<std::string>& builtinFunctionNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> list;
        for (const Builtin& builtin : builtins)
            list.emplace_back(builtin.name);
        return list;
    }();
    return names;
}

bool isBuiltinFunction(std::string_view name) {
    return findBuiltin(name) != nullptr;
}

std::optional<Value> callBuiltin(const std::string& name, const std::vector<Value>& args) {
    const Builtin* builtin = findBuiltin(name);
    if (!builtin)
        return std::nullopt;
    const Value result = builtin->handler(name, args);
    if (result.isNumber() && !std::isfinite(result.number))
        fail("計算できません", "Can’t calculate this");
    return result;
}

} // namespace lumo
