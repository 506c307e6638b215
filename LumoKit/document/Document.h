#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// A sheet identifier: a 128-bit UUID, written upper-case in its 36-character form.
/// A default-constructed Uuid is the nil UUID.
class Uuid {
public:
    Uuid() = default;
    explicit Uuid(const std::array<std::uint8_t, 16>& bytes) : m_bytes(bytes) {}

    /// A fresh random (version 4) identifier.
    static Uuid random();
    /// Parses the 8-4-4-4-12 hexadecimal form in either case; nothing for any other text.
    static std::optional<Uuid> fromString(std::string_view text);

    /// The canonical form: upper-case hexadecimal with hyphens.
    std::string toString() const;
    const std::array<std::uint8_t, 16>& bytes() const { return m_bytes; }

    friend auto operator<=>(const Uuid&, const Uuid&) = default;

private:
    std::array<std::uint8_t, 16> m_bytes{};
};

/// An absolute moment: seconds since 1970-01-01T00:00:00Z, double precision.
/// The file stores whole seconds only.
struct Timestamp {
    double seconds = 0;

    static Timestamp now();
    static Timestamp fromSeconds(double seconds) { return Timestamp{seconds}; }

    friend auto operator<=>(const Timestamp&, const Timestamp&) = default;
};

/// "2025-01-31T09:15:00Z": ISO 8601 in UTC with whole seconds (fractions are dropped).
std::string formatIso8601(Timestamp time);
/// Parses "YYYY-MM-DDTHH:MM:SSZ" (or a "+hh:mm"/"-hh:mm" offset in place of "Z").
/// Fractional seconds and every other form give nothing.
std::optional<Timestamp> parseIso8601(std::string_view text);

/// One named page of calculation text.
struct Sheet {
    Uuid id;
    std::string name;
    std::string text;
    /// Last change of name, text or locked lines; the merge compares it.
    Timestamp updatedAt;
    /// Zero-based line numbers the user has locked.
    std::vector<std::int64_t> lockedLines;

    friend bool operator==(const Sheet&, const Sheet&) = default;
};

/// Keypad layouts as the key layout store keeps them: layout → tab → key identifiers.
using KeyLayouts = std::map<std::string, std::map<std::string, std::vector<std::string>>>;

/// The persisted document: sheets in tab order plus what merging two copies needs.
struct LumoDocument {
    std::vector<Sheet> sheets;
    std::optional<Uuid> selectedSheetID;
    /// Tombstones: the deleted sheet's canonical identifier → the moment of deletion.
    std::map<std::string, Timestamp> deletedSheets;
    KeyLayouts keyLayouts;
    std::optional<Timestamp> keyLayoutsUpdatedAt;
    std::optional<Timestamp> sheetOrderUpdatedAt;

    friend bool operator==(const LumoDocument&, const LumoDocument&) = default;

    /// This document merged with another copy of it (self wins ties): tombstones are
    /// united, the later edit of each sheet is kept, a deletion at or after a sheet's
    /// last edit removes it, the order and the key layouts come from the copy that
    /// changed them later, tombstones older than 60 days before `now` are dropped, and
    /// an empty result gets one empty "New Sheet".
    LumoDocument merged(const LumoDocument& other, Timestamp now) const;

    /// This document with duplicates removed and the selection repaired. Sheets that
    /// share an identifier collapse into the one with the latest `updatedAt` (the first
    /// on ties), in the place of the first. Sheets with the same name and text collapse
    /// into the one with the earliest `updatedAt` (the smaller identifier on equal dates); the
    /// others get tombstones dated `now`.
    /// A missing or dangling selection becomes the first sheet.
    LumoDocument normalized(Timestamp now) const;
};

/// The interval after which a tombstone is forgotten: 60 days.
inline constexpr double tombstoneLifetimeSeconds = 60.0 * 24 * 60 * 60;

/// A document file that cannot be read. The message says what is wrong and where.
class DocumentDecodeError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The document file ("document.json"): pretty printed JSON with sorted keys.
/// Invalid UTF-8 in a text is written as U+FFFD rather than failing.
std::string encodeDocument(const LumoDocument& document);
/// Throws DocumentDecodeError for anything that is not a valid document file.
LumoDocument decodeDocument(std::string_view bytes);

/// A single sheet in the same JSON form as inside the document file.
std::string encodeSheet(const Sheet& sheet);
/// Throws DocumentDecodeError like decodeDocument().
Sheet decodeSheet(std::string_view bytes);

} // namespace lumo

template <> struct std::hash<lumo::Uuid> { std::size_t operator()(const lumo::Uuid& uuid) const noexcept; };
