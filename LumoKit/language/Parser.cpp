#include "LumoKit/language/Parser.h"

// Grammar, loosest first. Every level of binary operators is a loop.
//
//   statement      := [name "="] expression eof          name: an identifier that isn't reserved
//   expression     := or { convWord unitTarget | "→" unitTarget | ("of"|"の") arithmetic }
//                     convWord ("in" "to" "as" "へ" "で") converts only when a name follows it
//   or             := and { "or" and }
//   and            := not { "and" not }
//   not            := "not" not | comparison
//   comparison     := arithmetic { ("=="|"!="|"<"|"<="|">"|">=") arithmetic }
//   arithmetic     := operand { ("+"|"-"|"*"|"/"|"^") operand | operand }
//                     one chain, which the evaluator groups: "^" first, from the right, then
//                     "*" and "/", then "+" and "-", from the left. The bare form, a product, only
//                     before a number, "(" or a call: 2(3+4), 2 sqrt(9)
//   operand        := unary | postfix
//   unary          := "-" unary | "+" unary | postfix { "^" operand }   a sign covers the powers
//                                                                        after it: -2^2 is -(2^2)
//   postfix        := primary { name { "^" operand } | "%" | "[" expression "]" }
//                     name: not reserved, not "の", not followed by "("; "3x^2" is 3·(x^2)
//   primary        := number | text | ref | name "(" [expression {"," expression}] ")"
//                   | unit postfix                        a known unit before a number: $5
//                   | name | "(" expression ")" | "[" [expression {"," expression}] "]"
//   unitTarget     := name { ("/"|"*") name | "^" digit }  text such as "km/h", "kN·m", "m^2"
//
// Nesting (brackets, calls, indexes, signs, units raised to powers, "not") is limited to
// maxExpressionNesting levels and the postfix and conversion chains of one operand to
// maxExpressionChain, so hostile input ends in an error rather than a stack overflow. Chains of
// binary operators are flat, not nesting: they grow without limit, and the tree's walks follow
// them in loops.

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

constexpr expr::Operator comparisonOperators[] = {
    expr::Operator::equal,       expr::Operator::notEqual, expr::Operator::less,
    expr::Operator::lessOrEqual, expr::Operator::greater,  expr::Operator::greaterOrEqual,
};

std::optional<expr::Operator> comparisonOperator(std::string_view op) {
    for (const expr::Operator comparison : comparisonOperators) {
        if (sameText(expr::spelling(comparison), op))
            return comparison;
    }
    return std::nullopt;
}

std::optional<expr::Operator> arithmeticOperator(std::string_view op) {
    if (op.size() != 1)
        return std::nullopt;
    switch (op[0]) {
    case '+':
        return expr::Operator::plus;
    case '-':
        return expr::Operator::minus;
    case '*':
        return expr::Operator::times;
    case '/':
        return expr::Operator::divide;
    case '^':
        return expr::Operator::power;
    default:
        return std::nullopt;
    }
}

// A whole exponent small enough for a unit target ("m^2").
bool isUnitExponent(const Token& token) {
    return token.kind == Kind::number && std::abs(token.number) <= 9 &&
           token.number == std::trunc(token.number);
}

} // namespace

// The word sets are small enough that a scan beats hashing.
bool isReservedWord(std::string_view word) {
    return keywords::isReservedWord(word);
}

bool isConversionWord(std::string_view word) {
    return keywords::isConversionWord(word);
}

bool isComparisonOperator(std::string_view op) {
    return comparisonOperator(op).has_value();
}

// ---------------------------------------------------------------------------------------------
// Parser
// ---------------------------------------------------------------------------------------------

Parser::Parser(std::string_view text)
    : m_ownedArena(std::make_shared<ExprArena>()), m_arena(m_ownedArena.get()), m_stream(text) {
    m_stream.next(m_window[0]);
    m_stream.next(m_window[1]);
}

Parser::Parser(std::string_view text, ExprArena& arena) : m_arena(&arena), m_stream(text) {
    m_stream.next(m_window[0]);
    m_stream.next(m_window[1]);
}

