#include "LumoKit/language/Expr.h"

#include <algorithm>
#include <cstdint>
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
    const std::size_t header =
        (sizeof(BlockHeader) + alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1);
    if (size + alignment > largestBlockSize / 4) {
        // A large piece (a full block of a chain's links or of a list's items) gets a block of
        // its own, and the block being filled stays the current one: moving on would leave the
        // rest of it unused, as much as a quarter of the memory of a long list.
        auto* block = static_cast<std::byte*>(::operator new(header + size + alignment));
        auto* own = new (block) BlockHeader{nullptr};
        if (m_lastBlock) {
            own->previous = m_lastBlock->previous;
            m_lastBlock->previous = own;
        } else {
            m_lastBlock = own;
        }
        const auto start = reinterpret_cast<std::uintptr_t>(block + header);
        return reinterpret_cast<void*>((start + alignment - 1) & ~(alignment - 1));
    }
    const std::size_t grown =
        m_block == m_first ? firstBlockSize : std::min(2 * m_capacity, largestBlockSize);
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
