#include <gtest/gtest.h>

#include "LumoKit/base/Language.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/sheet/Program.h"

using namespace lumo;

namespace {

template <class... Ts> struct overloaded : Ts... { using Ts::operator()...; };
template <class... Ts> overloaded(Ts...) -> overloaded<Ts...>;

// A compact picture of a tree: L3 is line 3, _ blank, # note, bodies in parentheses.
std::string describe(const ProgramBody& body, Language language);

std::string describe(const ProgramNode& node, Language language) {
    const auto n = [](std::int64_t index) { return std::to_string(index); };
    return std::visit(
        overloaded{
            [&](const Program::Line& line) { return "L" + n(line.index); },
            [&](const Program::Blank& blank) { return "_" + n(blank.index); },
            [&](const Program::Comment& comment) { return "#" + n(comment.index); },
            [&](const Program::Invalid& invalid) {
                return "!" + n(invalid.index) + " " + invalid.message->text(language) + "(" +
                       describe(invalid.body, language) + ")";
            },
            [&](const Program::IfChain& chain) {
                std::string text;
                for (const auto& branch : chain.branches)
                    text += (text.empty()       ? "if"
                             : branch.condition ? "elif"
                                                : "else") +
                            n(branch.index) + "(" + describe(branch.body, language) + ")";
                return text;
            },
            [&](const Program::ForLoop& loop) {
                return "for" + n(loop.index) + " " + std::string(loop.name) + "(" +
                       describe(loop.body, language) + ")";
            },
            [&](const Program::WhileLoop& loop) {
                return "while" + n(loop.index) + "(" + describe(loop.body, language) + ")";
            },
            [&](const Program::Define& define) {
                std::string params;
                for (const auto& param : define.params)
                    params += (params.empty() ? "" : ",") + param;
                return "def" + n(define.index) + " " + std::string(define.name) + "[" + params + "](" +
                       describe(*define.body, language) + ")";
            },
            [&](const Program::Return& statement) {
                return "ret" + n(statement.index) + (statement.value ? "=" : "");
            },
            [&](const Program::BreakLoop& statement) { return "break" + n(statement.index); },
            [&](const Program::ContinueLoop& statement) { return "continue" + n(statement.index); },
        },
        node.node);
}

std::string describe(const ProgramBody& body, Language language) {
    std::string text;
    for (const auto& node : body)
        text += (text.empty() ? "" : " ") + describe(node, language);
    return text;
}

std::string tree(const std::string& text, Language language = Language::english) {
    return describe(Program::parse(SheetLines(text)), language);
}

struct TreeCase {
    std::string text;
    std::string expected;
};

void expectTrees(const std::vector<TreeCase>& cases, Language language = Language::english) {
    for (const auto& c : cases)
        EXPECT_EQ(tree(c.text, language), c.expected) << c.text;
}

} // namespace

TEST(Program, Rows) {
    struct Case {
        std::string line;
        std::int64_t indent;
        std::string text;
        Program::Row::Kind kind;
    };
    using Kind = Program::Row::Kind;
    const Case cases[] = {
        {"", 0, "", Kind::blank},
        {" \t ", 6, "", Kind::blank},
        {"    x", 4, "x", Kind::code},
        {"\tx ", 4, "x", Kind::code},
        {"\u3000\u3000x", 2, "x", Kind::code},
        {"// a", 0, "// a", Kind::comment},
        {"＃ a", 0, "＃ a", Kind::comment},
        {"#", 0, "#", Kind::comment},
        {"# 3", 0, "# 3", Kind::comment},
        {"#3", 0, "#3", Kind::code},
        {"#٣", 0, "#٣", Kind::code},
        {"  #x", 2, "#x", Kind::comment},
        {"/ 2", 0, "/ 2", Kind::code},
    };
    for (const auto& c : cases) {
        const Program::Row row = Program::makeRow(7, c.line);
        EXPECT_EQ(row.index, 7);
        EXPECT_EQ(row.indent, c.indent) << c.line;
        EXPECT_EQ(row.text, c.text) << c.line;
        EXPECT_EQ(row.kind, c.kind) << c.line;
    }
}

TEST(Program, ValidNames) {
    for (const char* name : {"x", "_", "税込", "a1", "価格_2", "Ωmega"})
        EXPECT_TRUE(Program::isValidName(name)) << name;
    for (const char* name : {"", "1a", "a b", "a-b", "f(x)", "#"})
        EXPECT_FALSE(Program::isValidName(name)) << name;
}

