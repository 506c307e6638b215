#pragma once

// Grammar, loosest first (every level of binary operators loops):
//   statement      := [name "="] expression eof
//   expression     := or { ("in"|"to"|"as"|"へ"|"で"|"→") unitTarget | ("of"|"の") arithmetic }
//   or             := and { "or" and }
//   and            := not { "and" not }
//   not            := "not" not | comparison
//   comparison     := arithmetic { ("=="|"!="|"<"|"<="|">"|">=") arithmetic }
//   arithmetic     := operand { ("+"|"-"|"*"|"/"|"^") operand | <implicit product> operand }
//   operand        := unary | postfix
//   unary          := "-" unary | "+" unary | postfix { "^" operand }
//   postfix        := primary { name { "^" operand } | "%" | "[" expression "]" }
//   primary        := number | text | ref | call | unit postfix | name | "(" expression ")" | list

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/language/Expr.h"
#include "LumoKit/language/Lexer.h"

namespace lumo {

/// The most levels of nesting (brackets, calls, signs, units raised to powers, "not") one
/// expression may have.
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

/// Recursive-descent parser over one line's tokens, read as the rules ask for them with one
/// token of lookahead. The text must outlive the parser.
class Parser {
public:
    explicit Parser(std::string_view text);
    /// A parser whose trees live in `arena`, which must outlive them: the roots it hands out
    /// point into the arena without owning it.
    Parser(std::string_view text, ExprArena& arena);

    /// The statement rule: optional name, expression, end of line.
    Statement parseStatement();
    /// The expression rule alone (conversion level); leaves the tokens after it unread.
    ExprPtr parseExpression();
    /// The expression rule, up to the end of the line.
    ExprPtr parseWholeExpression();

    const Token& current() const { return m_window[m_at]; }
    /// The token after the current one.
    const Token& peek() const { return m_window[m_at ^ 1]; }
    bool atEnd() const;

private:
    // One function per grammar level. Nodes are made in the arena of the tree being read;
    // the public functions hand out its root.
    Statement parseStatementRule();
    const Expr* parseConversion();
    const Expr* parseOr();
    const Expr* parseAnd();
    const Expr* parseNot();
    const Expr* parseComparison();
    const Expr* parseArithmetic();
    const Expr* parseOperand();
    const Expr* parseUnary();
    const Expr* parsePower();
    const Expr* parsePostfix();
    const Expr* parsePrimary();
    std::string parseUnitTarget();
    const Expr* parseCall(KeptText name, std::uint32_t first);
    KeptText keepWord(std::string_view word);
    const Expr* parseList();

    class ChainReader;
    void readPowers(ChainReader& chain);
    const Expr* poweredUnit(const Expr* factor, std::optional<double> number, KeptText name,
                            SourceRange nameRange, std::uint32_t first);
    class ItemReader;
    /// Reads operands joined by the operators that `operatorHere` finds, left to right.
    template <typename Operand, typename OperatorHere>
    const Expr* readChain(Operand operand, OperatorHere operatorHere);
    ExprPtr root(const Expr* node) const;

    /// Rethrows a failure of the rules, unless the rest of the line holds an unreadable
    /// character: then that is thrown.
    [[noreturn]] void failWithLineErrorFirst(const CalcError& error);
    /// Applies a rule, with failures passed through failWithLineErrorFirst.
    template <typename Rule> auto readingTheLineFirst(Rule rule);

    // Called for every token, so it is defined here to be inlined. At the end, the current
    // token stays `eof`.
    void advance() {
        if (current().kind != Token::Kind::eof) {
            m_consumedEnd = current().range().end;
            m_at ^= 1;
            m_stream.next(m_window[m_at ^ 1]);
        }
    }
    /// Where the current token begins.
    std::uint32_t here() const { return current().range().begin; }
    /// From `first` to the end of the last token consumed.
    SourceRange rangeFrom(std::uint32_t first) const { return {first, m_consumedEnd}; }

    std::shared_ptr<ExprArena> m_ownedArena; // absent when the arena is lent
    ExprArena* m_arena;
    KeptText m_lastWord; // the name or unit kept last
    TokenStream m_stream;
    // The current token and the one after it, which swap places as the parser advances.
    Token m_window[2];
    int m_at = 0;
    std::uint32_t m_consumedEnd = 0; // where the last token consumed ends
    int m_depth = 0;                 // guards the recursion against deeply nested input
    int m_chain = 0; // operators chained to the left on the current path, bounding the tree's height
};

/// Tokenises a line and applies the statement rule. Throws CalcError.
Statement parseStatement(std::string_view text);
/// The same, with the tree in `arena`, which must outlive it.
Statement parseStatement(std::string_view text, ExprArena& arena);

} // namespace lumo
