#pragma once

#include <QList>
#include <QString>

#include <cstdint>
#include <vector>

namespace lumo {

/// What to look for in a sheet's text.
struct SearchQuery {
    enum class Case { insensitive, sensitive };
    enum class Words { anywhere, whole };

    QString pattern;
    Case matchCase = Case::insensitive;
    /// With whole words a match may not touch a letter, digit or underscore on either side.
    Words words = Words::anywhere;

    bool isEmpty() const { return pattern.isEmpty(); }
};

/// One occurrence, in UTF-16 positions of the text (the text view's unit).
struct TextMatch {
    int start = 0;
    int length = 0;
    /// The 0-based line it starts on.
    int line = 0;

    bool operator==(const TextMatch&) const = default;
};

/// Every occurrence, in order and without overlaps. Patterns never span lines.
QList<TextMatch> findMatches(const QString& text, const SearchQuery& query);

/// The text with every occurrence outside the locked lines replaced.
struct Replacement {
    QString text;
    int replaced = 0;
    /// Occurrences left alone because their line is locked.
    int skipped = 0;
};
Replacement replaceMatches(const QString& text, const SearchQuery& query, const QString& replacement,
                           const std::vector<std::int64_t>& lockedLines);

} // namespace lumo