TEST(Program, Blocks) {
    expectTrees({
        {"1\n\n// n", "L0 _1 #2"},
        {"if x:\n  1\n2", "if0(L1) L2"},
        {"if x:\n1", "if0() L1"}, // nothing indented: empty body
        {"if x:\n  1\n\n// n\n  2\n3", "if0(L1 _2 #3 L4) L5"},
        {"if x:\n    1\n// unindented note\n    2", "if0(L1 #2 L3)"},
        {"1\n    2\n3", "L0 L1 L2"},                 // deeper indent without a header
        {"if x:\n\t1\n    2", "if0(L1 L2)"},         // a tab is as wide as four spaces
        {"if x:\n\u3000\u30001\n  2", "if0(L1 L2)"}, // an ideographic space as one space
        {"for i in xs:\n  if i:\n    break\n  continue\n3", "for0 i(if1(break2) continue3) L4"},
        {"while n < 3:\n  n = n + 1", "while0(L1)"},
        {"def f(a, b):\n  return a\n  return\nf(1, 2)", "def0 f[a,b](ret1= ret2) L3"},
        {"def g():\n  return(1)", "def0 g[](ret1=)"},
        {"ifx:\n1", "L0 L1"}, // a keyword needs a space, ( or the end after it
        {"if(x):\n  1", "if0(L1)"},
        {"if\u3000x:\n  1", "if0(L1)"},
        {"note:\n  1", "L0 L1"},
        {"returns\nbreak 2", "L0 L1"},
    });
}

TEST(Program, IfChains) {
    expectTrees({
        {"if a:\n  1\nelif b:\n  2\nelse:\n  3\n4", "if0(L1)elif2(L3)else4(L5) L6"},
        {"if a:\n  1\n\n// n\nelse:\n  3", "if0(L1 _2 #3)else4(L5)"},
        {"if a:\nelse:\n  3", "if0()else1(L2)"},
        {"if a:\n  if b:\n    1\n  else:\n    2\nelse:\n  3", "if0(if1(L2)else3(L4))else5(L6)"},
        {"if a:\n  1\nelse:\n  2\nelse:\n  3", "if0(L1)else2(L3) !4 No matching if(L5)"},
        {"if a:\n  1\n  else:\n    2", "if0(L1 !2 No matching if(L3))"},
        {"for i in xs:\n  1\nelse:\n  2", "for0 i(L1) !2 No matching if(L3)"},
        {"while a:\n  1\nelif b:\n  2", "while0(L1) !2 No matching if(L3)"},
    });
}

TEST(Program, StructuralMistakes) {
    expectTrees({
        {"if 1 +:\n  2\n3", "!0 The condition isn’t written correctly(if0(L1)) L2"},
        {"if a:\n  1\nelif = 2:\n  2", "!2 The condition isn’t written correctly(if0(L1)else2(L3))"},
        {"if:\n  1", "!0 The condition isn’t written correctly(if0(L1))"},
        {"for i range(3):\n  1", "!0 The range to loop over isn’t written correctly(L1)"},
        {"for a b in xs:\n  1", "!0 for needs a single name after it(L1)"},
        {"while (:\n  1", "!0 Can’t read the while condition(L1)"},
        {"def f:\n  1", "!0 Write it as: def name(arguments):(L1)"},
        {"def 1f(x):\n  1", "!0 Function and argument names must start with a letter(L1)"},
        {"def f(x,):\n  1", "!0 Function and argument names must start with a letter(L1)"},
        {"return 1 +", "!0 Can’t read the expression after return()"},
    });
    expectTrees({{"elif x:", "!0 対応する if がありません()"},
                 {"for i:", "!0 回す範囲の書き方が正しくありません()"},
                 {"for i j in k:", "!0 for のうしろは名前を 1 つ書きます()"},
                 {"while :", "!0 while の条件が読めません()"},
                 {"def f:", "!0 def 名前(引数): の形で書きます()"},
                 {"def f(1):", "!0 関数と引数の名前は、文字で始まる言葉にします()"},
                 {"if 1 +:", "!0 条件の書き方が正しくありません(if0())"},
                 {"return )", "!0 return のうしろの式が読めません()"}},
                Language::japanese);
}

TEST(Program, CollectDefinitions) {
    const SheetLines lines(
        "def f(x):\n  return 1\nif a:\n  def g():\n    return 2\ndef f(y, z):\n  return 3");
    const ProgramBody nodes = Program::parse(lines);
    const FunctionTable table = Program::collectDefinitions(nodes, std::string("Other"));
    ASSERT_EQ(table.size(), 1u); // g is nested in a block and is not collected
    const ProgramFunction& f = table.at("f");
    EXPECT_EQ(f.params, (std::vector<std::string>{"y", "z"})); // the later def wins
    EXPECT_EQ(f.home, "Other");
    EXPECT_EQ(describe(*f.body, Language::english), "ret6=");
}
