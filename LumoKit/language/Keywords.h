#pragma once

// The words and line rules that the parser, the program structure and the highlighter all
// read: one list of each, so that what is coloured as a keyword or a note is exactly what
// evaluation takes as one.

#include <array>
#include <cstddef>
#include <string_view>

namespace lumo::keywords {

/// The words that start or steer a block of a sheet's program, in the order of `statementWords`.
enum class StatementWord {
    ifWord,
    elifWord,
    elseWord,
    forWord,
    whileWord,
    defWord,
    returnWord,
    breakWord,
    continueWord
};
inline constexpr std::array<std::string_view, 9> statementWords = {
    "if", "elif", "else", "for", "while", "def", "return", "break", "continue"};

constexpr std::string_view spelling(StatementWord word) {
    return statementWords[static_cast<std::size_t>(word)];
}

/// The words that convert a value to a unit: 5 km in m, 5 km へ m.
inline constexpr std::array<std::string_view, 5> conversionWords = {"in", "to", "as", "へ", "で"};
/// "in" also separates a loop's name from what it runs over: for i in range(3).
inline constexpr std::string_view inWord = conversionWords[0];

/// The words of percentages and logic inside expressions.
inline constexpr std::string_view ofWord = "of";
inline constexpr std::string_view andWord = "and";
inline constexpr std::string_view orWord = "or";
inline constexpr std::string_view notWord = "not";
inline constexpr std::array<std::string_view, 4> expressionWords = {ofWord, andWord, orWord, notWord};
/// "10% の 3000" reads like "10% of 3000", but の is not reserved: it may end a name.
inline constexpr std::string_view japaneseOfWord = "の";

/// The truth values, which are constants but never names.
inline constexpr std::array<std::string_view, 2> truthWords = {"True", "False"};

/// The function a for loop counts with, in any letter case: for i in range(1, 4).
inline constexpr std::string_view rangeWord = "range";

// A plain loop rather than std::find: the parser asks this for every name it meets, and the
// loop is small enough to be inlined there.
template <std::size_t N> bool isAmong(std::string_view word, const std::array<std::string_view, N>& words) {
    for (const std::string_view candidate : words) {
        if (candidate == word)
            return true;
    }
    return false;
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

/// The words coloured as the program's: the statement words, "in" (of loops and conversions
/// alike), the logic words, the truth values and range, which only loops take. Exact spelling.
inline bool isProgramWord(std::string_view word) {
    return isStatementWord(word) || isAmong(word, truthWords) || word == inWord || word == andWord ||
           word == orWord || word == notWord || word == rangeWord;
}

/// The numeral rule at the start of a text: whether its first character is a number in any
/// script (3, ３, ³, Ⅻ …).
bool startsWithNumeral(std::string_view text);

/// What starts a note. A line that starts with it is a note to evaluation and editor alike.
/// After code ("x = 2 // why") the editor colours the rest as a note and keeps the × key's
/// sign out of it, while evaluation reads the whole line, which then fails.
inline constexpr std::string_view noteMarker = "//";

/// The note rule, for a line trimmed at both ends: "//" or "＃" starts a note, and so does
/// "#" unless a numeral follows it ("#3" refers to line 3).
bool isNoteText(std::string_view trimmed);

} // namespace lumo::keywords
