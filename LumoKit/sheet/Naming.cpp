#include "LumoKit/sheet/Naming.h"

#include <vector>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Language.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/language/Lexer.h"
#include "LumoKit/language/Parser.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/PlotBuilder.h"
#include "LumoKit/values/builtins/Builtins.h"
#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/Units.h"

namespace lumo {

namespace {

// The words of the conversion and plot syntax that a line name would hide: the conversion
// words, "of" and the plotted variable x.
bool isSyntaxWord(std::string_view word) {
    return keywords::isConversionWord(word) || word == keywords::ofWord || word == plotVariable;
}

// Naming happens in the interface, outside any run, so it answers in the interface's language.
std::string refuse(MessageKind refusal, std::string_view name) {
    return Message(refusal, {std::string(name)}).text(L10n::resolved());
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
        return Message(MessageKind::enterName).text(L10n::resolved());
    if (!isSingleIdentifier(name))
        return Message(MessageKind::nameCharacters).text(L10n::resolved());
    const std::string lower = unicode::toLower(name);
    if (isSyntaxWord(name) || isSyntaxWord(lower))
        return refuse(MessageKind::builtinWordName, name);
    if (isBuiltinFunction(lower))
        return refuse(MessageKind::functionName, name);
    if (isConstantName(name) || isConstantName(lower))
        return refuse(MessageKind::constantName, name);
    if (isKnownUnit(name))
        return refuse(MessageKind::unitName, name);
    if (const auto line = lineDefining(name, sheetText, lineIndex))
        return Message(MessageKind::nameUsedOnLine, {name, std::to_string(*line + 1)}).text(L10n::resolved());
    return std::nullopt;
}

std::optional<std::string> nameClash(std::string_view name) {
    const std::string lower = unicode::toLower(name);
    if (isBuiltinFunction(lower))
        return refuse(MessageKind::builtinFunctionName, name);
    if (isConstantName(name))
        return refuse(MessageKind::constantNameClash, name);
    if (isSheetWordInAnyCase(name))
        return refuse(MessageKind::builtinWordName, name);
    if (isKnownUnit(name))
        return refuse(MessageKind::unitName, name);
    return std::nullopt;
}

} // namespace lumo
