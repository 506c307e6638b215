#include "LumoUI/editor/TextRewrites.h"

#include <QSet>

#include <algorithm>
#include <QStringList>

#include "LumoKit/editing/SyntaxHighlighter.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/language/Lexer.h"
#include "LumoKit/sheet/Naming.h"

namespace lumo::textRewrites {

namespace {

bool isWordKind(SyntaxKind kind) {
    return kind == SyntaxKind::name || kind == SyntaxKind::unit || kind == SyntaxKind::function ||
           kind == SyntaxKind::keyword;
}

// The coloured range that holds the character just before `caret`, if any.
std::optional<SyntaxRange> rangeBefore(const std::vector<SyntaxRange>& ranges, int caret) {
    for (const SyntaxRange& range : ranges) {
        if (range.offset < caret && caret <= range.offset + range.length)
            return range;
    }
    return std::nullopt;
}

bool insideQuotesOrComment(const std::vector<SyntaxRange>& ranges, int caret) {
    for (const SyntaxRange& range : ranges) {
        const bool textual = range.kind == SyntaxKind::quoted || range.kind == SyntaxKind::comment;
        if (textual && range.offset < caret && caret <= range.offset + range.length)
            return true;
    }
    return false;
}

// An integer part is regular when it has no commas, or when every comma is followed by exactly
// three digits and the first group has one to three.
bool isRegularlyGrouped(const QString& integer) {
    if (!integer.contains(u','))
        return true;
    const QStringList groups = integer.split(u',');
    if (groups.front().isEmpty() || groups.front().size() > 3)
        return false;
    for (qsizetype i = 1; i < groups.size(); ++i) {
        if (groups[i].size() != 3)
            return false;
    }
    return true;
}

// Whether a quote opened before `end` is still open there; such text is being typed as text.
bool insideOpenQuote(const QString& line, int end) {
    lexer::QuoteClass open = lexer::QuoteClass::none;
    for (int i = 0; i < end; ++i) {
        if (open != lexer::QuoteClass::none && line[i] == u'\\') {
            ++i;
            continue;
        }
        const lexer::QuoteClass quote = lexer::quoteClassOf(QString(line[i]).toStdString());
        if (open == lexer::QuoteClass::none)
            open = quote;
        else if (quote == open)
            open = lexer::QuoteClass::none;
    }
    return open != lexer::QuoteClass::none;
}

bool isPlainNumber(const QString& run) {
    int points = 0;
    for (QChar c : run) {
        if (c == u'.')
            ++points;
        else if (!(c.isDigit() && c.unicode() < 128) && c != u',')
            return false;
    }
    return points <= 1;
}

QString grouped(const QString& digits) {
    QString out;
    const qsizetype lead = digits.size() % 3 == 0 ? 3 : digits.size() % 3;
    out += digits.left(lead);
    for (qsizetype i = lead; i < digits.size(); i += 3)
        out += u',' + digits.mid(i, 3);
    return out;
}

} // namespace

std::optional<LineRewrite> regroupDigits(const QString& before, const QString& after, int caretAfter) {
    const std::vector<SyntaxRange> ranges = highlightLine(after.toStdString());
    if (insideQuotesOrComment(ranges, caretAfter))
        return std::nullopt;
    const std::optional<SyntaxRange> number = rangeBefore(ranges, caretAfter);
    if (!number || number->kind != SyntaxKind::number)
        return std::nullopt;
    const int start = int(number->offset);
    const int end = int(number->offset + number->length);
    // A line reference (#12) or a number glued to a word is not a quantity to group.
    if (start > 0 && (after[start - 1] == u'#' || after[start - 1].isLetter() || after[start - 1] == u'_'))
        return std::nullopt;
    if (end < after.size() && (after[end] == u'e' || after[end] == u'E'))
        return std::nullopt;
    if (insideOpenQuote(after, start))
        return std::nullopt;
    const QString run = after.mid(start, end - start);
    if (!isPlainNumber(run))
        return std::nullopt;

    const qsizetype point = run.indexOf(u'.');
    const QString integer = point < 0 ? run : run.left(point);
    // Digits after the point are never grouped, and a caret there leaves the number alone.
    if (caretAfter - start > integer.size())
        return std::nullopt;
    QString digits = integer;
    digits.remove(u',');
    if (digits.isEmpty() || (digits.size() > 1 && digits.front() == u'0'))
        return std::nullopt;

    // The same run as it stood before the edit must have been grouped regularly. The edit
    // changed only what lies between the common prefix and suffix of the two lines.
    const int prefix = [&] {
        int n = 0;
        while (n < before.size() && n < after.size() && before[n] == after[n])
            ++n;
        return n;
    }();
    const int oldEnd = int(before.size()) - (int(after.size()) - end);
    if (start > prefix || oldEnd < start || oldEnd > before.size())
        return std::nullopt;
    QString oldIntegerPart = before.mid(start, oldEnd - start);
    if (const qsizetype oldPoint = oldIntegerPart.indexOf(u'.'); oldPoint >= 0)
        oldIntegerPart = oldIntegerPart.left(oldPoint);
    if (!isRegularlyGrouped(oldIntegerPart))
        return std::nullopt;

    const QString regrouped = grouped(digits);
    if (regrouped == integer)
        return std::nullopt;
    // The caret stays after the same number of digits.
    const QString head = integer.left(caretAfter - start);
    const int digitsBeforeCaret =
        int(std::count_if(head.begin(), head.end(), [](QChar c) { return c != u','; }));
    int caret = start;
    for (int seen = 0; seen < digitsBeforeCaret; ++caret) {
        if (regrouped[caret - start] != u',')
            ++seen;
    }
    QString line = after;
    line.replace(start, integer.size(), regrouped);
    return LineRewrite{line, caret};
}

QString renameIdentifier(const QString& text, const QString& oldName, const QString& newName) {
    QStringList lines = text.split(u'\n');
    for (QString& line : lines) {
        if (!line.contains(oldName))
            continue;
        const std::vector<SyntaxRange> ranges = highlightLine(line.toStdString());
        // Right to left, so that earlier offsets stay valid.
        for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
            if (isWordKind(range->kind) && range->length == oldName.size() &&
                QStringView(line).mid(range->offset, range->length) == oldName)
                line.replace(int(range->offset), int(range->length), newName);
        }
    }
    return lines.join(u'\n');
}

