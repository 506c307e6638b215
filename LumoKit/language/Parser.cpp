#include "LumoKit/language/Parser.h"

// Grammar, loosest first. Every binary level is a loop, so it groups to the left, except "^".
//
//   statement      := [name "="] expression eof          name: an identifier that isn't reserved
//   expression     := or { convWord unitTarget | "→" unitTarget | ("of"|"の") additive }
//                     convWord ("in" "to" "as" "へ" "で") converts only when a name follows it
//   or             := and { "or" and }
//   and            := not { "and" not }
//   not            := "not" not | comparison
//   comparison     := additive { ("=="|"!="|"<"|"<="|">"|">=") additive }
//   additive       := multiplicative { ("+"|"-") multiplicative }
//   multiplicative := unary { ("*"|"/") unary | unary }   the bare form only before a number,
//                                                          "(" or a call: 2(3+4), 2 sqrt(9)
//   unary          := "-" unary | "+" unary | power
//   power          := postfix [ "^" unary ]                right-associative, signed exponent
//   postfix        := primary { name ["^" unary] | "%" | "[" expression "]" }
//                     name: not reserved, not "の", not followed by "("; "3x^2" is 3·(x^2)
//   primary        := number | text | ref | name "(" [expression {"," expression}] ")"
//                   | unit postfix                        a known unit before a number: $5
//                   | name | "(" expression ")" | "[" [expression {"," expression}] "]"
//   unitTarget     := name { ("/"|"*") name | "^" digit }  text such as "km/h", "kN·m", "m^2"
//
// Nesting (brackets, calls, indexes, signs, powers, "not") is limited to maxExpressionNesting
// levels and the postfix and conversion chains of one operand to maxExpressionChain, so hostile
// input ends in an error rather than a stack overflow. Chains of binary operators are flat
// terms, not nesting: they grow without limit, and the tree's walks follow them in loops.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Overloaded.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/values/Units.h"

namespace lumo {

namespace {

using Kind = Token::Kind;

[[noreturn]] void fail(MessageKind kind) {
    throw CalcError(kind);
}

[[noreturn]] void failTooDeep() {
    fail(MessageKind::nestedTooDeeply);
}

[[noreturn]] void failMissingCallParen(const std::string& name) {
    throw CalcError(MessageKind::missingCallParenthesis, {name});
}

[[noreturn]] void failMisplacedOperator(const std::string& op) {
    throw CalcError(MessageKind::misplacedOperator, {op});
}

// Compared character by character rather than through memcmp: every level of the grammar asks
// these for each operand, and the words are only a few bytes long.
bool sameText(std::string_view text, std::string_view expected) {
    if (text.size() != expected.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != expected[i])
            return false;
    }
    return true;
}

bool isOp(const Token& token, std::string_view op) {
    return token.kind == Kind::op && sameText(token.text, op);
}

bool isWord(const Token& token, std::string_view word) {
    return token.kind == Kind::identifier && sameText(token.text, word);
}

bool isPercentOfWord(const Token& token) {
    return isWord(token, keywords::ofWord) || isWord(token, keywords::japaneseOfWord);
}

// One level of nesting for as long as it lives.
class NestingScope {
public:
    explicit NestingScope(int& depth) : m_depth(depth) {
        if (m_depth >= maxExpressionNesting)
            failTooDeep();
        ++m_depth;
    }
    ~NestingScope() { --m_depth; }
    NestingScope(const NestingScope&) = delete;
    NestingScope& operator=(const NestingScope&) = delete;

private:
    int& m_depth;
};

// The operators one loop level chains to the left; released when the level returns.
class ChainScope {
public:
    explicit ChainScope(int& chain) : m_chain(chain), m_saved(chain) {}
    ~ChainScope() { m_chain = m_saved; }
    ChainScope(const ChainScope&) = delete;
    ChainScope& operator=(const ChainScope&) = delete;

