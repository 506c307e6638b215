#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The engine's single doorway to Unicode questions; every answer comes from utf8proc.
namespace lumo::unicode {

/// Whether every byte is ASCII.
bool isAscii(std::string_view text);
/// Decodes UTF-8 into scalars; each invalid byte becomes U+FFFD.
std::u32string decode(std::string_view text);
/// Decodes the first scalar of a non-empty text and returns its length in bytes; an invalid
/// byte reads as U+FFFD of length 1.
std::size_t decodeFirst(std::string_view text, char32_t& scalar);
std::string encode(char32_t scalar);
std::string encode(std::u32string_view scalars);

/// Splits text into user-perceived characters (extended grapheme clusters), each as UTF-8.
std::vector<std::string> graphemes(std::string_view text);
/// The byte offsets at which the grapheme clusters begin, followed by the text's size: the
/// same clusters as graphemes(), located in the text itself.
std::vector<std::size_t> graphemeBoundaries(std::string_view text);
/// The number of grapheme clusters.
std::size_t graphemeCount(std::string_view text);

bool isLetter(char32_t c);
/// Any character with a numeric category (Nd, Nl, No).
bool isNumber(char32_t c);
bool isWhitespace(char32_t c);

/// Lower-cases every scalar (simple case mapping).
std::string toLower(std::string_view text);
/// Upper-cases every scalar (simple case mapping).
std::string toUpper(std::string_view text);
/// Canonical composition (NFC).
std::string nfc(std::string_view text);

/// Terminal display width in columns: East Asian wide characters count 2, marks 0.
std::size_t displayWidth(std::string_view text);

/// Trims characters with the white-space property at both ends.
std::string trim(std::string_view text);
/// The same trim as a view into the text, for valid UTF-8 (an invalid byte is kept as it is,
/// where trim would repair it).
std::string_view trimView(std::string_view text);

/// Whether the text is valid UTF-8.
bool isValidUtf8(std::string_view text);
/// The text with each invalid byte replaced by U+FFFD.
std::string repairUtf8(std::string_view text);

/// Offsets in UTF-16 code units, the unit of the desktop toolkit's text storage.
std::size_t utf16Length(std::string_view text);
/// The UTF-8 byte offset of a UTF-16 offset (clamped to the text).
std::size_t byteOffsetOfUtf16(std::string_view text, std::size_t utf16Offset);
/// The UTF-16 offset of a UTF-8 byte offset (clamped to the text).
std::size_t utf16OffsetOfByte(std::string_view text, std::size_t byteOffset);

/// Splits a text at "\n" the way the editor shows lines: an empty text is one line,
/// and a text ending in "\n" has an empty last line.
std::vector<std::string> splitLines(std::string_view text);

} // namespace lumo::unicode
