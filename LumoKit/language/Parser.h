#pragma once

// Grammar, loosest first (every binary level loops, so it groups to the left, except "^"):
//   statement      := [name "="] expression eof
//   expression     := or { ("in"|"to"|"as"|"へ"|"で"|"→") unitTarget | ("of"|"の") additive }
//   or             := and { "or" and }
//   and            := not { "and" not }
//   not            := "not" not | comparison
//   comparison     := additive { ("=="|"!="|"<"|"<="|">"|">=") additive }
//   additive       := multiplicative { ("+"|"-") multiplicative }
//   multiplicative := unary { ("*"|"/") unary | <implicit product> unary }
//   unary          := "-" unary | "+" unary | power
//   power          := postfix [ "^" unary ]
//   postfix        := primary { name ["^" unary] | "%" | "[" expression "]" }
//   primary        := number | text | ref | call | unit postfix | name | "(" expression ")" | list

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "LumoKit/language/Lexer.h"

namespace lumo {

struct Expr;
/// Children are shared immutably, so trees are cheap to copy and safe to cache.
using ExprPtr = std::shared_ptr<const Expr>;

namespace expr {
struct Number {
    double value;
};
struct Text {
    std::string value;
};
struct List {
    std::vector<ExprPtr> items;
};
struct Index {
    ExprPtr target;
    ExprPtr position;
};
struct Identifier {
    std::string name;
};
struct Ref {
    std::int64_t line;
};
struct Unary {
    std::string op;
    ExprPtr operand;
}; // "-" or "not"
struct Binary {
    std::string op;
    ExprPtr left;
    ExprPtr right;
};
struct Percent {
    ExprPtr operand;
};
struct UnitApply {
    ExprPtr operand;
    std::string unit;
};
struct Call {
    std::string name;
    std::vector<ExprPtr> args;
};
struct Convert {
    ExprPtr operand;
    std::string target;
};
struct PercentOf {
    ExprPtr percentage;
    ExprPtr base;
};
} // namespace expr

struct Expr {
    using Node = std::variant<expr::Number, expr::Text, expr::List, expr::Index, expr::Identifier, expr::Ref,
                              expr::Unary, expr::Binary, expr::Percent, expr::UnitApply, expr::Call,
                              expr::Convert, expr::PercentOf>;
    Node node;
    /// The characters of the parsed text this node was read from, from its first token to its
    /// last. Brackets that only group it are outside: in "(a)" the node `a` covers the "a".
    SourceRange range;

    // Built from any of its cases. Spelled out because clang does not yet build aggregates
    // from parentheses, which std::make_shared needs.
    Expr(Node n, SourceRange r = {}) : node(std::move(n)), range(r) {}
    /// Releases a chain of binary operators of any length in bounded stack.
    ~Expr();

    template <typename T> const T* as() const { return std::get_if<T>(&node); }
    template <typename T> bool is() const { return std::holds_alternative<T>(node); }
};

template <typename T> ExprPtr makeExpr(T node, SourceRange range = {}) {
    return std::make_shared<const Expr>(std::move(node), range);
}

/// Structural equality of two trees (numbers compared exactly; ranges are not compared).
bool sameTree(const Expr& a, const Expr& b);

/// The most levels of nesting (brackets, calls, signs, powers, "not") one expression may have.
/// A chain of binary operators (1+1+…+1) is not nesting: it has no limit, and every walk of
/// a tree follows such a chain in a loop.
inline constexpr int maxExpressionNesting = 200;
/// The most units, "%", indexes and conversions one operand may chain (5 km in m in cm …),
/// so that walking them recursively stays within a modest stack.
inline constexpr int maxExpressionChain = 1000;

/// A line: an optional name and its expression.
struct Statement {
    std::optional<std::string> name;
    ExprPtr expr;
};

/// The word sets of the grammar.
bool isReservedWord(std::string_view word);
bool isConversionWord(std::string_view word);
bool isComparisonOperator(std::string_view op);

/// Recursive-descent parser over one token list; `index` never passes the final eof.
class Parser {
public:
    explicit Parser(std::vector<Token> tokens);

    /// The statement rule: optional name, expression, end of line.
    Statement parseStatement();
    /// The expression rule alone (conversion level); leaves the index after it.
    ExprPtr parseExpression();

    const Token& current() const;
    const Token& peek(std::size_t ahead = 1) const;
    bool atEnd() const;
    std::size_t index() const { return m_index; }

private:
    // One function per grammar level.
    ExprPtr parseConversion();
    ExprPtr parseOr();
    ExprPtr parseAnd();
    ExprPtr parseNot();
    ExprPtr parseComparison();
    ExprPtr parseAdditive();
    ExprPtr parseMultiplicative();
    ExprPtr parseUnary();
    ExprPtr parsePower();
    ExprPtr parsePostfix();
    ExprPtr parsePrimary();
    std::string parseUnitTarget();
    ExprPtr parseCall(std::string name, std::size_t first);
    ExprPtr parseList();

    // Called for every token, so it is defined here to be inlined.
    void advance() {
        if (m_index + 1 < m_tokens.size()) {
            m_consumedEnd = m_tokens[m_index].range().end;
            ++m_index;
        }
    }
    /// From the start of the token at `first` to the end of the last token consumed.
    SourceRange rangeFrom(std::size_t first) const { return {m_tokens[first].range().begin, m_consumedEnd}; }

    std::vector<Token> m_tokens;
    std::size_t m_index = 0;
    std::uint32_t m_consumedEnd = 0; // where the last token consumed ends
    int m_depth = 0;                 // guards the recursion against deeply nested input
    int m_chain = 0; // operators chained to the left on the current path, bounding the tree's height
};

/// Tokenises a line and applies the statement rule. Throws CalcError.
Statement parseStatement(std::string_view text);

} // namespace lumo
