#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace lumo {

/// An absolute moment: seconds since 1970-01-01T00:00:00Z, double precision.
/// The file stores milliseconds.
struct Timestamp {
    double seconds = 0;

    static Timestamp now();
    static Timestamp fromSeconds(double seconds) { return Timestamp{seconds}; }

    friend auto operator<=>(const Timestamp&, const Timestamp&) = default;
};

/// "2025-01-31T09:15:00Z": ISO 8601 in UTC, to the millisecond ("2025-01-31T09:15:00.250Z")
/// when the time has a fraction of a second, with whole seconds otherwise.
std::string formatIso8601(Timestamp time);
/// Parses "YYYY-MM-DDTHH:MM:SSZ" with optional fractional seconds (read to the millisecond), or
/// a "+hh:mm"/"-hh:mm" offset in place of "Z". Every other form gives nothing.
std::optional<Timestamp> parseIso8601(std::string_view text);

} // namespace lumo