bool Parser::atEnd() const {
    return current().kind == Kind::eof;
}

void Parser::failWithLineErrorFirst(const CalcError& error) {
    // Tokens are scanned as the rules ask for them, but the line's text is judged before its
    // grammar: a character that can't be read anywhere on the line is what the line reports.
    while (peek().kind != Kind::eof)
        m_stream.next(m_window[m_at ^ 1]);
    throw error;
}

template <typename Rule> auto Parser::readingTheLineFirst(Rule rule) {
    try {
        return rule();
    } catch (const CalcError& error) {
        failWithLineErrorFirst(error);
    }
}

Statement Parser::parseStatement() {
    return readingTheLineFirst([this] { return parseStatementRule(); });
}

ExprPtr Parser::parseExpression() {
    return readingTheLineFirst([this] { return root(parseConversion()); });
}

ExprPtr Parser::parseWholeExpression() {
    return readingTheLineFirst([this] {
        const Expr* expression = parseConversion();
        if (!atEnd())
            fail(MessageKind::badExpression);
        return root(expression);
    });
}

ExprPtr Parser::root(const Expr* node) const {
    // The root shares the arena's ownership, so the tree lives as long as anyone holds it;
    // in a lent arena it only points.
    return m_ownedArena ? ExprPtr(m_ownedArena, node) : ExprPtr(ExprPtr(), node);
}

Statement Parser::parseStatementRule() {
    Statement statement;
    if (current().kind == Kind::identifier && isOp(peek(), "=") && !isReservedWord(current().text)) {
        statement.name = current().text;
        advance();
        advance();
    }
    if (atEnd())
        fail(MessageKind::noExpression);
    statement.expr = root(parseConversion());
    if (!atEnd())
        fail(MessageKind::badExpression);
    return statement;
}

// A chain read one operator at a time. Room for a link is made before its operand is read, so
// that an operand read as a lone number or name is the arena's newest node, which the link
// takes in and gives back.
class Parser::ChainReader {
public:
    ChainReader(Parser& parser, const Expr* first, std::uint32_t begin)
        : m_parser(parser), m_first(first), m_begin(begin), m_links(*parser.m_arena) {}

    /// Call after the operator, before its operand is read.
    void expectOperand() { m_links.prepare(); }
    void add(expr::Operator op, const Expr* operand) {
        ExprArena& arena = *m_parser.m_arena;
        const SourceRange range = operand->range();
        const bool negated = takeBackSign(operand);
        const auto* name = operand->as<expr::Identifier>();
        Link* link = static_cast<Link*>(m_links.slot());
        if (const auto number = arena.takeBackNumber(operand))
            new (link) Link(op, *number, range);
        else if (const auto figure = arena.takeBackPercent(operand))
            new (link) Link(op, *figure, range, Link::Holds::percent);
        else if (const auto ref = arena.takeBackRef(operand))
            new (link) Link(op, *ref, range);
        else if (holdsName(operand) && arena.giveBack(operand))
            new (link) Link(op, name->name, range);
        else
            new (link) Link(op, operand, range);
        if (negated)
            link->negate();
        m_links.commit();
    }
    /// The power of a product read as 3x^2 when it is a plain number: the reader holds just the
    /// name's link and one power of that number.
    std::optional<double> plainExponent() const {
        if (m_links.waiting() != 2 || m_links.waitingItem(0).holds() != Link::Holds::name)
            return std::nullopt;
        const Link& power = m_links.waitingItem(1);
        if (power.op() != expr::Operator::power || power.holds() != Link::Holds::number || power.negated())
            return std::nullopt;
        return power.number();
    }
    /// The chain, or the first operand alone when no operator followed it.
    const Expr* finish() {
        if (m_links.empty())
            return m_first;
        const expr::LinkList links(m_links.finish());
        return m_parser.m_arena->make(expr::Chain{m_first, links}, m_parser.rangeFrom(m_begin));
    }

private:
    using Link = expr::Link;

