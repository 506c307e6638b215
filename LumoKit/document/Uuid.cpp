#include "LumoKit/document/Uuid.h"

#include <algorithm>

#include <uuid/uuid.h>

namespace lumo {

namespace {

constexpr std::size_t uuidTextLength = 36;

bool isHyphenPosition(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

Uuid Uuid::random() {
    uuid_t raw;
    uuid_generate_random(raw);
    std::array<std::uint8_t, 16> bytes{};
    std::copy(std::begin(raw), std::end(raw), bytes.begin());
    return Uuid(bytes);
}

std::optional<Uuid> Uuid::fromString(std::string_view text) {
    if (text.size() != uuidTextLength)
        return std::nullopt;
    std::array<std::uint8_t, 16> bytes{};
    std::size_t nibble = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isHyphenPosition(i)) {
            if (text[i] != '-')
                return std::nullopt;
            continue;
        }
        const int value = hexDigitValue(text[i]);
        if (value < 0)
            return std::nullopt;
        bytes[nibble / 2] =
            static_cast<std::uint8_t>(bytes[nibble / 2] | (nibble % 2 == 0 ? value << 4 : value));
        ++nibble;
    }
    return Uuid(bytes);
}

std::string Uuid::toString() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(uuidTextLength);
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += digits[m_bytes[i] >> 4];
        text += digits[m_bytes[i] & 0x0F];
    }
    return text;
}

} // namespace lumo

std::size_t std::hash<lumo::Uuid>::operator()(const lumo::Uuid& uuid) const noexcept {
    // Random identifiers are already well mixed; fold the two halves together.
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        high = (high << 8) | uuid.bytes()[i];
        low = (low << 8) | uuid.bytes()[i + 8];
    }
    return static_cast<std::size_t>(high ^ (low * 0x9E3779B97F4A7C15ULL));
}
