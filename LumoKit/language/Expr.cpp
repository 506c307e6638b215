#include "LumoKit/language/Expr.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace lumo {

namespace {

// Blocks after the arena's own grow from 1 kB to 64 kB: small trees stay small, and a tree of
// millions of nodes wastes less than one block.
constexpr std::size_t firstBlockSize = 1024;
constexpr std::size_t largestBlockSize = 64 * 1024;

} // namespace

ExprArena::~ExprArena() {
    while (m_lastBlock) {
        BlockHeader* previous = m_lastBlock->previous;
        ::operator delete(m_lastBlock);
        m_lastBlock = previous;
    }
}

void* ExprArena::allocateInNewBlock(std::size_t size, std::size_t alignment) {
    const std::size_t grown = m_lastBlock ? std::min(2 * m_capacity, largestBlockSize) : firstBlockSize;
    const std::size_t header =
        (sizeof(BlockHeader) + alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1);
    const std::size_t capacity = std::max(grown, size + alignment);
    auto* block = static_cast<std::byte*>(::operator new(header + capacity));
    m_lastBlock = new (block) BlockHeader{m_lastBlock};
    m_block = block + header;
    m_capacity = capacity;
    m_used = 0;
    return allocate(size, alignment);
}

std::string_view ExprArena::keep(std::string_view text) {
    if (text.empty())
        return {};
    auto* copy = static_cast<char*>(allocate(text.size(), 1));
    std::copy(text.begin(), text.end(), copy);
    return {copy, text.size()};
}

KeptText ExprArena::keepCounted(std::string_view text) {
    auto* counted =
        static_cast<std::uint32_t*>(allocate(sizeof(std::uint32_t) + text.size(), alignof(std::uint32_t)));
    *counted = static_cast<std::uint32_t>(text.size());
    std::copy(text.begin(), text.end(), reinterpret_cast<char*>(counted + 1));
    return KeptText(counted);
}

ExprList ExprArena::keep(const std::vector<const Expr*>& items) {
    if (items.empty())
        return {};
    auto* counted = static_cast<std::size_t*>(
        allocate(sizeof(std::size_t) + items.size() * sizeof(const Expr*), alignof(std::size_t)));
    *counted = items.size();
    std::copy(items.begin(), items.end(), reinterpret_cast<const Expr**>(counted + 1));
    return ExprList(counted);
}

namespace expr {

std::string_view spelling(UnaryOperator op) {
    return op == UnaryOperator::notWord ? "not" : "-";
}

std::string_view spelling(Operator op) {
    switch (op) {
    case Operator::plus:
        return "+";
    case Operator::minus:
        return "-";
    case Operator::times:
        return "*";
    case Operator::divide:
        return "/";
    case Operator::power:
        return "^";
    case Operator::equal:
        return "==";
    case Operator::notEqual:
        return "!=";
    case Operator::less:
        return "<";
    case Operator::lessOrEqual:
        return "<=";
    case Operator::greater:
        return ">";
    case Operator::greaterOrEqual:
        return ">=";
    case Operator::andWord:
        return "and";
    case Operator::orWord:
        return "or";
    }
    return {};
}

} // namespace expr

} // namespace lumo
