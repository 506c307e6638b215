#include <gtest/gtest.h>

#include <charconv>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/EngineTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

std::string print(const Expr* e);

std::string printAll(ExprList items) {
    std::string out;
    for (const Expr& item : items)
        out += " " + print(&item);
    return out;
}

std::string printNumber(double value) {
    char buffer[400];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    return std::string(buffer, result.ptr);
}

// A compact prefix form: (op a b), (unit x m), (to x km/h), (of p b), (idx a i), [a b], 'text'.
// A link's operand, printed as the node it stands for.
std::string printHeld(const expr::Link& link);

std::string printOperand(const expr::Link& link) {
    return link.negated() ? "(- " + printHeld(link) + ")" : printHeld(link);
}

std::string printHeld(const expr::Link& link) {
    switch (link.holds()) {
    case expr::Link::Holds::node:
        return print(link.node());
    case expr::Link::Holds::number:
        return printNumber(link.number());
    case expr::Link::Holds::percent:
        return "(% " + printNumber(link.number()) + ")";
    case expr::Link::Holds::ref:
        return "#" + std::to_string(link.line());
    case expr::Link::Holds::name:
        break;
    }
    return std::string(link.name());
}

std::string print(const Expr* e) {
    return e->visit(overloaded{
        [](const expr::Number& n) { return printNumber(n.value); },
        [](const expr::Text& t) { return "'" + std::string(t.value) + "'"; },
        [](const expr::List& l) {
            std::string items = printAll(l.items);
            return "[" + (items.empty() ? items : items.substr(1)) + "]";
        },
        [](const expr::Index& i) { return "(idx " + print(i.target) + " " + print(i.position) + ")"; },
        [](const expr::Identifier& i) { return std::string(i.name); },
        [](const expr::Ref& r) { return "#" + std::to_string(r.line); },
        [](const expr::Unary& u) {
            return "(" + std::string(expr::spelling(u.op)) + " " + print(u.operand) + ")";
        },
        [](const expr::Chain& c) {
            // Printed as the tree it stands for: terms leaning left, each term's factors
            // grouped first, and each factor's powers before them, from the right.
            auto link = c.links.begin();
            const auto end = c.links.end();
            const auto at = [&](expr::Operator op) { return link != end && link->op() == op; };
            const auto joined = [](expr::Operator op, const std::string& left, const std::string& right) {
                return "(" + std::string(expr::spelling(op)) + " " + left + " " + right + ")";
            };
            const auto powered = [&](const std::string& base) {
                std::vector<std::string> operands{base};
                while (at(expr::Operator::power))
                    operands.push_back(printOperand(*link++));
                std::string printed = operands.back();
                for (auto operand = operands.rbegin() + 1; operand != operands.rend(); ++operand)
                    printed = joined(expr::Operator::power, *operand, printed);
                return printed;
            };
            const auto term = [&](const std::string& first) {
                std::string printed = powered(first);
                while (at(expr::Operator::times) || at(expr::Operator::divide)) {
                    const expr::Operator op = link->op();
                    printed = joined(op, printed, powered(printOperand(*link++)));
                }
                return printed;
            };
            std::string printed = term(print(c.first));
            while (link != end) {
                const expr::Link& joining = *link++;
                const std::string operand = printOperand(joining);
                printed = joined(joining.op(), printed,
                                 expr::isTermOperator(joining.op()) ? term(operand) : operand);
            }
            return printed;
        },
        [](const expr::Percent& p) { return "(% " + print(p.operand) + ")"; },
        [](const expr::UnitApply& u) {
            return "(unit " + print(u.operand) + " " + std::string(u.unit) + ")";
        },
        [](const expr::Measure& m) {
            return "(unit " + printNumber(m.value) + " " + std::string(m.unit) + ")";
        },
        [](const expr::PoweredMeasure& m) {
            return "(* " + printNumber(m.value) + " (^ " + std::string(m.unit->name) + " " +
                   printNumber(m.unit->exponent) + "))";
        },
        [](const expr::Call& c) { return "(call " + std::string(c.name) + printAll(c.args) + ")"; },
        [](const expr::Convert& c) { return "(to " + print(c.operand) + " " + std::string(c.target) + ")"; },
        [](const expr::PercentOf& p) { return "(of " + print(p.percentage) + " " + print(p.base) + ")"; },
    });
}

std::string parsed(std::string_view text) {
    Statement statement = parseStatement(text);
    return (statement.name ? *statement.name + " = " : std::string()) + print(statement.expr.get());
}

std::string parseError(std::string_view text) {
    return messageOf([&] { parseStatement(text); });
}

std::string repeated(std::string_view piece, int count) {
    std::string out;
    for (int i = 0; i < count; ++i)
        out += piece;
    return out;
}

struct Case {
    std::string input;
    std::string expected;
};

} // namespace

