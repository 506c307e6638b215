#include "LumoKit/sheet/DocumentEvaluator.h"

#include <algorithm>
#include <utility>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/sheet/ProgramRunner.h"

namespace lumo {

namespace {

bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

std::string withoutTrailingEquals(std::string_view text) {
    std::string result(text);
    while (true) {
        if (endsWith(result, "="))
            result = unicode::trim(std::string_view(result).substr(0, result.size() - 1));
        else if (endsWith(result, "＝"))
            result = unicode::trim(
                std::string_view(result).substr(0, result.size() - std::string_view("＝").size()));
        else
            return result;
    }
}

} // namespace

std::vector<LineResult> DocumentEvaluator::evaluate(const std::string& text,
                                                    const std::vector<SharedSheet>& others,
                                                    const EvaluationOptions& options) {
    return ProgramRunner(SheetLines(text), others, options).run();
}

std::vector<LineResult> DocumentEvaluator::evaluate(const std::string& text,
                                                    const std::vector<SharedSheet>& others,
                                                    const EvaluationOptions& options,
                                                    SheetParseCache& parses) {
    return ProgramRunner(SheetLines(text), others, options, BudgetLimits{}, &parses).run();
}

bool isSheetWord(std::string_view name) {
    return sheetWordOf(name).has_value();
}

// No character outside ASCII lower-cases to a letter of a sheet word, so comparing ASCII
// letters without case gives what lower-casing the whole name would, without a copy.
bool isSheetWordInAnyCase(std::string_view name) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    for (const auto& entry : sheetWords) {
        const std::string_view word = entry.first;
        if (word.size() == name.size() &&
            std::equal(word.begin(), word.end(), name.begin(), [&](char a, char b) { return a == lower(b); }))
            return true;
    }
    return false;
}

bool continuesPrevious(std::string_view text) {
    if (text.empty())
        return false;
    char32_t first = 0;
    const std::size_t length = unicode::decodeFirst(text, first);
    switch (first) {
    case U'*':
    case U'/':
    case U'^':
    case U'×':
    case U'÷':
    case U'／':
    case U'＊':
        return true;
    case U'+':
    case U'-':
    case U'－':
    case U'＋':
        return text.substr(length).starts_with(' ');
    default:
        return false;
    }
}

bool endsWithEquals(std::string_view text) {
    return endsWith(text, "=") || endsWith(text, "＝");
}

std::string prepareLine(std::string_view text, bool hasPrevious) {
    std::string prepared = withoutTrailingEquals(text);
    if (hasPrevious && continuesPrevious(prepared))
        return "prev " + prepared;
    return prepared;
}

} // namespace lumo