    void lengthen() {
        if (m_chain >= maxExpressionChain)
            failTooDeep();
        ++m_chain;
    }

private:
    int& m_chain;
    int m_saved;
};

ExprPtr makeBinary(std::string op, ExprPtr left, ExprPtr right, SourceRange range) {
    return makeExpr(expr::Binary{std::move(op), std::move(left), std::move(right)}, range);
}

// A whole exponent small enough for a unit target ("m^2").
bool isUnitExponent(const Token& token) {
    return token.kind == Kind::number && std::abs(token.number) <= 9 &&
           token.number == std::trunc(token.number);
}

// ---------------------------------------------------------------------------------------------
// Structural equality
// ---------------------------------------------------------------------------------------------

bool same(const ExprPtr& a, const ExprPtr& b) {
    if (!a || !b)
        return !a && !b;
    return a == b || sameTree(*a, *b);
}

bool same(const std::vector<ExprPtr>& a, const std::vector<ExprPtr>& b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!same(a[i], b[i]))
            return false;
    }
    return true;
}

bool same(const expr::Number& a, const expr::Number& b) {
    return a.value == b.value;
}
bool same(const expr::Text& a, const expr::Text& b) {
    return a.value == b.value;
}
bool same(const expr::List& a, const expr::List& b) {
    return same(a.items, b.items);
}
bool same(const expr::Index& a, const expr::Index& b) {
    return same(a.target, b.target) && same(a.position, b.position);
}
bool same(const expr::Identifier& a, const expr::Identifier& b) {
    return a.name == b.name;
}
bool same(const expr::Ref& a, const expr::Ref& b) {
    return a.line == b.line;
}
bool same(const expr::Unary& a, const expr::Unary& b) {
    return a.op == b.op && same(a.operand, b.operand);
}
bool same(const expr::Binary& a, const expr::Binary& b) {
    return a.op == b.op && same(a.left, b.left) && same(a.right, b.right);
}
bool same(const expr::Percent& a, const expr::Percent& b) {
    return same(a.operand, b.operand);
}
bool same(const expr::UnitApply& a, const expr::UnitApply& b) {
    return a.unit == b.unit && same(a.operand, b.operand);
}
bool same(const expr::Call& a, const expr::Call& b) {
    return a.name == b.name && same(a.args, b.args);
}
bool same(const expr::Convert& a, const expr::Convert& b) {
    return a.target == b.target && same(a.operand, b.operand);
}
bool same(const expr::PercentOf& a, const expr::PercentOf& b) {
    return same(a.percentage, b.percentage) && same(a.base, b.base);
}

} // namespace

Expr::~Expr() {
    // Only chains of binary operators grow without limit, and they grow leftwards: every other
    // way of nesting is bounded by the parser. A chain is released by recursion while it is
    // shallow, as nearly every tree is; deeper links are queued instead, and released in a loop
    // by the link that started queueing, so the stack never grows with the chain.
    auto* binary = std::get_if<expr::Binary>(&node);
    if (!binary || !binary->left)
        return;
    constexpr int recursionLimit = 256;
    thread_local int depth = 0;
    if (depth < recursionLimit) {
        ++depth;
        binary->left.reset();
        --depth;
        return;
    }
    thread_local std::vector<ExprPtr> queue;
    thread_local bool draining = false;
    queue.push_back(std::move(binary->left));
    if (draining)
        return;
    draining = true;
    while (!queue.empty()) {
        ExprPtr last = std::move(queue.back());
        queue.pop_back();
        last.reset();
    }
    draining = false;
}

bool sameTree(const Expr& a, const Expr& b) {
    // A left chain of operators is compared link by link in a loop.
    const Expr* first = &a;
    const Expr* second = &b;
    while (true) {
        const auto* x = first->as<expr::Binary>();
        const auto* y = second->as<expr::Binary>();
        if (!x || !y)
            break;
        if (x->op != y->op || !same(x->right, y->right))
            return false;
        if (!x->left || !y->left || x->left == y->left)
            return x->left == y->left;
        first = x->left.get();
        second = y->left.get();
    }
    if (first->node.index() != second->node.index())
        return false;
    return std::visit(
        [second](const auto& left) {
            using Node = std::decay_t<decltype(left)>;
            return same(left, std::get<Node>(second->node));
        },
        first->node);
}