    static bool holdsName(const Expr* operand) {
        const auto* name = operand->as<expr::Identifier>();
        return name && name->name.size() <= Link::longestName;
    }
    // A minus sign made last is taken back, to be held in the link with its operand: true
    // then, with `operand` moved on to what the sign stood over.
    bool takeBackSign(const Expr*& operand) const {
        const auto* sign = operand->as<expr::Unary>();
        if (!sign || sign->op != expr::UnaryOperator::minus)
            return false;
        const Expr* inner = sign->operand;
        if (!m_parser.m_arena->giveBack(operand))
            return false;
        operand = inner;
        return true;
    }

    Parser& m_parser;
    const Expr* m_first;
    std::uint32_t m_begin;
    RunWriter<Link> m_links;
};

const Expr* Parser::parseConversion() {
    const std::uint32_t first = here();
    const Expr* left = parseOr();
    ChainScope chain(m_chain);
    for (;;) {
        const Token& token = current();
        const bool convertWord =
            token.kind == Kind::identifier && isConversionWord(token.text) && peek().kind == Kind::identifier;
        if (convertWord || isOp(token, "→")) {
            advance();
            chain.lengthen();
            const std::string target = parseUnitTarget();
            left = m_arena->make(expr::Convert{left, m_arena->keepCounted(target)}, rangeFrom(first));
        } else if (isPercentOfWord(token)) {
            advance();
            chain.lengthen();
            const Expr* base = parseArithmetic();
            left = m_arena->make(expr::PercentOf{left, base}, rangeFrom(first));
        } else {
            return left;
        }
    }
}

template <typename Operand, typename OperatorHere>
const Expr* Parser::readChain(Operand operand, OperatorHere operatorHere) {
    const std::uint32_t first = here();
    const Expr* left = (this->*operand)();
    std::optional<expr::Operator> op = operatorHere();
    if (!op)
        return left; // most operands stand alone, and cost no chain
    ChainReader chain(*this, left, first);
    do {
        chain.expectOperand();
        chain.add(*op, (this->*operand)());
    } while ((op = operatorHere()));
    return chain.finish();
}

// Each level names the operator at the current token, consuming it, or none.
const Expr* Parser::parseOr() {
    return readChain(&Parser::parseAnd, [this]() -> std::optional<expr::Operator> {
        if (!isWord(current(), keywords::orWord))
            return std::nullopt;
        advance();
        return expr::Operator::orWord;
    });
}

const Expr* Parser::parseAnd() {
    return readChain(&Parser::parseNot, [this]() -> std::optional<expr::Operator> {
        if (!isWord(current(), keywords::andWord))
            return std::nullopt;
        advance();
        return expr::Operator::andWord;
    });
}

const Expr* Parser::parseNot() {
    if (!isWord(current(), keywords::notWord))
        return parseComparison();
    const std::uint32_t first = here();
    advance();
    NestingScope nesting(m_depth);
    const Expr* operand = parseNot();
    return m_arena->make(expr::Unary{expr::UnaryOperator::notWord, operand}, rangeFrom(first));
}

const Expr* Parser::parseComparison() {
    return readChain(&Parser::parseArithmetic, [this]() -> std::optional<expr::Operator> {
        if (current().kind != Kind::op)
            return std::nullopt;
        const auto op = comparisonOperator(current().text);
        if (op)
            advance();
        return op;
    });
}

// Terms, their factors and the powers of those are read into one chain (1 + 2*3^2 - 4/2): the
// evaluator groups them by precedence, so a sum of products or of powers costs a link per
// operator and no node per product, and an operand is one rule call away from here.
const Expr* Parser::parseArithmetic() {
    return readChain(&Parser::parseOperand, [this]() -> std::optional<expr::Operator> {
        const Token& token = current();
        if (token.kind == Kind::op) {
            const std::optional<expr::Operator> op = arithmeticOperator(token.text);
            if (op)
                advance();
            return op;
        }
        // An implicit product: the operand's token is not consumed here.
        if (token.kind == Kind::number || token.kind == Kind::lparen ||
            (token.kind == Kind::identifier && peek().kind == Kind::lparen))
            return expr::Operator::times;
        return std::nullopt;
    });
}

