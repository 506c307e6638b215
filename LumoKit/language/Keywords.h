#pragma once

// The words and line rules that the parser, the program structure and the highlighter all
// read: one list of each, so that what is coloured as a keyword or a note is exactly what
// evaluation takes as one.

#include <algorithm>
#include <array>
#include <string_view>

namespace lumo::keywords {

/// The words that start or steer a block of a sheet's program.
inline constexpr std::array<std::string_view, 9> statementWords = {
    "if", "elif", "else", "for", "while", "def", "return", "break", "continue"};
/// The words that convert a value to a unit: 5 km in m, 5 km へ m.
inline constexpr std::array<std::string_view, 5> conversionWords = {"in", "to", "as", "へ", "で"};
/// The words of percentages and logic inside expressions.
inline constexpr std::array<std::string_view, 4> expressionWords = {"of", "and", "or", "not"};
/// The truth values, which are constants but never names.
inline constexpr std::array<std::string_view, 2> truthWords = {"True", "False"};

template <std::size_t N> bool isAmong(std::string_view word, const std::array<std::string_view, N>& words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

inline bool isStatementWord(std::string_view word) {
    return isAmong(word, statementWords);
}

inline bool isConversionWord(std::string_view word) {
    return word.size() <= 3 && isAmong(word, conversionWords);
}

/// A word that can never be a name: every word of the lists above.
inline bool isReservedWord(std::string_view word) {
    return word.size() <= 8 && (isAmong(word, statementWords) || isAmong(word, conversionWords) ||
                                isAmong(word, expressionWords) || isAmong(word, truthWords));
}

/// The numeral rule at the start of a text: whether its first character is a number in any
/// script (3, ３, ³, Ⅻ …).
bool startsWithNumeral(std::string_view text);

/// The note rule, for a line trimmed at both ends: "//" or "＃" starts a note, and so does
/// "#" unless a numeral follows it ("#3" refers to line 3).
bool isNoteText(std::string_view trimmed);

} // namespace lumo::keywords
