#include "LumoKit/base/Messages.h"

#include <string_view>

namespace lumo {

namespace {

struct MessageTexts {
    MessageKind kind;
    std::string_view japanese;
    std::string_view english;
};

// One row per kind, in the enum's order. Japanese quotes an inserted name with 「」, English
// with “ ” and writes the apostrophe ’. A few older texts insert names bare, and those of the
// arithmetic on values and of unit conversion keep a straight apostrophe: both are established
// wordings, kept as they are.
constexpr MessageTexts messageTexts[] = {
    {MessageKind::verbatim, "", ""},

    {MessageKind::unusableCharacter, "「{0}」は使えない文字です", "The character “{0}” can’t be used"},
    {MessageKind::numberTooLarge, "数が大きすぎます", "The number is too large"},
    {MessageKind::unclosedText, "文字の終わりの {0} がありません", "Missing closing {0}"},
    {MessageKind::nestedTooDeeply, "式の入れ子が深すぎます", "The expression is nested too deeply"},
    {MessageKind::missingCallParenthesis, "{0}( の閉じ括弧がありません", "Missing ) to close {0}("},
    {MessageKind::misplacedOperator, "「{0}」の使い方が正しくありません", "“{0}” isn’t used correctly here"},
    {MessageKind::noExpression, "式がありません", "There’s no expression"},
    {MessageKind::badExpression, "式の書き方が正しくありません", "This expression isn’t written correctly"},
    {MessageKind::missingBracket, "] がありません", "Missing ]"},
    {MessageKind::missingClosingParenthesis, "閉じ括弧がありません", "Missing closing parenthesis"},
    {MessageKind::noOpeningParenthesis, "対応する開き括弧がありません", "No matching opening parenthesis"},
    {MessageKind::noOpeningBracket, "対応する [ がありません", "No matching ["},
    {MessageKind::misplacedComma, "カンマの位置が正しくありません", "A comma is in the wrong place"},
    {MessageKind::endsInTheMiddle, "式が途中で終わっています", "The expression ends in the middle"},
    {MessageKind::missingListBracket, "表の閉じ括弧 ] がありません", "Missing ] to close the list"},
    {MessageKind::missingTargetUnit, "変換先の単位が必要です", "A unit to convert to is needed"},

    {MessageKind::unknownUnit, "{0} という単位は知りません", "Unknown unit “{0}”"},
    {MessageKind::undefinedName, "{0} が定義されていません", "{0} is not defined"},
    {MessageKind::undefinedNameLikeUnit, "{0} が定義されていません（単位の {1} なら {2} と大文字で書きます）",
     "{0} is not defined (for the unit {1}, write it uppercase: {2})"},
    {MessageKind::noSuchFunction, "{0} という関数はありません", "There is no function named {0}"},
    {MessageKind::listTooBig, "表が大きすぎます", "The list is too big"},
    {MessageKind::textTooLong, "文字が長すぎます", "The text is too long"},
    {MessageKind::lineNotFound, "#{0} が見つかりません", "#{0} not found"},
    {MessageKind::cannotNegate, "{0}に \u2212 は付けられません", "Can’t negate {0}"},
    {MessageKind::operatorNotUsable, "「{0}」は使えません", "“{0}” can’t be used here"},
    {MessageKind::percentOnKind, "{0}に % は付けられません", "Can’t attach % to {0}"},
    {MessageKind::percentOnUnit, "単位のある値に % は付けられません", "% can’t follow a value with a unit"},
    {MessageKind::unitOnKind, "{0}に単位は付けられません", "Can’t attach a unit to {0}"},
    {MessageKind::unitOnPercentage, "パーセントに {0} は付けられません", "Can’t attach {0} to a percentage"},
    {MessageKind::unitOnUnit, "{0} にさらに {1} は付けられません", "Can’t add {1} on top of {0}"},
    {MessageKind::cannotConvert, "{0} は {1} に変換できません", "Can't convert {0} to {1}"},
    {MessageKind::listsNotOrdered, "表どうしは大小を比べられません",
     "Lists can be checked for equality, but not ordered"},
    {MessageKind::kindsNotOrdered, "{0}と{1}は大小を比べられません", "{0} and {1} can’t be ordered"},
    {MessageKind::indexNotWhole, "[ ] の中は、単位の無い整数で書きます",
     "The index in [ ] must be a whole number without a unit"},
    {MessageKind::indexTooLarge, "[ ] の中の数が大きすぎます", "The index in [ ] is too large"},
    // The label is the one noItem starts with, inserted as it stands, capital and article
    // included: "An empty The list has no item 0" is the established wording.
    {MessageKind::noItemInEmpty, "空の{0}には {1} 番目がありません", "An empty {0} has no item {1}"},
    {MessageKind::noItem, "{0}の {1} 番目はありません（0〜{2}）", "{0} has no item {1} (valid: 0–{2})"},
    {MessageKind::indexOnNumber, "数に [ ] は付けられません", "[ ] can’t be used on a number"},
    {MessageKind::textJoin, "文字と{0}は + でつなげません（str(値) で文字にできます）",
     "Text and {0} can't be joined with + (str(value) makes text)"},
    {MessageKind::repeatCountNotWhole, "{0}をくり返す回数は、単位の無い整数で書きます",
     "The repeat count must be a whole number without a unit"},
    {MessageKind::wholePowersOnly, "単位のある値は整数乗だけできます",
     "Values with units can only be raised to whole-number powers"},
    {MessageKind::unitsNotAddable, "{0} と {1} は足し引きできません", "{0} and {1} can't be added together"},
    // {2} is the operator's plain character, or a word: "of", or thisCalculation where units
    // are aligned. The English starts with it as written, so in lower case for a word.
    {MessageKind::kindsNotCombinable, "{0}と{1}は {2} で計算できません",
     "{2} doesn't work between {0} and {1}"},
    {MessageKind::divisionByZero, "0 で割ることはできません", "Cannot divide by zero"},
    {MessageKind::exponentWithUnit, "指数に単位は使えません", "An exponent can't have a unit"},
    {MessageKind::unitNotRaisable, "{0} は累乗できません", "{0} can't be raised to a power"},
    {MessageKind::cannotCalculate, "計算できません", "Can’t calculate this"},
    // The same failure as cannotCalculate, from the unit and arithmetic code, whose English
    // has always used a straight apostrophe.
    {MessageKind::cannotCalculateResult, "計算できません", "Can't calculate this"},

    {MessageKind::cannotTake, "{0} に{1} は渡せません", "{0} can’t take {1}"},
    {MessageKind::needsOneArgument, "{0} は引数が 1 つ必要です", "{0} needs one argument"},
    {MessageKind::cannotTakeUnit, "{0} に単位付きの値は渡せません", "{0} can’t take a value with a unit"},
    {MessageKind::negativeSquareRoot, "負の数の平方根は計算できません",
     "Can’t take the square root of a negative number"},
    {MessageKind::logOfNonPositive, "log は正の数にだけ使えます", "log works only on positive numbers"},
    {MessageKind::digitsWithUnit, "桁数に単位は使えません", "Digits can’t have a unit"},
    {MessageKind::digitsOutOfRange, "桁数は -15〜15 で指定してください", "Digits must be between -15 and 15"},
    {MessageKind::roundingUsage, "{0}(値) または {0}(値, 桁数) で使います",
     "Use {0}(value) or {0}(value, digits)"},
    {MessageKind::needsValues, "{0} には値が必要です", "{0} needs values"},
    {MessageKind::lenUsage, "len は表か文字の長さを数えます", "len counts the length of a list or text"},
    {MessageKind::sortUsage, "sort は表の中身を並べ替えます", "sort arranges the items of a list"},
    {MessageKind::sortMixed, "sort で並べ替えられるのは、数どうしか文字どうしです",
     "sort needs all numbers or all text"},
    {MessageKind::reverseUsage, "reverse は表か文字を逆に並べます", "reverse works on a list or text"},
    {MessageKind::needsAngle, "{0} には角度を渡してください", "{0} needs an angle"},
    {MessageKind::outsideMinusOneToOne, "{0} は -1〜1 の値にだけ使えます",
     "{0} needs a value between -1 and 1"},
    {MessageKind::powUsage, "pow(値, 指数) で使います", "Use pow(value, exponent)"},
    {MessageKind::modUsage, "mod(値, 値) で使います", "Use mod(value, value)"},
    {MessageKind::modByZero, "0 では割れません", "Cannot divide by zero"},
    {MessageKind::hypotUsage, "hypot(値, 値) で使います", "Use hypot(value, value)"},
    {MessageKind::integerPairUsage, "{0}(整数, 整数) で使います", "Use {0}(integer, integer)"},
    {MessageKind::tooLargeFor, "{0} には大きすぎる数です", "The numbers are too large for {0}"},
    {MessageKind::zeroNotUsable, "0 は使えません", "Zero can’t be used here"},
    {MessageKind::lcmTooLarge, "lcm の答えが大きすぎます", "The lcm result is too large"},

    {MessageKind::unitsMixedInSum, "種類の違う単位が混ざっていて合計できません",
     "Units of different kinds are mixed, so they can’t be summed"},
    {MessageKind::sheetWordAsName, "「{0}」はもともとある言葉なので名前に使えません",
     "“{0}” is a built-in word and can’t be used as a name"},
    {MessageKind::tooManySteps, "繰り返しが多すぎます", "Too many loop steps"},
    {MessageKind::takingTooLong, "繰り返しに時間がかかりすぎます", "The loop is taking too long"},
    {MessageKind::callsTooDeep, "関数の呼び出しが深すぎます", "Function calls are nested too deeply"},
    {MessageKind::fromSheet, "{0}（{1} シートの）", "{0} (from sheet “{1}”)"},
    {MessageKind::returnOutsideDef, "return は def の中だけで使えます", "return can only be used inside def"},
    {MessageKind::notIterable, "for で回せるのは range(…) と表 [1, 2, 3] と文字です",
     "for can loop over range(…), a list [1, 2, 3], or text"},
    {MessageKind::argumentCount, "{0} は引数が {1} 個必要です", "{0} needs {1} {2}"},
    {MessageKind::noReturnValue, "{0} は値を返しません", "{0} doesn’t return a value"},
    {MessageKind::rangeUsage, "range(終わり) / range(始め, 終わり) / range(始め, 終わり, 刻み)",
     "Use range(end), range(start, end), or range(start, end, step)"},
    {MessageKind::rangeKind, "range に{0}は使えません", "range can’t take {0}"},
    {MessageKind::rangeUnit, "range に単位は使えません", "range can’t take a unit"},
    {MessageKind::rangeZeroStep, "range の刻みに 0 は使えません", "The range step can’t be 0"},
    {MessageKind::badCondition, "条件の書き方が正しくありません", "The condition isn’t written correctly"},
    {MessageKind::noMatchingIf, "対応する if がありません", "No matching if"},
    {MessageKind::badLoopRange, "回す範囲の書き方が正しくありません",
     "The range to loop over isn’t written correctly"},
    {MessageKind::forNeedsOneName, "for のうしろは名前を 1 つ書きます", "for needs a single name after it"},
    {MessageKind::badWhileCondition, "while の条件が読めません", "Can’t read the while condition"},
    {MessageKind::defShape, "def 名前(引数): の形で書きます", "Write it as: def name(arguments):"},
    {MessageKind::defNames, "関数と引数の名前は、文字で始まる言葉にします",
     "Function and argument names must start with a letter"},
    {MessageKind::badReturnValue, "return のうしろの式が読めません",
     "Can’t read the expression after return"},

    {MessageKind::plotNoExpression, "plot(式) のように、描く式を書いてください",
     "Write an expression to draw, like plot(x^2)"},
    {MessageKind::plotOneEnd, "範囲は plot(式, 左, 右) のように 2 つ書いてください",
     "Give both ends of the range: plot(expr, left, right)"},
    {MessageKind::plotLeftNotLess, "範囲は左 < 右 で指定してください", "The range needs left < right"},
    {MessageKind::plotNoCurve, "この式はグラフにできません", "This expression can’t be plotted"},
    {MessageKind::plotNotCurve, "{0}は plot では描けません（表は chart(表) で棒グラフにできます）",
     "plot can’t draw {0} (use chart(list) for a bar chart)"},
    {MessageKind::surfaceArguments,
     "3 つの軸で描くときは plot(式, x左, x右, y左, y右) のように書いてください",
     "For three axes write plot(expr, x from, x to, y from, y to)"},
    {MessageKind::plotNoSurface, "この式は 3 つの軸では描けません",
     "This expression can’t be drawn with three axes"},
    {MessageKind::chartNoValues, "chart(値, 値, …) のように、並べる値を書いてください",
     "Write values to chart, like chart(a, b, …)"},
    {MessageKind::chartNotChartable, "グラフにできない値があります", "Some values can’t be charted"},

    {MessageKind::enterName, "名前を入れてください", "Enter a name"},
    {MessageKind::nameCharacters, "名前には文字と数字だけが使えます（先頭は文字）",
     "Names can use only letters and digits (starting with a letter)"},
    {MessageKind::builtinWordName, "「{0}」はもともとある言葉なので使えません",
     "“{0}” is a built-in word and can’t be used"},
    {MessageKind::functionName, "「{0}」は関数の名前なので使えません",
     "“{0}” is a function name and can’t be used"},
    {MessageKind::constantName, "「{0}」は定数の名前なので使えません",
     "“{0}” is a constant name and can’t be used"},
    {MessageKind::unitName, "「{0}」は単位なので使えません", "“{0}” is a unit and can’t be used"},
    {MessageKind::builtinFunctionName, "「{0}」はもともとある関数なので使えません",
     "“{0}” is a built-in function and can’t be used"},
    {MessageKind::constantNameClash, "「{0}」は定数なので使えません",
     "“{0}” is a constant and can’t be used"},
    {MessageKind::nameUsedOnLine, "「{0}」は {1} 行目で使っています", "“{0}” is already used on line {1}"},
    {MessageKind::newSheetName, "新しいシート", "New Sheet"},
    {MessageKind::conflictCopyName, "{0}（競合）", "{0} (conflict)"},

    {MessageKind::documentUnreadable, "文書ファイルを読み込めません: {0}",
     "The document file can’t be read: {0}"},
    {MessageKind::documentWrongType, "「{0}」は{1}でなければなりません", "“{0}” must be {1}"},
    {MessageKind::documentTooDeep, "入れ子が {0} 段を超えています", "it is nested more than {0} levels deep"},
    {MessageKind::documentNotJson, "正しい UTF-8 の JSON ではありません", "it is not valid JSON in UTF-8"},
    {MessageKind::documentKeyMissing, "「{0}」がありません", "“{0}” is missing"},

    {MessageKind::aNumber, "数", "a number"},
    {MessageKind::aText, "文字", "text"},
    {MessageKind::aList, "表", "a list"},
    {MessageKind::theList, "表", "The list"},
    {MessageKind::theText, "文字", "The text"},
    {MessageKind::thisCalculation, "この計算", "this calculation"},
    {MessageKind::argumentWord, "引数", "argument"},
    {MessageKind::argumentsWord, "引数", "arguments"},
    {MessageKind::anObject, "オブジェクト", "an object"},
    {MessageKind::aString, "文字列", "a string"},
    {MessageKind::aDate, "2025-01-31T09:15:00Z の形の日付", "a date like 2025-01-31T09:15:00Z"},
    {MessageKind::aUuid, "UUID", "a UUID"},
    {MessageKind::anInteger, "整数", "an integer"},
    {MessageKind::anArray, "配列", "an array"},
};

constexpr bool rowsFollowTheKinds() {
    int index = 0;
    for (const auto& row : messageTexts) {
        if (static_cast<int>(row.kind) != index++)
            return false;
    }
    return true;
}
static_assert(rowsFollowTheKinds(), "one row per MessageKind, in the enum's order");

} // namespace

Message::Message(MessageKind kind, std::vector<Message> arguments)
    : m_kind(kind), m_arguments(std::move(arguments)) {}

Message::Message(std::string text) : m_kind(MessageKind::verbatim), m_verbatim(std::move(text)) {}

Message::Message(const char* text) : Message(std::string(text)) {}

std::string Message::text(Language language) const {
    if (m_kind == MessageKind::verbatim)
        return m_verbatim;
    const MessageTexts& row = messageTexts[static_cast<int>(m_kind)];
    const std::string_view pattern = language == Language::japanese ? row.japanese : row.english;
    std::string result;
    result.reserve(pattern.size());
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        // "{n}" with a single digit n inserts argument n; no text has more than three.
        if (pattern[i] == '{' && i + 2 < pattern.size() && pattern[i + 2] == '}' && pattern[i + 1] >= '0' &&
            pattern[i + 1] <= '9') {
            const auto index = static_cast<std::size_t>(pattern[i + 1] - '0');
            if (index < m_arguments.size())
                result += m_arguments[index].text(language);
            i += 2;
        } else {
            result += pattern[i];
        }
    }
    return result;
}

} // namespace lumo
