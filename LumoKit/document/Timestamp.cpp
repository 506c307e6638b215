#include "LumoKit/document/Timestamp.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <utility>

namespace lumo {

Timestamp Timestamp::now() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Timestamp{std::chrono::duration<double>(sinceEpoch).count()};
}

namespace {

using namespace std::chrono;

// Years 0000 to 9999 are the ones the four-digit form can hold.
const double earliestWritableSeconds =
    static_cast<double>(sys_seconds(sys_days(year(0) / January / 1)).time_since_epoch().count());
const double latestWritableSeconds =
    static_cast<double>(sys_seconds(sys_days(year(9999) / December / 31)).time_since_epoch().count()) + 86399;

void appendPadded(std::string& out, long value, int width) {
    std::string digits = std::to_string(value);
    if (static_cast<int>(digits.size()) < width)
        out.append(static_cast<std::size_t>(width) - digits.size(), '0');
    out += digits;
}

// Reads `count` decimal digits at `position`; nothing if any is not a digit.
std::optional<int> readDigits(std::string_view text, std::size_t position, std::size_t count) {
    int value = 0;
    for (std::size_t i = position; i < position + count; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

bool hasSeparatorsAt(std::string_view text, std::initializer_list<std::pair<std::size_t, char>> separators) {
    return std::all_of(separators.begin(), separators.end(),
                       [&](const auto& separator) { return text[separator.first] == separator.second; });
}

// The offset east of UTC in seconds for "Z", "+hh:mm" or "-hh:mm".
std::optional<int> readZoneOffset(std::string_view zone) {
    if (zone == "Z")
        return 0;
    if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') || zone[3] != ':')
        return std::nullopt;
    const auto hours = readDigits(zone, 1, 2);
    const auto minutes = readDigits(zone, 4, 2);
    if (!hours || !minutes || *hours > 23 || *minutes > 59)
        return std::nullopt;
    const int offset = *hours * 3600 + *minutes * 60;
    return zone[0] == '+' ? offset : -offset;
}

} // namespace

std::string formatIso8601(Timestamp time) {
    // Milliseconds are the precision kept: in memory, times are whole milliseconds already.
    const double milliseconds = std::isfinite(time.seconds) ? std::round(time.seconds * 1000.0) : 0.0;
    double seconds = std::floor(milliseconds / 1000.0);
    long fraction = static_cast<long>(milliseconds - seconds * 1000.0);
    if (seconds < earliestWritableSeconds || seconds > latestWritableSeconds) {
        seconds = std::clamp(seconds, earliestWritableSeconds, latestWritableSeconds);
        fraction = 0;
    }
    const sys_seconds moment{std::chrono::seconds(static_cast<std::int64_t>(seconds))};
    const sys_days day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss clock{moment - day};

    std::string text;
    text.reserve(20);
    appendPadded(text, static_cast<int>(date.year()), 4);
    text += '-';
    appendPadded(text, static_cast<long>(static_cast<unsigned>(date.month())), 2);
    text += '-';
    appendPadded(text, static_cast<long>(static_cast<unsigned>(date.day())), 2);
    text += 'T';
    appendPadded(text, clock.hours().count(), 2);
    text += ':';
    appendPadded(text, clock.minutes().count(), 2);
    text += ':';
    appendPadded(text, static_cast<long>(clock.seconds().count()), 2);
    if (fraction != 0) {
        text += '.';
        appendPadded(text, fraction, 3);
    }
    text += 'Z';
    return text;
}

std::optional<Timestamp> parseIso8601(std::string_view text) {
    constexpr std::size_t dateTimeLength = 19; // "YYYY-MM-DDTHH:MM:SS"
    if (text.size() <= dateTimeLength)
        return std::nullopt;
    if (!hasSeparatorsAt(text, {{4, '-'}, {7, '-'}, {10, 'T'}, {13, ':'}, {16, ':'}}))
        return std::nullopt;
    const auto yearValue = readDigits(text, 0, 4);
    const auto monthValue = readDigits(text, 5, 2);
    const auto dayValue = readDigits(text, 8, 2);
    const auto hourValue = readDigits(text, 11, 2);
    const auto minuteValue = readDigits(text, 14, 2);
    const auto secondValue = readDigits(text, 17, 2);
    // Fractional seconds: the first three digits count, to the millisecond.
    std::size_t zoneStart = dateTimeLength;
    std::int64_t milliseconds = 0;
    if (text[zoneStart] == '.') {
        std::size_t digits = 0;
        while (zoneStart + 1 + digits < text.size() && text[zoneStart + 1 + digits] >= '0' &&
               text[zoneStart + 1 + digits] <= '9') {
            if (digits < 3)
                milliseconds = milliseconds * 10 + (text[zoneStart + 1 + digits] - '0');
            ++digits;
        }
        if (digits == 0)
            return std::nullopt;
        for (std::size_t padding = digits; padding < 3; ++padding)
            milliseconds *= 10;
        zoneStart += 1 + digits;
    }
    const auto offset = readZoneOffset(text.substr(zoneStart));
    if (!yearValue || !monthValue || !dayValue || !hourValue || !minuteValue || !secondValue || !offset)
        return std::nullopt;
    if (*hourValue > 23 || *minuteValue > 59 || *secondValue > 59)
        return std::nullopt;
    const year_month_day date{year(*yearValue), month(static_cast<unsigned>(*monthValue)),
                              day(static_cast<unsigned>(*dayValue))};
    if (!date.ok())
        return std::nullopt;
    const auto dayStart = sys_seconds(sys_days(date)).time_since_epoch().count();
    const std::int64_t seconds = dayStart + *hourValue * 3600 + *minuteValue * 60 + *secondValue - *offset;
    // Built from whole milliseconds, like every time made in memory, so the two compare equal.
    return Timestamp{static_cast<double>(seconds * 1000 + milliseconds) / 1000.0};
}

} // namespace lumo
