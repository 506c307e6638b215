#include "LumoKit/sheet/Naming.h"

#include <algorithm>
#include <array>
#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/language/Lexer.h"
#include "LumoKit/language/Parser.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/values/Builtins.h"
#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/Units.h"

namespace lumo {

namespace {

// The words of the conversion and plot syntax that a line name would hide.
constexpr std::array<std::string_view, 7> syntaxWords{"in", "to", "as", "of", "へ", "で", "x"};

bool isSyntaxWord(std::string_view word) {
    return std::find(syntaxWords.begin(), syntaxWords.end(), word) != syntaxWords.end();
}

// A refusal naming the name: Japanese quotes it with 「」 and English with “ ”.
struct Refusal {
    std::string_view japaneseTail;
    std::string_view englishTail;
};

namespace text {
constexpr Refusal lineSyntaxWord{"」はもともとある言葉なので使えません",
                                 "” is a built-in word and can’t be used"};
constexpr Refusal lineFunction{"」は関数の名前なので使えません", "” is a function name and can’t be used"};
constexpr Refusal lineConstant{"」は定数の名前なので使えません", "” is a constant name and can’t be used"};
constexpr Refusal unit{"」は単位なので使えません", "” is a unit and can’t be used"};
constexpr Refusal clashFunction{"」はもともとある関数なので使えません",
                                "” is a built-in function and can’t be used"};
constexpr Refusal clashConstant{"」は定数なので使えません", "” is a constant and can’t be used"};
constexpr Refusal clashWord{"」はもともとある言葉なので使えません", "” is a built-in word and can’t be used"};
} // namespace text

std::string refuse(const Refusal& refusal, std::string_view name) {
    const std::string quoted(name);
    return L10n::pick("「" + quoted + std::string(refusal.japaneseTail),
                      "“" + quoted + std::string(refusal.englishTail));
}

std::string usedOnLine(std::string_view name, std::size_t lineNumber) {
    const std::string quoted(name);
    const std::string number = std::to_string(lineNumber);
    return L10n::pick("「" + quoted + "」は " + number + " 行目で使っています",
                      "“" + quoted + "” is already used on line " + number);
}

// Whether the lexer reads the whole text as one identifier.
bool isSingleIdentifier(std::string_view name) {
    try {
        const std::vector<Token> tokens = tokenize(name);
        return tokens.size() == 2 && tokens[0].kind == Token::Kind::identifier && tokens[0].text == name;
    } catch (const CalcError&) {
        return false;
    }
}

// The name a line of the sheet defines, read the way sheet evaluation reads it.
std::optional<std::string> definedName(std::string_view line) {
    const std::string text = prepareLine(unicode::trim(line), false);
    if (text.empty())
        return std::nullopt;
    try {
        return parseStatement(text).name;
    } catch (const CalcError&) {
        return std::nullopt;
    }
}

std::optional<std::size_t> lineDefining(std::string_view name, std::string_view sheetText,
                                        std::size_t skippedLine) {
    const std::vector<std::string> lines = unicode::splitLines(sheetText);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i == skippedLine)
            continue;
        if (definedName(lines[i]) == name)
            return i;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> validateLineName(std::string_view proposed, std::string_view sheetText,
                                            std::size_t lineIndex) {
    const std::string name = unicode::trim(normalize(proposed));
    if (name.empty())
        return L10n::pick("名前を入れてください", "Enter a name");
    if (!isSingleIdentifier(name))
        return L10n::pick("名前には文字と数字だけが使えます（先頭は文字）",
                          "Names can use only letters and digits (starting with a letter)");
    const std::string lower = unicode::toLower(name);
    if (isSyntaxWord(name) || isSyntaxWord(lower))
        return refuse(text::lineSyntaxWord, name);
    if (isBuiltinFunction(lower))
        return refuse(text::lineFunction, name);
    if (isConstantName(name) || isConstantName(lower))
        return refuse(text::lineConstant, name);
    if (isKnownUnit(name))
        return refuse(text::unit, name);
    if (const auto line = lineDefining(name, sheetText, lineIndex))
        return usedOnLine(name, *line + 1);
    return std::nullopt;
}

std::optional<std::string> nameClash(std::string_view name) {
    const std::string lower = unicode::toLower(name);
    if (isBuiltinFunction(lower))
        return refuse(text::clashFunction, name);
    if (isConstantName(name))
        return refuse(text::clashConstant, name);
    if (isSheetWord(name) || isSheetWord(lower))
        return refuse(text::clashWord, name);
    if (isKnownUnit(name))
        return refuse(text::unit, name);
    return std::nullopt;
}

} // namespace lumo