// The word sets are small enough that a scan beats hashing.
bool isReservedWord(std::string_view word) {
    return keywords::isReservedWord(word);
}

bool isConversionWord(std::string_view word) {
    return keywords::isConversionWord(word);
}

bool isComparisonOperator(std::string_view op) {
    static constexpr std::string_view ops[] = {"==", "!=", "<", "<=", ">", ">="};
    return op.size() <= 2 && std::find(std::begin(ops), std::end(ops), op) != std::end(ops);
}

// ---------------------------------------------------------------------------------------------
// Parser
// ---------------------------------------------------------------------------------------------

Parser::Parser(std::vector<Token> tokens) : m_tokens(std::move(tokens)) {
    // The rules rely on a final eof; a hand-made list without one still gets it.
    if (m_tokens.empty() || m_tokens.back().kind != Kind::eof)
        m_tokens.push_back(Token::make(Kind::eof, m_tokens.empty() ? 0 : m_tokens.back().start));
}

const Token& Parser::current() const {
    return m_tokens[m_index];
}

const Token& Parser::peek(std::size_t ahead) const {
    return m_tokens[std::min(m_index + ahead, m_tokens.size() - 1)];
}

bool Parser::atEnd() const {
    return current().kind == Kind::eof;
}

Statement Parser::parseStatement() {
    Statement statement;
    if (current().kind == Kind::identifier && isOp(peek(), "=") && !isReservedWord(current().text)) {
        statement.name = current().text;
        advance();
        advance();
    }
    if (atEnd())
        fail(MessageKind::noExpression);
    statement.expr = parseExpression();
    if (!atEnd())
        fail(MessageKind::badExpression);
    return statement;
}

ExprPtr Parser::parseExpression() {
    return parseConversion();
}

ExprPtr Parser::parseConversion() {
    const std::size_t first = m_index;
    ExprPtr left = parseOr();
    ChainScope chain(m_chain);
    for (;;) {
        const Token& token = current();
        const bool convertWord =
            token.kind == Kind::identifier && isConversionWord(token.text) && peek().kind == Kind::identifier;
        if (convertWord || isOp(token, "→")) {
            advance();
            chain.lengthen();
            std::string target = parseUnitTarget();
            left = makeExpr(expr::Convert{std::move(left), std::move(target)}, rangeFrom(first));
        } else if (isPercentOfWord(token)) {
            advance();
            chain.lengthen();
            ExprPtr base = parseAdditive();
            left = makeExpr(expr::PercentOf{std::move(left), std::move(base)}, rangeFrom(first));
        } else {
            return left;
        }
    }
}

ExprPtr Parser::parseOr() {
    const std::size_t first = m_index;
    ExprPtr left = parseAnd();
    while (isWord(current(), keywords::orWord)) {
        advance();
        ExprPtr right = parseAnd();
        left = makeBinary("or", std::move(left), std::move(right), rangeFrom(first));
    }
    return left;
}

ExprPtr Parser::parseAnd() {
    const std::size_t first = m_index;
    ExprPtr left = parseNot();
    while (isWord(current(), keywords::andWord)) {
        advance();
        ExprPtr right = parseNot();
        left = makeBinary("and", std::move(left), std::move(right), rangeFrom(first));
    }
    return left;
}

ExprPtr Parser::parseNot() {
    if (!isWord(current(), keywords::notWord))
        return parseComparison();
    const std::size_t first = m_index;
    advance();
    NestingScope nesting(m_depth);
    ExprPtr operand = parseNot();
    return makeExpr(expr::Unary{"not", std::move(operand)}, rangeFrom(first));
}