QString unusedLineName(const QString& text, int lineIndex) {
    // Every word already in the sheet is taken, whatever defines it (a line, a loop, a function).
    QSet<QString> words;
    for (const QString& line : text.split(u'\n')) {
        for (const SyntaxRange& range : highlightLine(line.toStdString())) {
            if (isWordKind(range.kind))
                words.insert(line.mid(int(range.offset), int(range.length)));
        }
    }
    const std::string sheet = text.toStdString();
    const auto usable = [&](const QString& name) {
        return !words.contains(name) && !nameClash(name.toStdString()) &&
               !validateLineName(name.toStdString(), sheet, std::size_t(lineIndex));
    };
    for (int round = 0;; ++round) {
        for (char16_t letter = u'a'; letter <= u'z'; ++letter) {
            QString name(QChar{letter});
            if (round > 0)
                name += QString::number(round);
            if (usable(name))
                return name;
        }
    }
}

qsizetype indentation(const QString& line) {
    qsizetype indent = 0;
    while (indent < line.size() &&
           (line[indent] == u' ' || line[indent] == u'\t' || line[indent] == u'\u3000'))
        ++indent;
    return indent;
}

namespace {

const QLatin1String commentMarker(keywords::noteMarker.data(), qsizetype(keywords::noteMarker.size()));

} // namespace

QString nameLine(const QString& line, const QString& name) {
    const qsizetype indent = indentation(line);
    return line.left(indent) + name + QStringLiteral(" = ") + line.mid(indent);
}

QString toggleComments(const QString& text, int first, int last) {
    QStringList lines = text.split(u'\n');
    first = std::clamp(first, 0, int(lines.size()) - 1);
    last = std::clamp(last, first, int(lines.size()) - 1);
    const auto isBlank = [](const QString& line) { return line.trimmed().isEmpty(); };
    const auto isComment = [](const QString& line) {
        return QStringView(line).mid(indentation(line)).startsWith(commentMarker);
    };
    bool allComments = true;
    bool anyContent = false;
    for (int i = first; i <= last; ++i) {
        if (isBlank(lines[i]))
            continue;
        anyContent = true;
        allComments = allComments && isComment(lines[i]);
    }
    if (!anyContent)
        return text;
    for (int i = first; i <= last; ++i) {
        QString& line = lines[i];
        if (isBlank(line))
            continue;
        const qsizetype indent = indentation(line);
        if (!allComments) {
            line.insert(indent, commentMarker + u' ');
            continue;
        }
        qsizetype end = indent + commentMarker.size();
        if (end < line.size() && line[end] == u' ')
            ++end;
        line.remove(indent, end - indent);
    }
    return lines.join(u'\n');
}

} // namespace lumo::textRewrites
