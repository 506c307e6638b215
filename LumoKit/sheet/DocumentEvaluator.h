#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/sheet/LineResult.h"

namespace lumo {

class SheetParseCache;

/// The engine's entry: a sheet's text, with the other sheets in tab order, becomes one
/// LineResult per line. A function of its arguments: every call is a fresh run inside the run
/// budget that reads nothing process-wide, so calls may run at once on any threads.
struct DocumentEvaluator {
    static std::vector<LineResult> evaluate(const std::string& text, const std::vector<SharedSheet>& others,
                                            const EvaluationOptions& options);
    /// The same run, reusing the parses of lines that earlier runs with this cache met.
    static std::vector<LineResult> evaluate(const std::string& text, const std::vector<SharedSheet>& others,
                                            const EvaluationOptions& options, SheetParseCache& parses);
};

// The rules a sheet adds to the expression language. The run applies them line by line.

/// What a built-in sheet word stands for.
enum class SheetWord { previous, blockSum, totalSum };

/// The eight built-in words and what each stands for.
inline constexpr std::pair<std::string_view, SheetWord> sheetWords[] = {
    {"prev", SheetWord::previous},  {"ans", SheetWord::previous},      {"前", SheetWord::previous},
    {"sum", SheetWord::blockSum},   {"subtotal", SheetWord::blockSum}, {"小計", SheetWord::blockSum},
    {"total", SheetWord::totalSum}, {"合計", SheetWord::totalSum},
};

/// The meaning of one of the eight built-in words (prev, ans, 前, sum, subtotal, 小計, total,
/// 合計), exact spelling; nothing for any other name. Inline: every name a line reads is
/// asked, and a call returning the optional through memory stalls on reading it back.
inline std::optional<SheetWord> sheetWordOf(std::string_view name) {
    for (const auto& [word, meaning] : sheetWords) {
        if (word.size() == name.size() && word.front() == name.front() && word == name)
            return meaning;
    }
    return std::nullopt;
}
bool isSheetWord(std::string_view name);
/// Whether the name is a sheet word in any mix of upper and lower case (Sum, TOTAL).
bool isSheetWordInAnyCase(std::string_view name);

/// Whether a line's text (without its trailing "=") starts like a continuation of the previous
/// answer: an operator such as * or /, or + and - followed by a space.
bool continuesPrevious(std::string_view text);

/// Whether a line's text ends with "=" or "＝".
bool endsWithEquals(std::string_view text);

/// The text of a line as it is calculated: trailing "=" and "＝" dropped, and "prev " put in
/// front of a line that continues the previous answer (only when there is one).
std::string prepareLine(std::string_view text, bool hasPrevious);

} // namespace lumo