ExprPtr Parser::parseComparison() {
    const std::size_t first = m_index;
    ExprPtr left = parseAdditive();
    while (current().kind == Kind::op && isComparisonOperator(current().text)) {
        std::string op = current().text;
        advance();
        ExprPtr right = parseAdditive();
        left = makeBinary(std::move(op), std::move(left), std::move(right), rangeFrom(first));
    }
    return left;
}

ExprPtr Parser::parseAdditive() {
    const std::size_t first = m_index;
    ExprPtr left = parseMultiplicative();
    while (isOp(current(), "+") || isOp(current(), "-")) {
        std::string op = current().text;
        advance();
        ExprPtr right = parseMultiplicative();
        left = makeBinary(std::move(op), std::move(left), std::move(right), rangeFrom(first));
    }
    return left;
}

ExprPtr Parser::parseMultiplicative() {
    const std::size_t first = m_index;
    ExprPtr left = parseUnary();
    for (;;) {
        const Token& token = current();
        std::string op;
        if (isOp(token, "*") || isOp(token, "/")) {
            op = token.text;
            advance();
        } else if (token.kind == Kind::number || token.kind == Kind::lparen ||
                   (token.kind == Kind::identifier && peek().kind == Kind::lparen)) {
            op = "*"; // implicit product; the operand's token is not consumed here
        } else {
            return left;
        }
        ExprPtr right = parseUnary();
        left = makeBinary(std::move(op), std::move(left), std::move(right), rangeFrom(first));
    }
}

ExprPtr Parser::parseUnary() {
    if (isOp(current(), "-")) {
        const std::size_t first = m_index;
        advance();
        NestingScope nesting(m_depth);
        ExprPtr operand = parseUnary();
        return makeExpr(expr::Unary{"-", std::move(operand)}, rangeFrom(first));
    }
    if (isOp(current(), "+")) {
        advance();
        NestingScope nesting(m_depth);
        return parseUnary();
    }
    return parsePower();
}

ExprPtr Parser::parsePower() {
    const std::size_t first = m_index;
    ExprPtr base = parsePostfix();
    if (!isOp(current(), "^"))
        return base;
    advance();
    NestingScope nesting(m_depth);
    ExprPtr exponent = parseUnary();
    return makeBinary("^", std::move(base), std::move(exponent), rangeFrom(first));
}

ExprPtr Parser::parsePostfix() {
    const std::size_t first = m_index;
    ExprPtr e = parsePrimary();
    ChainScope chain(m_chain);
    for (;;) {
        const Token& token = current();
        if (token.kind == Kind::identifier && !isReservedWord(token.text) &&
            !sameText(token.text, keywords::japaneseOfWord) && peek().kind != Kind::lparen) {
            std::string unit = token.text;
            const std::size_t unitToken = m_index;
            advance();
            chain.lengthen();
            if (isOp(current(), "^")) {
                advance();
                NestingScope nesting(m_depth);
                ExprPtr name = makeExpr(expr::Identifier{std::move(unit)}, m_tokens[unitToken].range());
                ExprPtr exponent = parseUnary();
                ExprPtr power = makeBinary("^", std::move(name), std::move(exponent), rangeFrom(unitToken));
                e = makeBinary("*", std::move(e), std::move(power), rangeFrom(first));
            } else {
                e = makeExpr(expr::UnitApply{std::move(e), std::move(unit)}, rangeFrom(first));
            }
        } else if (isOp(token, "%")) {
            advance();
            chain.lengthen();
            e = makeExpr(expr::Percent{std::move(e)}, rangeFrom(first));
        } else if (token.kind == Kind::lbracket) {
            advance();
            chain.lengthen();
            NestingScope nesting(m_depth);
            ExprPtr position = parseConversion();
            if (current().kind != Kind::rbracket)
                fail(MessageKind::missingBracket);
            advance();
            e = makeExpr(expr::Index{std::move(e), std::move(position)}, rangeFrom(first));
        } else {
            return e;
        }
    }
}

