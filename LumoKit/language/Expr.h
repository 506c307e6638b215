#pragma once

// The tree a line is parsed into, and the arena its nodes live in.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "LumoKit/language/Lexer.h"

namespace lumo {

struct Expr;
/// A parsed tree, held by its root. Its nodes, their lists and their texts live in one arena
/// that the root keeps alive: a line's tree is usually a single allocation, a long line's
/// nodes lie packed together, and trees are cheap to copy and safe to cache.
using ExprPtr = std::shared_ptr<const Expr>;
/// The children of a list or a call, in the tree's arena.
using ExprList = std::span<const Expr* const>;

namespace expr {
struct Number {
    double value;
};
struct Text {
    std::string_view value;
};
struct List {
    ExprList items;
};
struct Index {
    const Expr* target;
    const Expr* position;
};
struct Identifier {
    std::string_view name;
};
struct Ref {
    std::int64_t line;
};
struct Unary {
    std::string_view op; // "-" or "not"
    const Expr* operand;
};
struct Binary {
    std::string_view op;
    const Expr* left;
    const Expr* right;
};
struct Percent {
    const Expr* operand;
};
struct UnitApply {
    const Expr* operand;
    std::string_view unit;
};
struct Call {
    std::string_view name;
    ExprList args;
};
struct Convert {
    const Expr* operand;
    std::string_view target;
};
struct PercentOf {
    const Expr* percentage;
    const Expr* base;
};
} // namespace expr

/// One node. Nodes own nothing: they point into the arena of their tree.
struct Expr {
    using Node = std::variant<expr::Number, expr::Text, expr::List, expr::Index, expr::Identifier, expr::Ref,
                              expr::Unary, expr::Binary, expr::Percent, expr::UnitApply, expr::Call,
                              expr::Convert, expr::PercentOf>;
    Node node;
    /// The characters of the parsed text this node was read from, from its first token to its
    /// last. Brackets that only group it are outside: in "(a)" the node `a` covers the "a".
    SourceRange range;

    template <typename T> const T* as() const { return std::get_if<T>(&node); }
    template <typename T> bool is() const { return std::holds_alternative<T>(node); }
};

/// The memory of one tree. Nodes are never freed one by one, so they are placed one after
/// another in blocks: a line's tree usually fits in the first, which comes with the arena;
/// later blocks grow up to a cap, so a long line wastes at most a block's worth.
class ExprArena {
public:
    ExprArena() = default;
    ~ExprArena();
    ExprArena(const ExprArena&) = delete;
    ExprArena& operator=(const ExprArena&) = delete;

    template <typename T> const Expr* make(T node, SourceRange range) {
        return new (allocate(sizeof(Expr), alignof(Expr))) Expr{Expr::Node(std::move(node)), range};
    }
    std::string_view keep(std::string_view text);
    ExprList keep(const std::vector<const Expr*>& items);

private:
    void* allocate(std::size_t size, std::size_t alignment) {
        const std::size_t start = (m_used + alignment - 1) & ~(alignment - 1);
        if (start + size > m_capacity)
            return allocateInNewBlock(size, alignment);
        m_used = start + size;
        return m_block + start;
    }
    void* allocateInNewBlock(std::size_t size, std::size_t alignment);

    struct BlockHeader {
        BlockHeader* previous;
    };

    alignas(std::max_align_t) std::byte m_first[256];
    std::byte* m_block = m_first;
    std::size_t m_used = 0;
    std::size_t m_capacity = sizeof m_first;
    BlockHeader* m_lastBlock = nullptr; // the blocks after the first, newest first
};
static_assert(std::is_trivially_destructible_v<Expr>, "an arena releases its nodes without destroying them");

} // namespace lumo
