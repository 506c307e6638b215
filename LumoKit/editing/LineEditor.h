#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// The six cursor keys of the keypad. Raw values: "up", "down", "left", "right",
/// "lineStart", "lineEnd".
enum class CursorMove { up, down, left, right, lineStart, lineEnd };

/// Every case, in declaration order.
const std::vector<CursorMove>& allCursorMoves();
std::string_view rawValue(CursorMove move);
/// The case for a raw value; nothing for any other text.
std::optional<CursorMove> cursorMoveFromRaw(std::string_view raw);

/// A snippet that a keypad key asks the editor to insert.
struct InsertSnippet {
    std::string text;
    /// How many characters the caret moves back after the insertion (0 for none).
    std::int64_t caretBack = 0;
    /// True when the snippet is the name of a value, so that it is added to what precedes it.
    bool isNamedValue = false;

    bool operator==(const InsertSnippet&) const = default;
};

/// How snippetSpacing() joins a snippet to a word or number just before the caret.
enum class SnippetRole {
    plain,      ///< separated by a space
    namedValue, ///< separated by " + ", so that the value is summed
};

/// The text and caret after toggling a sign; the caret counts grapheme clusters.
struct SignToggle {
    std::string text;
    std::int64_t caret = 0;

    bool operator==(const SignToggle&) const = default;
};

/// Pure text operations behind the keypad keys and the return key. Every function clamps
/// the caret to 0 … length first. `move` and `newlineIndent` count the caret in UTF-16 code
/// units (the text view's unit); the others count grapheme clusters.
struct LineEditor {

    /// Where the caret goes for a cursor key (UTF-16 offset).
    static std::int64_t move(CursorMove kind, std::string_view text, std::int64_t caret);

    /// The indentation to insert after the newline when return is pressed at the caret
    /// (UTF-16 offset): the line's leading blanks, plus four spaces after a trailing colon.
    static std::string newlineIndent(std::string_view text, std::int64_t caret);

    /// Toggles the sign of the number just before the caret, or inserts "-" when there is none.
    static SignToggle toggleSign(std::string_view text, std::int64_t caret);

    /// The text to insert for a snippet: prefixed with " " (or " + " for a named value) when
    /// both it and the character before the caret are word characters.
    static std::string snippetSpacing(std::string_view snippet, std::string_view text, std::int64_t caret,
                                      SnippetRole role);
    static std::string snippetSpacing(const InsertSnippet& snippet, std::string_view text,
                                      std::int64_t caret);

    /// The text the "×" key inserts: nothing inside a comment, "× " at the start of the text or
    /// after a blank or newline, " × " elsewhere.
    static std::string multiplySign(std::string_view text, std::int64_t caret);
};

} // namespace lumo