TEST(Parser, Trees) {
    const Case cases[] = {
        // Precedence and grouping.
        {"1 + 2 * 3 - 4 / 2", "(- (+ 1 (* 2 3)) (/ 4 2))"},
        {"a - b - c", "(- (- a b) c)"},
        {"2^3^2", "(^ 2 (^ 3 2))"},
        {"-2^2", "(- (^ 2 2))"},
        {"+5", "5"},
        {"2^-1", "(^ 2 -1)"},
        {"-x%", "(- (% x))"},
        {"1 - -x * -#1 + -5% - -x^2", "(- (+ (- 1 (* (- x) (- #1))) (- (% 5))) (- (^ x 2)))"},
        {"1 < 2 < 3", "(< (< 1 2) 3)"},
        {"1 + 2 >= 3 * 4", "(>= (+ 1 2) (* 3 4))"},
        {"a or b and not c", "(or a (and b (not c)))"},
        {"not a == b", "(not (== a b))"},
        // Implicit products, units and percent.
        {"2(3+4)", "(* 2 (+ 3 4))"},
        {"2 sqrt(9)", "(* 2 (call sqrt 9))"},
        {"3x", "(unit 3 x)"},
        {"3x^2", "(* 3 (^ x 2))"},
        {"5 m^2", "(* 5 (^ m 2))"},
        {"3万円", "(unit 30000 円)"},
        {"5 kN m", "(unit (unit 5 kN) m)"},
        {"2 x y^2", "(* (unit 2 x) (^ y 2))"},
        {"x 2", "(* x 2)"},
        {"$5", "(unit 5 $)"},
        {"3000 + 10%", "(+ 3000 (% 10))"},
        {"10% of 3000", "(of (% 10) 3000)"},
        {"10% の 3000", "(of (% 10) 3000)"},
        {"10% of 1000 + 2000", "(of (% 10) (+ 1000 2000))"},
        {"5% of 200 of 10", "(of (of (% 5) 200) 10)"},
        // Conversions.
        {"5 km in m", "(to (unit 5 km) m)"},
        {"5 km → m to cm as mm へ ft で m", "(to (to (to (to (to (unit 5 km) m) cm) mm) ft) m)"},
        {"5 km into m", "(unit (unit (unit 5 km) into) m)"}, // only the listed words convert
        {"x in m/s", "(to x m/s)"},
        {"x to kN*m", "(to x kN·m)"},
        {"x in m^2", "(to x m^2)"},
        {"10% of x in m", "(to (of (% 10) x) m)"},
        {"1 + 2 in m", "(to (+ 1 2) m)"},
        {"f(x in m)", "(call f (to x m))"},
        // Lists, calls, references and names.
        {"[1, 2, 3][1]", "(idx [1 2 3] 1)"},
        {"[]", "[]"},
        {"xs[1][i+1]", "(idx (idx xs 1) (+ i 1))"},
        {"f() + max(1, 2, x)", "(+ (call f) (call max 1 2 x))"},
        {"max(1,234)", "(call max 1234)"},
        {"#3 * 2", "(* #3 2)"},
        {"'a' + \"b\"", "(+ 'a' 'b')"},
        {"a = 3", "a = 3"},
        {"家賃 = 8万円 × 12", "家賃 = (* (unit 80000 円) 12)"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parsed(c.input), c.expected) << c.input;
}

TEST(Parser, Failures) {
    const Case cases[] = {
        {"", "There’s no expression"},
        {"a =", "There’s no expression"},
        {"a = 1 = 2", "This expression isn’t written correctly"},
        {"if = 3", "This expression isn’t written correctly"},
        {"5 in", "This expression isn’t written correctly"},
        {"x in m^2.5", "This expression isn’t written correctly"},
        {"'a' 'b'", "This expression isn’t written correctly"},
        {"5 →", "A unit to convert to is needed"},
        {"xs[1", "Missing ]"},
        {"f(1, 2", "Missing ) to close f("},
        {"sqrt(", "The expression ends in the middle"},
        {"(1+2", "Missing closing parenthesis"},
        {"[1, 2", "Missing ] to close the list"},
        {"1 + )", "No matching opening parenthesis"},
        {"1 + ]", "No matching ["},
        {", 1", "A comma is in the wrong place"},
        {"1+", "The expression ends in the middle"},
        {"*3", "“*” isn’t used correctly here"},
        {"2 ^ %", "“%” isn’t used correctly here"},
        {"1 + = 2", "“=” isn’t used correctly here"},
        {repeated("(", 201) + "1" + repeated(")", 201), "The expression is nested too deeply"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseError(c.input), c.expected) << c.input;
}

TEST(Parser, AnUnreadableCharacterAnywhereOnTheLineIsWhatTheLineReports) {
    // Tokens are read as the grammar asks for them; the line's characters still come first,
    // and of several unreadable ones, the first.
    const Case cases[] = {
        {"1 + ) ☃", "The character “☃” can’t be used"},
        {"1e999 + ☃", "The number is too large"},
        {"(((1 'open", "Missing closing '"},
        {repeated("-", 300) + "1 ☃", "The character “☃” can’t be used"},
        {"x = ☃ )", "The character “☃” can’t be used"},
        {"1 + )", parseError(")")},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseError(c.input), c.expected) << c.input;
}

TEST(Parser, NodesCarryTheTextTheyWereReadFrom) {
    // Each node's text, parents before their children. Brackets that only group a node are
    // outside it; signs and names before a value belong to the node that reads them.
    const struct {
        const char* input;
        std::vector<std::string> expected;
    } cases[] = {
        {"2 * (3 + 4)", {"2 * (3 + 4)", "2", "3 + 4", "3", "4"}},
        {"total = -x^2 %", {"-x^2 %", "x^2 %", "x", "2 %"}},
        {"1 - -x * 2", {"1 - -x * 2", "1", "-x", "2"}},
        {"3x^2", {"3x^2"}},
        {"$5 + #12", {"$5 + #12", "$5", "#12"}},
        {"f(a, (b)) and not [1][0]",
         {"f(a, (b)) and not [1][0]", "f(a, (b))", "a", "b", "not [1][0]", "[1][0]", "[1]", "1", "0"}},
        {"10% of 3000 in km/h", {"10% of 3000 in km/h", "10% of 3000", "10%", "10", "3000"}},
        {"１２３＋“ｘ”", {"123+\"ｘ\"", "123", "\"ｘ\""}},
        {"日本 × 2", {"日本 * 2", "日本", "2"}},
    };
    for (const auto& c : cases) {
        const SourceText source(c.input);
        std::vector<std::string> texts;
        std::function<void(const Expr&)> walk = [&](const Expr& e) {
            texts.emplace_back(source.slice(e.range()));
            e.visit(overloaded{
                [&](const expr::List& l) {
                    for (const Expr& item : l.items)
                        walk(item);
                },
                [&](const expr::Index& i) {
                    walk(*i.target);
                    walk(*i.position);
                },
                [&](const expr::Unary& u) { walk(*u.operand); },
                [&](const expr::Chain& c) {
                    walk(*c.first);
                    for (const expr::Link& link : c.links) {
                        if (link.node())
                            walk(*link.node());
                        else
                            texts.emplace_back(source.slice(link.range()));
                    }
                },
                [&](const expr::Percent& p) { walk(*p.operand); },
                [&](const expr::UnitApply& u) { walk(*u.operand); },
                [&](const expr::Call& call) {
                    for (const Expr& argument : call.args)
                        walk(argument);
                },
                [&](const expr::Convert& convert) { walk(*convert.operand); },
                [&](const expr::PercentOf& p) {
                    walk(*p.percentage);
                    walk(*p.base);
                },
                [](const auto&) {},
            });
        };
        walk(*parseStatement(c.input).expr);
        EXPECT_EQ(texts, c.expected) << c.input;
    }
}

TEST(Parser, HostileInputEndsInATreeOrAnError) {
    // Deep nesting of every recursive form fails cleanly instead of exhausting the stack.
    const std::string deep[] = {
        repeated("(", 10000),       repeated("[", 10000),       repeated("-", 10000) + "1",
        repeated("not ", 10000),    repeated("f(", 10000),      "x" + repeated("[x", 10000),
        repeated("3x^", 10000),     repeated("+", 10000) + "1", "x" + repeated(" in m", 20000),
        "1" + repeated("%", 20000),
    };
    for (const auto& text : deep)
        EXPECT_THROW(parseStatement(text), CalcError) << text.substr(0, 20);

    // Long but shallow lines still parse.
    EXPECT_NO_THROW(parseStatement(repeated("(", 200) + "1" + repeated(")", 200)));
    EXPECT_NO_THROW(parseStatement(repeated("1+", 500) + "1"));
    // Chains of terms are flat, not nested, whatever their length.
    EXPECT_NO_THROW(parseStatement(repeated("1+", 50000) + "1"));
    EXPECT_NO_THROW(parseStatement("1+" + repeated("2*", 50000) + "2 - (" + repeated("3/", 50000) + "3)"));
    EXPECT_NO_THROW(parseStatement(repeated("2 ", 50000)));
    EXPECT_NO_THROW(parseStatement(repeated("2^", 50000) + "2"));
    EXPECT_NO_THROW(parseStatement(repeated("a < ", 50000) + "b"));
    EXPECT_NO_THROW(parseStatement("[" + repeated("1, ", 30000) + "1]"));

    // Random mixtures of awkward pieces never escape as anything but CalcError.
    const std::vector<std::string> pieces{"1",  "2,345", "1e5", ".5", "万",  "(",    ")",    "[",  "]",
                                          ",",  "+",     "-",   "*",  "^",   "%",    "=",    "x",  "km/h",
                                          "in", "→",     "of",  "の", "not", "and",  "f(",   "\"", "'",
                                          "\\", "#1",    "#",   "“",  " ",   "\xff", "\x01", "$"};
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        const int length = static_cast<int>(random() % 12);
        for (int i = 0; i < length; ++i)
            text += pieces[random() % pieces.size()];
        try {
            parseStatement(text);
        } catch (const CalcError&) {
        }
    }
}
