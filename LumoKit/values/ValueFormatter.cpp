#include "LumoKit/values/ValueFormatter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <utility>

namespace lumo {

namespace {

constexpr std::size_t maxShownListItems = 100;
// Deeper lists are abbreviated so that formatting never recurses without bound.
constexpr int maxListDepth = 64;

// 12 − floor(log10|x|): the power of ten that brings 13 significant digits before the point.
int significantScale(double number) {
    return 12 - static_cast<int>(std::floor(std::log10(std::fabs(number))));
}

// std::to_chars never looks at the process locale, unlike the printf family.
std::string toChars(double number, std::chars_format format, int precision) {
    char buffer[512];
    auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, number, format, precision);
    if (error != std::errc())
        return {};
    return std::string(buffer, end);
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

// Drops trailing zeros after the point, and the point itself when nothing is left after it.
std::string trimFraction(std::string digits) {
    if (digits.find('.') == std::string::npos)
        return digits;
    while (digits.back() == '0')
        digits.pop_back();
    if (digits.back() == '.')
        digits.pop_back();
    return digits;
}

// 1.234560e+15 → 1.23456e15, 2.500000e-10 → 2.5e-10.
std::string exponentForm(double number) {
    std::string text = toChars(number, std::chars_format::scientific, 6);
    replaceAll(text, "e+0", "e");
    replaceAll(text, "e-0", "e-");
    replaceAll(text, "e+", "e");
    const auto e = text.find('e');
    if (e == std::string::npos)
        return text;
    return trimFraction(text.substr(0, e)) + text.substr(e);
}

// Writes the digits of a whole part at `out`, a comma between groups of three when grouped,
// and returns the end.
char* writeWholeDigits(char* out, std::string_view digits, Grouping grouping) {
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (grouping == Grouping::grouped && i != 0 && (digits.size() - i) % 3 == 0)
            *out++ = ',';
        *out++ = digits[i];
    }
    return out;
}

// Rounds the shortest fixed digits in [first, last) to `digits` fraction digits, halves away
// from zero, and drops trailing zeros after the point. A carry past the first digit writes a
// new leading "1" just before `first`, which must have room for it. Returns the new range.
std::pair<char*, char*> roundDigitsInPlace(char* first, char* last, int digits) {
    const bool negative = *first == '-';
    char* const point = std::find(first, last, '.');
    if (point == last)
        return {first, last};
    if (last - point - 1 > digits) {
        char* const cut = point + 1 + digits;
        const bool roundUp = *cut >= '5';
        last = cut;
        if (roundUp) {
            char* at = last;
            bool carry = true;
            while (carry && at-- != first + negative) {
                if (*at == '.')
                    continue;
                if (*at != '9') {
                    ++*at;
                    carry = false;
                } else {
                    *at = '0';
                }
            }
            if (carry) {
                // 9.96 → 10.0: one more digit in front, the sign moving ahead of it.
                --first;
                first[0] = negative ? '-' : '1';
                first[1] = negative ? '1' : first[1];
            }
        }
    }
    char* const newPoint = std::find(first, last, '.');
    if (newPoint != last) {
        while (last[-1] == '0')
            --last;
        if (last[-1] == '.')
            --last;
    }
    return {first, last};
}

// The form decimalForm writes, found without the shortest-digits search when the number is a
// whole count of 10^-d for a d the answer shows (2.5, 0.75, 1234.56: most fractional answers).
// While 10^-d is more than twice the spacing of doubles near the number, at most one decimal of d
// fraction digits reads back as the number, and the nearest is it; so the first d at which the
// nearest decimal reads back gives the shortest digits. Empty when no d up to the limit does.
std::string shortDecimalForm(double number, int maxFractionDigits, Grouping grouping) {
    static constexpr std::array<double, 16> powersOfTen{1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                        1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const double magnitude = std::fabs(number);
    if (magnitude == std::trunc(magnitude))
        return {}; // rounding to 13 digits can make a whole number
    const double spacing = std::nextafter(magnitude, HUGE_VAL) - magnitude;
    const int lastDigit = std::min(maxFractionDigits, static_cast<int>(powersOfTen.size()) - 1);
    for (int d = 1; d <= lastDigit; ++d) {
        const double scale = powersOfTen[static_cast<std::size_t>(d)];
        if (spacing * scale > 0.5 || magnitude * scale >= 0x1p53)
            return {};
        const double scaled = std::nearbyint(magnitude * scale);
        if (scaled / scale != magnitude)
            continue;
        char digits[24];
        const auto count = static_cast<int>(
            std::to_chars(digits, digits + sizeof digits, static_cast<long long>(scaled)).ptr - digits);
        char text[64];
        char* out = text;
        if (number < 0)
            *out++ = '-';
        const int whole = count - d;
        out = writeWholeDigits(out, whole > 0 ? std::string_view(digits, std::size_t(whole)) : "0", grouping);
        *out++ = '.';
        for (int i = whole; i < 0; ++i)
            *out++ = '0';
        for (int i = std::max(whole, 0); i < count; ++i)
            *out++ = digits[i];
        return std::string(text, out);
    }
    return {};
}

std::string decimalForm(double number, int maxFractionDigits, Grouping grouping) {
    if (std::string form = shortDecimalForm(number, maxFractionDigits, grouping); !form.empty())
        return form;
    char buffer[512];
    char* const start = buffer + 1; // room for a carry into a new first digit
    const auto [end, error] = std::to_chars(start, buffer + sizeof buffer, number, std::chars_format::fixed);
    if (error != std::errc())
        return std::to_string(number);
    const auto [first, last] = roundDigitsInPlace(start, end, maxFractionDigits);
    const std::string_view text(first, static_cast<std::size_t>(last - first));
    if (text == "-0")
        return "0";
    const std::size_t sign = text.front() == '-' ? 1 : 0;
    const std::size_t point = std::min(text.find('.'), text.size());
    const std::string_view whole = text.substr(sign, point - sign);
    std::string out(text.size() + whole.size() / 3, '\0');
    char* at = std::copy_n(text.data(), sign, out.data());
    at = writeWholeDigits(at, whole, grouping);
    at = std::copy(text.begin() + static_cast<std::ptrdiff_t>(point), text.end(), at);
    out.resize(static_cast<std::size_t>(at - out.data()));
    return out;
}

// Whole numbers below 10^13, most answers, are already at 13 significant digits and have no
// fraction: their digits are written at once, without the rounding and the shortest-digits search.
bool isSmallWholeNumber(double number) {
    return std::fabs(number) < 1e13 && number == std::trunc(number);
}

std::string wholeNumberForm(double number, Grouping grouping) {
    char digits[24];
    const auto whole = static_cast<long long>(number);
    const char* const end = std::to_chars(digits, digits + sizeof digits, whole < 0 ? -whole : whole).ptr;
    char text[40];
    char* out = text;
    if (whole < 0)
        *out++ = '-';
    out = writeWholeDigits(out, std::string_view(digits, std::size_t(end - digits)), grouping);
    return std::string(text, out);
}

std::string formatList(const Value& list, const EvaluationOptions& options, Grouping grouping, int depth);

std::string formatAt(const Value& value, const EvaluationOptions& options, Grouping grouping, int depth) {
    switch (value.kind()) {
    case Value::Kind::text:
        return "\"" + value.text() + "\"";
    case Value::Kind::list:
        return formatList(value, options, grouping, depth);
    case Value::Kind::number:
        break;
    }
    std::string out = ValueFormatter::formatNumber(value.number, options, grouping);
    if (value.isPercent())
        return out + "%";
    if (value.unit)
        out += (value.unit->tight ? "" : " ") + value.unit->display;
    return out;
}

std::string formatList(const Value& list, const EvaluationOptions& options, Grouping grouping, int depth) {
    if (depth >= maxListDepth)
        return "[…]";
    std::string out = "[";
    const std::vector<Value>& items = list.items();
    const std::size_t shown = std::min(items.size(), maxShownListItems);
    for (std::size_t i = 0; i < shown; ++i) {
        if (i != 0)
            out += ", ";
        out += formatAt(items[i], options, grouping, depth + 1);
    }
    if (shown < items.size())
        out += ", … 全 " + std::to_string(items.size()) + " 個";
    return out + "]";
}

} // namespace

int ValueFormatter::maxFractionDigits() {
    return FractionDigits::maximum();
}

void ValueFormatter::setMaxFractionDigits(int digits) {
    FractionDigits::setMaximum(digits);
}

double ValueFormatter::roundSignificant(double number) {
    if (number == 0 || !std::isfinite(number))
        return number;
    const int k = significantScale(number);
    if (k < 1 || k > 299)
        return number;
    // The same powers std::pow gives, looked up: every fractional answer needs one.
    static const std::array<double, 300> powersOfTen = [] {
        std::array<double, 300> powers{};
        for (std::size_t i = 0; i < powers.size(); ++i)
            powers[i] = std::pow(10.0, static_cast<double>(i));
        return powers;
    }();
    const double scale = powersOfTen[static_cast<std::size_t>(k)];
    return std::round(number * scale) / scale;
}

std::string ValueFormatter::formatNumber(double number, const EvaluationOptions& options, Grouping grouping) {
    if (std::isnan(number))
        return "—";
    if (std::isinf(number))
        return number > 0 ? "∞" : "-∞";
    if (number == 0)
        return "0";
    if (isSmallWholeNumber(number))
        return wholeNumberForm(number, grouping);
    const double rounded = roundSignificant(number);
    if (rounded == 0)
        return "0";
    const double magnitude = std::fabs(rounded);
    if (magnitude >= 1e15 || magnitude < 1e-9)
        return exponentForm(rounded);
    return decimalForm(rounded, options.maxFractionDigits, grouping);
}

std::string ValueFormatter::format(const Value& value, const EvaluationOptions& options, Grouping grouping) {
    return formatAt(value, options, grouping, 0);
}

} // namespace lumo