const Expr* Parser::parseUnary() {
    if (isOp(current(), "-")) {
        const std::uint32_t first = here();
        advance();
        NestingScope nesting(m_depth);
        const Expr* operand = parseUnary();
        // A negative number is a number, not a sign over one.
        if (const auto number = m_arena->takeBackNumber(operand))
            return m_arena->make(expr::Number{-*number}, rangeFrom(first));
        return m_arena->make(expr::Unary{expr::UnaryOperator::minus, operand}, rangeFrom(first));
    }
    if (isOp(current(), "+")) {
        advance();
        NestingScope nesting(m_depth);
        return parseUnary();
    }
    return parsePower();
}

// A power under a sign (-2^2 is -(2^2)).
const Expr* Parser::parsePower() {
    const std::uint32_t first = here();
    const Expr* base = parsePostfix();
    if (!isOp(current(), "^"))
        return base;
    ChainReader chain(*this, base, first);
    readPowers(chain);
    return chain.finish();
}

// The powers a chain's last operand is raised to (2^3^2), which the evaluator groups from the
// right: 2^(3^2). The current token is the first "^".
void Parser::readPowers(ChainReader& chain) {
    while (isOp(current(), "^")) {
        advance();
        chain.expectOperand();
        chain.add(expr::Operator::power, parseOperand());
    }
}

// An operand of an arithmetic chain. A sign covers the powers after it, so a signed operand is
// read whole; the powers of any other are links of the chain.
const Expr* Parser::parseOperand() {
    const Token& token = current();
    if (token.kind == Kind::op && (sameText(token.text, "-") || sameText(token.text, "+")))
        return parseUnary();
    return parsePostfix();
}

const Expr* Parser::parsePostfix() {
    const std::uint32_t first = here();
    const Expr* e = parsePrimary();
    ChainScope chain(m_chain);
    for (;;) {
        const Token& token = current();
        if (token.kind == Kind::identifier && !isReservedWord(token.text) &&
            !sameText(token.text, keywords::japaneseOfWord) && peek().kind != Kind::lparen) {
            // A number just read is taken back before the unit's text is kept, so that a
            // measure (120 mm) is one node.
            const bool powered = isOp(peek(), "^");
            const SourceRange numberRange = e->range();
            const std::optional<double> measure = m_arena->takeBackNumber(e);
            const KeptText unit = keepWord(token.text);
            const SourceRange unitRange = token.range();
            advance();
            chain.lengthen();
            if (powered) {
                NestingScope nesting(m_depth);
                if (measure)
                    e = m_arena->make(expr::Number{*measure}, numberRange);
                e = poweredUnit(e, measure, unit, unitRange, first);
            } else if (measure) {
                e = m_arena->make(expr::Measure{*measure, unit}, rangeFrom(first));
            } else {
                e = m_arena->make(expr::UnitApply{e, unit}, rangeFrom(first));
            }
        } else if (isOp(token, "%")) {
            advance();
            chain.lengthen();
            e = m_arena->make(expr::Percent{e}, rangeFrom(first));
        } else if (token.kind == Kind::lbracket) {
            advance();
            chain.lengthen();
            NestingScope nesting(m_depth);
            const Expr* position = parseConversion();
            if (current().kind != Kind::rbracket)
                fail(MessageKind::missingBracket);
            advance();
            e = m_arena->make(expr::Index{e, position}, rangeFrom(first));
        } else {
            return e;
        }
    }
}

// 3x^2 is 3 * x^2, read into one chain. A plain number times a name raised to a plain number
// (1 m^2, 3x^2) is one node instead: a long sum of such products then costs a node and a link
// per term. `number` is the value of `factor` when that is a plain number made last.
const Expr* Parser::poweredUnit(const Expr* factor, std::optional<double> number, KeptText name,
                                SourceRange nameRange, std::uint32_t first) {
    ChainReader product(*this, factor, first);
    product.expectOperand();
    product.add(expr::Operator::times, m_arena->make(expr::Identifier{name.view()}, nameRange));
    readPowers(product);
    const std::optional<double> exponent = number ? product.plainExponent() : std::nullopt;
    if (exponent && m_arena->giveBack(factor)) {
        const expr::UnitPower* power = m_arena->place(expr::UnitPower{name, *exponent});
        return m_arena->make(expr::PoweredMeasure{*number, power}, rangeFrom(first));
    }
    return product.finish();
}