ExprPtr Parser::parsePrimary() {
    const Token& token = current();
    const std::size_t first = m_index;
    const SourceRange range = token.range();
    switch (token.kind) {
    case Kind::number: {
        double value = token.number;
        advance();
        return makeExpr(expr::Number{value}, range);
    }
    case Kind::string: {
        std::string text = token.text;
        advance();
        return makeExpr(expr::Text{std::move(text)}, range);
    }
    case Kind::ref: {
        std::int64_t line = token.ref;
        advance();
        return makeExpr(expr::Ref{line}, range);
    }
    case Kind::identifier: {
        std::string name = token.text;
        advance();
        if (current().kind == Kind::lparen)
            return parseCall(std::move(name), first);
        if (current().kind == Kind::number && isKnownUnit(name)) {
            // A unit written before its value: $5, ¥1200.
            NestingScope nesting(m_depth);
            ExprPtr operand = parsePostfix();
            return makeExpr(expr::UnitApply{std::move(operand), std::move(name)}, rangeFrom(first));
        }
        return makeExpr(expr::Identifier{std::move(name)}, range);
    }
    case Kind::lparen: {
        advance();
        NestingScope nesting(m_depth);
        ExprPtr inner = parseConversion();
        if (current().kind != Kind::rparen)
            fail(MessageKind::missingClosingParenthesis);
        advance();
        return inner;
    }
    case Kind::lbracket:
        return parseList();
    case Kind::rparen:
        fail(MessageKind::noOpeningParenthesis);
    case Kind::rbracket:
        fail(MessageKind::noOpeningBracket);
    case Kind::comma:
        fail(MessageKind::misplacedComma);
    case Kind::eof:
        fail(MessageKind::endsInTheMiddle);
    case Kind::op:
        failMisplacedOperator(token.text);
    }
    failMisplacedOperator(token.text);
}

ExprPtr Parser::parseCall(std::string name, std::size_t first) {
    advance(); // "("
    NestingScope nesting(m_depth);
    std::vector<ExprPtr> args;
    if (current().kind != Kind::rparen) {
        args.push_back(parseConversion());
        while (current().kind == Kind::comma) {
            advance();
            args.push_back(parseConversion());
        }
    }
    if (current().kind != Kind::rparen)
        failMissingCallParen(name);
    advance();
    return makeExpr(expr::Call{std::move(name), std::move(args)}, rangeFrom(first));
}

ExprPtr Parser::parseList() {
    const std::size_t first = m_index;
    advance(); // "["
    NestingScope nesting(m_depth);
    std::vector<ExprPtr> items;
    if (current().kind != Kind::rbracket) {
        items.push_back(parseConversion());
        while (current().kind == Kind::comma) {
            advance();
            items.push_back(parseConversion());
        }
    }
    if (current().kind != Kind::rbracket)
        fail(MessageKind::missingListBracket);
    advance();
    return makeExpr(expr::List{std::move(items)}, rangeFrom(first));
}

std::string Parser::parseUnitTarget() {
    if (current().kind != Kind::identifier)
        fail(MessageKind::missingTargetUnit);
    std::string target = current().text;
    advance();
    for (;;) {
        const Token& token = current();
        const Token& next = peek();
        if ((isOp(token, "/") || isOp(token, "*")) && next.kind == Kind::identifier &&
            !isReservedWord(next.text)) {
            target += token.text == "/" ? "/" : "·";
            target += next.text;
        } else if (isOp(token, "^") && isUnitExponent(next)) {
            target += '^';
            target += std::to_string(static_cast<int>(next.number));
        } else {
            return target;
        }
        advance();
        advance();
    }
}

Statement parseStatement(std::string_view text) {
    return Parser(tokenize(text)).parseStatement();
}

} // namespace lumo
