#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

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

} // namespace lumo

template <> struct std::hash<lumo::Uuid> { std::size_t operator()(const lumo::Uuid& uuid) const noexcept; };
