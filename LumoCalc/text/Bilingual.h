#pragma once

#include <QString>

#include "LumoKit/base/Language.h"

namespace lumo {

/// A text of the interface in both languages; the Japanese one comes first, as everywhere in
/// the program. Shown in the language in force when text() is called, so views that keep a
/// Bilingual instead of a QString can relabel themselves when the language changes.
struct Bilingual {
    const char* japanese = "";
    const char* english = "";

    QString text() const { return QString::fromStdString(L10n::pick(japanese, english)); }
};

/// Chooses between two texts by the language in force.
inline QString pickText(const char* japanese, const char* english) {
    return Bilingual{japanese, english}.text();
}

inline QString pickText(const std::string& japanese, const std::string& english) {
    return QString::fromStdString(L10n::pick(japanese, english));
}

} // namespace lumo
