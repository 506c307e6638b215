#include "LumoKit/export/MarkdownExport.h"

#include <algorithm>
#include <ostream>

#include "LumoKit/base/Unicode.h"

namespace lumo {

namespace {

std::string escapedPipes(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '|')
            out += '\\';
        out += c;
    }
    return out;
}

// Alt text of an image: brackets and backslashes would end or bend the link.
std::string escapedAltText(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '[' || c == ']' || c == '\\' || c == '|')
            out += '\\';
        out += c;
    }
    return out;
}

std::size_t longestBacktickRun(const std::string& text) {
    std::size_t longest = 0;
    std::size_t run = 0;
    for (char c : text) {
        run = c == '`' ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

} // namespace

std::string markdownCode(const std::string& text) {
    if (text.empty())
        return "";
    const std::string fence(longestBacktickRun(text) + 1, '`');
    // A space inside the fence keeps a backtick at either end from joining it; one space on
    // each side is dropped again by every reader.
    const bool padded = text.front() == '`' || text.back() == '`' ||
                        (text.front() == ' ' && text.back() == ' ' && unicode::trim(text) != "");
    const std::string pad = padded ? " " : "";
    return fence + pad + escapedPipes(text) + pad + fence;
}

void writeMarkdown(std::ostream& out, const std::vector<EvaluatedSheet>& sheets,
                   const EvaluationOptions& options, Grouping grouping, const PlotImageNamer& imageName) {
    const bool english = options.language == Language::english;
    for (std::size_t s = 0; s < sheets.size(); ++s) {
        const EvaluatedSheet& sheet = sheets[s];
        out << (s == 0 ? "" : "\n") << "# " << sheet.name << "\n\n";
        out << (english ? "| Line | Answer |\n" : "| 行 | 答え |\n") << "| :--- | ---: |\n";
        for (std::size_t i = 0; i < sheet.lines.size(); ++i) {
            const std::string& line = sheet.lines[i];
            if (unicode::trim(line).empty())
                continue;
            std::string answer;
            if (i < sheet.results.size()) {
                const LineResult& result = sheet.results[i];
                if (result.outcome.kind == LineOutcome::Kind::plot) {
                    const std::string& title = result.outcome.plot()->title;
                    const std::string image = imageName ? imageName(s, i) : "";
                    answer = image.empty() ? markdownCode(title)
                                           : "![" + escapedAltText(title) + "](" + image + ")";
                } else {
                    answer = markdownCode(answerText(result, options, grouping));
                }
            }
            out << "| " << markdownCode(line) << " | " << answer << " |\n";
        }
    }
}

} // namespace lumo
