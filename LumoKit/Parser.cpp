#include "Parser.h"

#include "Language.h"

namespace lumo {

bool sameTree(const Expr&, const Expr&) { return false; }
bool isReservedWord(std::string_view) { return false; }
bool isConversionWord(std::string_view) { return false; }
bool isComparisonOperator(std::string_view) { return false; }

Parser::Parser(std::vector<Token> tokens) : m_tokens(std::move(tokens)) {}
Statement Parser::parseStatement() { throw CalcError("parser"); }
ExprPtr Parser::parseExpression() { throw CalcError("parser"); }
const Token& Parser::current() const { return m_tokens[m_index]; }
const Token& Parser::peek(std::size_t) const { return m_tokens[m_index]; }
bool Parser::atEnd() const { return true; }
Statement parseStatement(std::string_view) { throw CalcError("parser"); }

} // namespace lumo
