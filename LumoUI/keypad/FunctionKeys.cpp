// The function tab: the engine's built-in functions, constants, lists and text, plots and the
// program words, in groups. The names come from the engine; this file adds what the keypad
// needs to show them: the group, the call as the catalog writes it, and what it does.

#include <algorithm>
#include <map>

#include "LumoKit/language/Keywords.h"
#include "LumoKit/values/builtins/Builtins.h"
#include "LumoUI/keypad/KeyCatalog.h"

namespace lumo {

namespace {

// How the keypad presents one word of the language.
struct FunctionInfo {
    const char* group;
    // The call as the catalog writes it, in each language ("round(x, 桁数)").
    KeyText usage;
    KeyText name;
};

// Keyed by the function's name as the engine spells it.
const std::map<std::string, FunctionInfo, std::less<>>& functionInfo() {
    static const std::map<std::string, FunctionInfo, std::less<>> info{
        {"sqrt", {"arithmetic", {"sqrt(x)", "sqrt(x)"}, {"平方根", "Square root"}}},
        {"cbrt", {"arithmetic", {"cbrt(x)", "cbrt(x)"}, {"立方根", "Cube root"}}},
        {"abs",
         {"arithmetic", {"abs(x)", "abs(x)"}, {"絶対値（単位はそのまま）", "Absolute value, unit kept"}}},
        {"sign", {"arithmetic", {"sign(x)", "sign(x)"}, {"符号：-1、0、1 のどれか", "Sign: −1, 0 or 1"}}},
        {"pow", {"arithmetic", {"pow(x, 指数)", "pow(x, exponent)"}, {"べき乗", "Power"}}},
        {"mod", {"arithmetic", {"mod(a, b)", "mod(a, b)"}, {"割り算の余り", "Remainder of a ÷ b"}}},
        {"hypot",
         {"arithmetic", {"hypot(a, b)", "hypot(a, b)"}, {"斜辺：√(a² + b²)", "Hypotenuse: √(a² + b²)"}}},
        {"gcd", {"arithmetic", {"gcd(整数, 整数)", "gcd(m, n)"}, {"最大公約数", "Greatest common divisor"}}},
        {"lcm", {"arithmetic", {"lcm(整数, 整数)", "lcm(m, n)"}, {"最小公倍数", "Least common multiple"}}},
        {"ln", {"arithmetic", {"ln(x)", "ln(x)"}, {"自然対数", "Natural logarithm"}}},
        {"log", {"arithmetic", {"log(x)", "log(x)"}, {"常用対数（10 が底）", "Common logarithm, base 10"}}},
        {"log2", {"arithmetic", {"log2(x)", "log2(x)"}, {"2 が底の対数", "Logarithm, base 2"}}},
        {"log10",
         {"arithmetic", {"log10(x)", "log10(x)"}, {"常用対数（log と同じ）", "Logarithm, base 10 (as log)"}}},
        {"exp", {"arithmetic", {"exp(x)", "exp(x)"}, {"e の x 乗", "e to the power x"}}},
        {"round",
         {"rounding", {"round(x, 桁数)", "round(x, digits)"}, {"四捨五入", "Round half away from zero"}}},
        {"floor", {"rounding", {"floor(x, 桁数)", "floor(x, digits)"}, {"小さい方へ丸める", "Round down"}}},
        {"ceil", {"rounding", {"ceil(x, 桁数)", "ceil(x, digits)"}, {"大きい方へ丸める", "Round up"}}},
        {"trunc",
         {"rounding", {"trunc(x, 桁数)", "trunc(x, digits)"}, {"0 の方へ切り捨てる", "Round toward zero"}}},
        {"sin", {"trigonometry", {"sin(角度)", "sin(angle)"}, {"正弦", "Sine"}}},
        {"cos", {"trigonometry", {"cos(角度)", "cos(angle)"}, {"余弦", "Cosine"}}},
        {"tan", {"trigonometry", {"tan(角度)", "tan(angle)"}, {"正接", "Tangent"}}},
        {"asin",
         {"trigonometry", {"asin(x)", "asin(x)"}, {"逆正弦（角度で答える）", "Arcsine, as an angle"}}},
        {"acos",
         {"trigonometry", {"acos(x)", "acos(x)"}, {"逆余弦（角度で答える）", "Arccosine, as an angle"}}},
        {"atan",
         {"trigonometry", {"atan(x)", "atan(x)"}, {"逆正接（角度で答える）", "Arctangent, as an angle"}}},
        {"min", {"lists", {"min(値, …)", "min(values…)"}, {"いちばん小さい値", "Smallest value"}}},
        {"max", {"lists", {"max(値, …)", "max(values…)"}, {"いちばん大きい値", "Largest value"}}},
        {"sum", {"lists", {"sum(値, …)", "sum(values…)"}, {"合計", "Total"}}},
        {"avg", {"lists", {"avg(値, …)", "avg(values…)"}, {"平均", "Average"}}},
        {"average",
         {"lists", {"average(値, …)", "average(values…)"}, {"平均（avg と同じ）", "Average (as avg)"}}},
        {"len", {"lists", {"len(表)", "len(list)"}, {"項目の数、文字の数", "Number of items or characters"}}},
        {"sort", {"lists", {"sort(表)", "sort(list)"}, {"小さい順に並べる", "Sort in ascending order"}}},
        {"reverse", {"lists", {"reverse(表)", "reverse(list)"}, {"逆の順に並べる", "Reverse the order"}}},
        {"str",
         {"text", {"str(値)", "str(value)"}, {"値を答えのとおりの文字に", "Value as text, as answered"}}},
        {"list",
         {"text", {"list(文字)", "list(text)"}, {"文字を 1 文字ずつの表に", "Text as a list of characters"}}},
    };
    return info;
}

// Program words: the snippet puts the caret where the line goes on and indents the body.
struct WordInfo {
    std::string snippet;
    std::int64_t caretBack;
    KeyText usage;
    KeyText name;
};

const std::map<std::string, WordInfo, std::less<>>& programWordInfo() {
    static const std::map<std::string, WordInfo, std::less<>> info{
        {"if",
         {"if :\n    ",
          6,
          {"if 条件:", "if condition:"},
          {"条件が成り立つときだけ", "Only when a condition holds"}}},
        {"elif",
         {"elif :\n    ",
          6,
          {"elif 条件:", "elif condition:"},
          {"そうでなく、この条件なら", "Otherwise, when this holds"}}},
        {"else", {"else:\n    ", 0, {"else:", "else:"}, {"どの条件でもないとき", "When no condition held"}}},
        {"for",
         {"for i in :\n    ",
          6,
          {"for i in 表:", "for i in list:"},
          {"表の項目ごとにくり返す", "Repeat for each item"}}},
        {"while",
         {"while :\n    ",
          6,
          {"while 条件:", "while condition:"},
          {"条件が続く間くり返す", "Repeat while a condition holds"}}},
        {"def",
         {"def ():\n    ",
          8,
          {"def 名前(引数):", "def name(arguments):"},
          {"関数を作る", "Define a function"}}},
        {"return",
         {"return ", 0, {"return 値", "return value"}, {"関数の答えを返す", "Give the function’s answer"}}},
        {"break", {"break", 0, {"break", "break"}, {"くり返しを抜ける", "Leave the loop"}}},
        {"continue",
         {"continue", 0, {"continue", "continue"}, {"次のくり返しへ", "Go on with the next round"}}},
    };
    return info;
}

KeyText describe(const KeyText& usage, const KeyText& name) {
    return {usage.japanese + " — " + name.japanese, usage.english + " — " + name.english};
}

KeyDefinition key(std::string id, std::string label, KeyText usage, KeyText name, InsertSnippet snippet) {
    KeyDefinition out;
    out.id = std::move(id);
    out.label = std::move(label);
    out.description = describe(usage, name);
    out.name = std::move(name);
    out.snippet = std::move(snippet);
    out.style = KeyStyle::function;
    return out;
}

// A call with the caret between its brackets.
KeyDefinition callKey(const std::string& function, KeyText usage, KeyText name) {
    return key(function, function, std::move(usage), std::move(name), snippetOf(function + "()", 1));
}

// Keys for names that the engine knows but does not list with its functions.
void addExtraKeys(std::map<std::string, std::vector<KeyDefinition>>& byGroup) {
    auto& arithmetic = byGroup["arithmetic"];
    arithmetic.push_back(key("π", "π", {"π", "π"}, {"円周率", "Pi"}, snippetOf("π")));
    arithmetic.push_back(key("e", "e", {"e", "e"}, {"ネイピア数", "Euler’s number"}, snippetOf("e")));

    auto& lists = byGroup["lists"];
    lists.insert(lists.begin(), {key("[]", "[ ]", {"[1, 2, 3]", "[1, 2, 3]"}, {"表を作る", "Make a list"},
                                     snippetOf("[]", 1)),
                                 key(",", ",", {"a, b", "a, b"}, {"区切り", "Separator"}, snippetOf(", "))});

    auto& text = byGroup["text"];
    text.insert(text.begin(), key("\"\"", "\" \"", {"\"文字\"", "\"text\""}, {"文字を作る", "Make text"},
                                  snippetOf("\"\"", 1)));

    // The plot words never reach the function table: sheets send such lines to the plots.
    auto& plots = byGroup["plots"];
    plots.push_back(
        callKey("plot", {"plot(x の式)", "plot(expression in x)"}, {"曲線を描く", "Draw a curve"}));
    plots.push_back(callKey("chart", {"chart(表)", "chart(list)"}, {"棒グラフを描く", "Draw a bar chart"}));
    plots.push_back(
        key("x", "x", {"x", "x"}, {"グラフの横の変数", "The plot’s variable across"}, snippetOf("x")));
    plots.push_back(key("y", "y", {"y", "y"}, {"3 軸グラフの奥の変数", "The depth variable of a 3D plot"},
                        snippetOf("y")));
}

std::vector<KeyGroup> buildFunctionGroups() {
    std::map<std::string, std::vector<KeyDefinition>> byGroup;
    for (const std::string& function : builtinFunctionNames()) {
        const auto info = functionInfo().find(function);
        // A function the keypad has not learnt of yet still gets a key.
        if (info == functionInfo().end())
            byGroup["arithmetic"].push_back(
                callKey(function, {function + "()", function + "()"}, {function, function}));
        else
            byGroup[info->second.group].push_back(callKey(function, info->second.usage, info->second.name));
    }
    addExtraKeys(byGroup);
    for (std::string_view word : keywords::statementWords) {
        const auto info = programWordInfo().find(word);
        const std::string id(word);
        if (info == programWordInfo().end()) {
            byGroup["programs"].push_back(key(id, id, {id, id}, {id, id}, snippetOf(id + " ")));
            continue;
        }
        byGroup["programs"].push_back(key(id, id, info->second.usage, info->second.name,
                                          snippetOf(info->second.snippet, info->second.caretBack)));
    }

    struct GroupInfo {
        const char* id;
        KeyText title;
        std::vector<std::string> hidden;
    };
    const std::vector<GroupInfo> order{
        {"arithmetic", {"計算", "Arithmetic"}, {"log10", "cbrt", "hypot"}},
        {"rounding", {"丸め", "Rounding"}, {}},
        {"trigonometry", {"三角関数", "Trigonometry"}, {}},
        {"lists", {"表", "Lists"}, {"average"}},
        {"text", {"文字", "Text"}, {}},
        {"plots", {"グラフ", "Plots"}, {}},
        {"programs", {"プログラム", "Programs"}, {"elif", "break", "continue"}},
    };
    std::vector<KeyGroup> groups;
    for (const GroupInfo& info : order)
        groups.push_back({info.id, info.title, std::move(byGroup[info.id]), info.hidden});
    return groups;
}

} // namespace

const std::vector<KeyGroup>& KeyCatalog::functionGroups() {
    static const std::vector<KeyGroup> groups = buildFunctionGroups();
    return groups;
}

} // namespace lumo
