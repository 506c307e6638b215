#pragma once

#include <string>
#include <utility>

#include "LumoKit/document/Document.h"

namespace lumo::test {

/// Sheets named by one hex digit: sheet 'A' has the identifier AAAAAAAA-AAAA-….
inline Uuid idOf(char letter) {
    std::string text(36, letter);
    for (std::size_t hyphen : {8, 13, 18, 23})
        text[hyphen] = '-';
    return *Uuid::fromString(text);
}

inline Sheet sheet(char letter, double updatedAt, std::string text = "") {
    return Sheet{idOf(letter), std::string(1, letter), std::move(text), Timestamp{updatedAt}, {}};
}

} // namespace lumo::test
