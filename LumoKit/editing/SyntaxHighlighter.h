#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// What a piece of a line is, for colouring. Raw values equal the case names.
enum class SyntaxKind { number, operatorMark, name, unit, function, keyword, quoted, comment };

/// Every case, in the order the settings screen lists them.
const std::vector<SyntaxKind>& allSyntaxKinds();
std::string_view rawValue(SyntaxKind kind);
/// The case for a raw value; nothing for any other text.
std::optional<SyntaxKind> syntaxKindFromRaw(std::string_view raw);
/// The title shown in the settings list, in the current language.
std::string title(SyntaxKind kind);

/// One coloured stretch of a line, in UTF-16 code units (the text view's unit).
struct SyntaxRange {
    std::int64_t offset = 0;
    std::int64_t length = 0;
    SyntaxKind kind = SyntaxKind::number;

    bool operator==(const SyntaxRange&) const = default;
};

/// Classifies one line (without its newline) into coloured ranges, in order and without
/// overlaps. Characters outside every range keep the default text colour.
std::vector<SyntaxRange> highlightLine(std::string_view line);

} // namespace lumo
