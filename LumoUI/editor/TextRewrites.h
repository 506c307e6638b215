#pragma once

#include <QString>

#include <optional>

namespace lumo::textRewrites {

/// A line rewritten around the caret, with where the caret goes (UTF-16 offsets in the line).
struct LineRewrite {
    QString line;
    int caret = 0;

    bool operator==(const LineRewrite&) const = default;
};

/// Regroups the plain number at the caret into thousands (1234567 → 1,234,567) after an edit
/// that changed `before` into `after`. Nothing when there is no such number, when it lies in
/// quoted text or a comment, belongs to a line reference, exponent or Japanese numeral, or
/// when its grouping was not already regular before the edit (so "1,23" typed on purpose is
/// left alone). The caret stays after the same digit.
std::optional<LineRewrite> regroupDigits(const QString& before, const QString& after, int caretAfter);

/// Replaces every word of `text` that is exactly `oldName` by `newName`; quoted text and
/// comments are left as they are.
QString renameIdentifier(const QString& text, const QString& oldName, const QString& newName);

/// A short name that line `lineIndex` of `text` may be given: a single letter when one is
/// free, otherwise a letter with a number.
QString unusedLineName(const QString& text, int lineIndex);

/// How many characters of blank (spaces, tabs, ideographic spaces) a line starts with.
qsizetype indentation(const QString& line);

/// Writes "name = " in front of a line's content, after its indentation.
QString nameLine(const QString& line, const QString& name);

/// Lines `first` to `last` of `text` turned into comments ("// " after their indentation), or,
/// when every one of them that is not blank already is a comment, turned back into
/// calculations. Blank lines stay as they are.
QString toggleComments(const QString& text, int first, int last);

} // namespace lumo::textRewrites