const Expr* Parser::parsePrimary() {
    const Token& token = current();
    const std::uint32_t first = here();
    const SourceRange range = token.range();
    switch (token.kind) {
    case Kind::number: {
        const double value = token.number;
        advance();
        return m_arena->make(expr::Number{value}, range);
    }
    case Kind::string: {
        const std::string_view text = m_arena->keep(token.text);
        advance();
        return m_arena->make(expr::Text{text}, range);
    }
    case Kind::ref: {
        const std::int64_t line = token.ref;
        advance();
        return m_arena->make(expr::Ref{line}, range);
    }
    case Kind::identifier: {
        const KeptText name = keepWord(token.text);
        advance();
        if (current().kind == Kind::lparen)
            return parseCall(name, first);
        if (current().kind == Kind::number && isKnownUnit(name)) {
            // A unit written before its value: $5, ¥1200.
            NestingScope nesting(m_depth);
            const Expr* operand = parsePostfix();
            if (const auto number = m_arena->takeBackNumber(operand))
                return m_arena->make(expr::Measure{*number, name}, rangeFrom(first));
            return m_arena->make(expr::UnitApply{operand, name}, rangeFrom(first));
        }
        return m_arena->make(expr::Identifier{name.view()}, range);
    }
    case Kind::lparen: {
        advance();
        NestingScope nesting(m_depth);
        const Expr* inner = parseConversion();
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

// Reads the items of a list or the arguments of a call into blocks of the arena that grow
// fourfold up to a cap: each item's own node is copied into its block and given back, so that
// an item costs one node however long the list.
class Parser::ItemReader {
public:
    explicit ItemReader(Parser& parser) : m_parser(parser), m_items(*parser.m_arena) {}

    /// Reads the comma-separated items up to, not including, `close`.
    ExprList read(Token::Kind close) {
        if (m_parser.current().kind == close)
            return {};
        add();
        while (m_parser.current().kind == Token::Kind::comma) {
            m_parser.advance();
            add();
        }
        return ExprList(m_items.finish());
    }

private:
    void add() {
        m_items.prepare();
        const Expr* item = m_parser.parseConversion();
        new (m_items.slot()) Expr(*item);
        m_items.commit();
        m_parser.m_arena->giveBack(item);
    }

    Parser& m_parser;
    RunWriter<Expr> m_items;
};

// The same word as the one kept last is shared, so that a long sum of 1 m + 1 m … keeps its
// unit once.
KeptText Parser::keepWord(std::string_view word) {
    if (m_lastWord.view() != word)
        m_lastWord = m_arena->keepCounted(word);
    return m_lastWord;
}

const Expr* Parser::parseCall(KeptText name, std::uint32_t first) {
    advance(); // "("
    NestingScope nesting(m_depth);
    const ExprList args = ItemReader(*this).read(Kind::rparen);
    if (current().kind != Kind::rparen)
        failMissingCallParen(std::string(name));
    advance();
    return m_arena->make(expr::Call{name, args}, rangeFrom(first));
}

const Expr* Parser::parseList() {
    const std::uint32_t first = here();
    advance(); // "["
    NestingScope nesting(m_depth);
    const ExprList items = ItemReader(*this).read(Kind::rbracket);
    if (current().kind != Kind::rbracket)
        fail(MessageKind::missingListBracket);
    advance();
    return m_arena->make(expr::List{items}, rangeFrom(first));
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
    return Parser(text).parseStatement();
}

Statement parseStatement(std::string_view text, ExprArena& arena) {
    return Parser(text, arena).parseStatement();
}

} // namespace lumo
