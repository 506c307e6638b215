#include "LumoUI/find/TextSearch.h"

#include <algorithm>

namespace lumo {

namespace {

bool isWordCharacter(QChar c) {
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c.category() == QChar::Mark_NonSpacing;
}

bool standsAlone(const QString& text, int start, int length) {
    const bool before = start > 0 && isWordCharacter(text[start - 1]);
    const bool after = start + length < text.size() && isWordCharacter(text[start + length]);
    return !before && !after;
}

} // namespace

QList<TextMatch> findMatches(const QString& text, const SearchQuery& query) {
    QList<TextMatch> matches;
    if (query.isEmpty())
        return matches;
    const Qt::CaseSensitivity sensitivity =
        query.matchCase == SearchQuery::Case::sensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const int length = int(query.pattern.size());
    int line = 0;
    int counted = 0; // the position up to which line breaks have been counted
    for (int from = 0;;) {
        const int start = int(text.indexOf(query.pattern, from, sensitivity));
        if (start < 0)
            break;
        if (query.words == SearchQuery::Words::whole && !standsAlone(text, start, length)) {
            from = start + 1;
            continue;
        }
        line += int(std::count(text.begin() + counted, text.begin() + start, QLatin1Char('\n')));
        counted = start;
        matches.append(TextMatch{start, length, line});
        from = start + length;
    }
    return matches;
}

Replacement replaceMatches(const QString& text, const SearchQuery& query, const QString& replacement,
                           const std::vector<std::int64_t>& lockedLines) {
    Replacement result;
    int copied = 0;
    for (const TextMatch& match : findMatches(text, query)) {
        if (std::find(lockedLines.begin(), lockedLines.end(), match.line) != lockedLines.end()) {
            ++result.skipped;
            continue;
        }
        result.text += QStringView(text).mid(copied, match.start - copied);
        result.text += replacement;
        copied = match.start + match.length;
        ++result.replaced;
    }
    result.text += QStringView(text).mid(copied);
    return result;
}

} // namespace lumo
