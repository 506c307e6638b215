#pragma once

// The tree a line is parsed into, and the arena its nodes live in.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "LumoKit/language/Lexer.h"

namespace lumo {

class Expr;
/// A parsed tree, held by its root. Its nodes, their lists and their texts live in one arena
/// that the root keeps alive, unless the parser was lent the arena (a sheet's parsed line
/// holds its own): a line's tree is usually a single allocation, a long line's nodes lie
/// packed together, and trees are cheap to copy and safe to cache.
using ExprPtr = std::shared_ptr<const Expr>;
/// Items of one kind in a tree's arena, in blocks that each point at the next: a chain's links
/// or a list's nodes, stored as they are read, without knowing how many will come and without
/// moving any. The items follow the block's header.
template <typename Item> struct ArenaBlock {
    const ArenaBlock* next = nullptr;
    std::uint32_t size = 0;
    std::uint32_t capacity = 0;

    Item* items() { return reinterpret_cast<Item*>(this + 1); }
    const Item* items() const { return reinterpret_cast<const Item*>(this + 1); }
};

/// Walks the items of a run of blocks, none of them empty.
template <typename Item> class BlockIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Item;
    using difference_type = std::ptrdiff_t;
    using pointer = const Item*;
    using reference = const Item&;

    BlockIterator() = default;
    explicit BlockIterator(const ArenaBlock<Item>* block) : m_block(block) {}
    const Item& operator*() const { return m_block->items()[m_index]; }
    const Item* operator->() const { return &**this; }
    BlockIterator& operator++() {
        if (++m_index == m_block->size) {
            m_block = m_block->next;
            m_index = 0;
        }
        return *this;
    }
    BlockIterator operator++(int) {
        BlockIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const BlockIterator&) const = default;

private:
    const ArenaBlock<Item>* m_block = nullptr;
    std::uint32_t m_index = 0;
};

using ExprBlock = ArenaBlock<Expr>;

/// The children of a list or a call, in the tree's arena: blocks of the nodes themselves. One
/// pointer, so that a node holding a list stays small.
class ExprList {
public:
    using iterator = BlockIterator<Expr>;

    ExprList() = default;
    /// `first` is the first of the blocks, none of them empty.
    explicit ExprList(const ExprBlock* first) : m_first(first) {}

    std::size_t size() const;
    bool empty() const { return m_first == nullptr; }
    iterator begin() const { return iterator(m_first); }
    iterator end() const { return iterator(); }
    /// The address of item `i`, as a node's children are held.
    const Expr* operator[](std::size_t i) const;
    const Expr* front() const { return m_first->items(); }

private:
    const ExprBlock* m_first = nullptr;
};

/// A name or unit text in the tree's arena: one pointer to its length and the bytes after it.
class KeptText {
public:
    KeptText() = default;
    /// `counted` points at the length, which the bytes follow.
    explicit KeptText(const std::uint32_t* counted) : m_counted(counted) {}

    std::string_view view() const {
        return m_counted ? std::string_view(reinterpret_cast<const char*>(m_counted + 1), *m_counted)
                         : std::string_view();
    }
    operator std::string_view() const { return view(); }
    bool operator==(std::string_view other) const { return view() == other; }

private:
    const std::uint32_t* m_counted = nullptr;
};

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
enum class UnaryOperator : std::uint8_t { minus, notWord };
/// How the operator is written: "-" or "not".
std::string_view spelling(UnaryOperator op);
struct Unary {
    UnaryOperator op;
    const Expr* operand;
};
/// The operators that join the operands of a chain.
enum class Operator : std::uint8_t {
    plus,
    minus,
    times,
    divide,
    power,
    equal,
    notEqual,
    less,
    lessOrEqual,
    greater,
    greaterOrEqual,
    andWord,
    orWord,
};
/// How the operator is written: "+", "<=", "and" …
std::string_view spelling(Operator op);

/// One step of a chain: an operator and the operand on its right. A plain number, a number
/// written as a percentage, a line reference or a short name is held in the link itself, so
/// that a long sum costs one small link per term.
class Link {
public:
    enum class Holds : std::uint8_t { node, number, percent, ref, name };
    /// The longest name a link holds; a longer one is a node of its own.
    static constexpr std::size_t longestName = 0xffff;

    Link(Operator op, const Expr* operand, SourceRange range) : m_op(op), m_range(range) {
        m_operand.node = operand;
    }
    /// A plain number, or with `holds` percent, the figure of a percentage (5 for 5%).
    Link(Operator op, double number, SourceRange range, Holds holds = Holds::number)
        : m_op(op), m_holds(holds), m_range(range) {
        m_operand.number = number;
    }
    Link(Operator op, Ref ref, SourceRange range) : m_op(op), m_holds(Holds::ref), m_range(range) {
        m_operand.line = ref.line;
    }
    Link(Operator op, std::string_view name, SourceRange range)
        : m_op(op), m_holds(Holds::name), m_nameSize(static_cast<std::uint16_t>(name.size())),
          m_range(range) {
        m_operand.name = name.data();
    }

    Operator op() const { return m_op; }
    Holds holds() const { return m_holds; }
    /// The operand's node, or null when the operand is held here.
    const Expr* node() const { return m_holds == Holds::node ? m_operand.node : nullptr; }
    /// The number or the percentage's figure held here.
    double number() const { return m_operand.number; }
    /// The line a reference held here refers to.
    std::int64_t line() const { return m_operand.line; }
    /// The operand's name, or an empty view when the link holds no name.
    std::string_view name() const {
        return m_holds == Holds::name ? std::string_view(m_operand.name, m_nameSize) : std::string_view();
    }
    /// The operand's characters.
    SourceRange range() const { return m_range; }
    /// Whether a minus sign stands before the operand (-x, -#1, -x^2): the link holds the sign
    /// too, rather than a node for it.
    bool negated() const { return m_negated; }
    void negate() { m_negated = true; }

private:
    Operator m_op;
    Holds m_holds = Holds::node;
    std::uint16_t m_nameSize = 0;
    SourceRange m_range;
    bool m_negated = false;
    union {
        const Expr* node;
        double number;
        std::int64_t line;
        const char* name;
    } m_operand;
};
static_assert(sizeof(Link) == 24);

using LinkBlock = ArenaBlock<Link>;

/// The links of a chain, in blocks of the tree's arena.
class LinkList {
public:
    using iterator = BlockIterator<Link>;

    LinkList() = default;
    explicit LinkList(const LinkBlock* first) : m_first(first) {}
    iterator begin() const { return iterator(m_first); }
    iterator end() const { return {}; }

private:
    const LinkBlock* m_first = nullptr;
};

/// True for + and −, which join terms: in a chain that holds them with × and ÷, they bind last.
constexpr bool isTermOperator(Operator op) {
    return op == Operator::plus || op == Operator::minus;
}

/// Operands joined left to right by operators of one level (a and b, 1 < x, x^2), or by the
/// four arithmetic operators together (1 + 2*3 - 4/2), whose factors are grouped first, as in
/// (1 + (2*3)) - (4/2): the first operand, then a link per operator. A chain is not nesting:
/// it is as long as it is written, and walking it is a loop.
struct Chain {
    const Expr* first;
    LinkList links;
};
struct Percent {
    const Expr* operand;
};
struct UnitApply {
    const Expr* operand;
    KeptText unit;
};
/// A number with a unit or name after it or before it (120 mm, $5, 3 x): a unit application
/// to a plain number, in one node.
struct Measure {
    double value;
    KeptText unit;
};
/// A unit or name raised to a plain number, as a powered measure holds it.
struct UnitPower {
    KeptText name;
    double exponent;
};
/// A plain number times a unit or name raised to a plain number (1 m^2, 3x^2): the product
/// 3 * x^2 in one node, evaluated as that product is.
struct PoweredMeasure {
    double value;
    const UnitPower* unit;
};
struct Call {
    KeptText name;
    ExprList args;
};
struct Convert {
    const Expr* operand;
    KeptText target;
};
struct PercentOf {
    const Expr* percentage;
    const Expr* base;
};
} // namespace expr

/// The kinds of node, in the order their tags count them.
template <typename... Kinds> struct NodeKinds {
    static constexpr std::size_t count = sizeof...(Kinds);
    template <std::size_t I> using At = std::tuple_element_t<I, std::tuple<Kinds...>>;
    /// The tag of `Kind`; `count` when it is not one of them.
    template <typename Kind> static constexpr std::uint8_t tagOf() {
        std::uint8_t tag = 0;
        (void)((std::is_same_v<Kind, Kinds> || (++tag, false)) || ...);
        return tag;
    }
};
using ExprKinds = NodeKinds<expr::Number, expr::Text, expr::List, expr::Index, expr::Identifier, expr::Ref,
                            expr::Unary, expr::Chain, expr::Percent, expr::UnitApply, expr::Measure,
                            expr::PoweredMeasure, expr::Call, expr::Convert, expr::PercentOf>;

/// One node: one of the kinds above and the characters it was read from, in 24 bytes. Every
/// line's tree is made of them, so the tag shares a word with the range rather than taking a
/// word of its own, as a std::variant's would. Nodes own nothing: they point into the arena
/// of their tree.
class Expr {
public:
    template <typename Kind> Expr(const Kind& node, SourceRange range) : m_begin(range.begin) {
        static_assert(ExprKinds::tagOf<Kind>() < ExprKinds::count, "not a kind of node");
        static_assert(sizeof(Kind) <= sizeof m_node && alignof(Kind) <= alignof(std::uint64_t));
        static_assert(std::is_trivially_copyable_v<Kind> && std::is_trivially_destructible_v<Kind>);
        new (m_node) Kind(node);
        m_tag = ExprKinds::tagOf<Kind>();
        m_length = std::min<std::uint32_t>(range.end - range.begin, longestRange);
    }

    template <typename Kind> const Kind* as() const {
        return m_tag == ExprKinds::tagOf<Kind>() ? std::launder(reinterpret_cast<const Kind*>(m_node))
                                                 : nullptr;
    }
    template <typename Kind> bool is() const { return m_tag == ExprKinds::tagOf<Kind>(); }

    /// The characters of the parsed text this node was read from, from its first token to its
    /// last. Brackets that only group it are outside: in "(a)" the node `a` covers the "a". A
    /// node over more than 2^28 characters (a line of gigabytes) is cut at that length.
    SourceRange range() const { return {m_begin, m_begin + m_length}; }

    /// Calls `visitor` with the node as its kind; every kind must give the same type back.
    template <typename Visitor> decltype(auto) visit(Visitor&& visitor) const {
        static_assert(ExprKinds::count == 15, "a kind of node was added: add its case below");
        // A switch rather than a table of functions, so that each case can be inlined.
        // clang-format off
        switch (m_tag) {
        case 0: return visitor(kind<0>());
        case 1: return visitor(kind<1>());
        case 2: return visitor(kind<2>());
        case 3: return visitor(kind<3>());
        case 4: return visitor(kind<4>());
        case 5: return visitor(kind<5>());
        case 6: return visitor(kind<6>());
        case 7: return visitor(kind<7>());
        case 8: return visitor(kind<8>());
        case 9: return visitor(kind<9>());
        case 10: return visitor(kind<10>());
        case 11: return visitor(kind<11>());
        case 12: return visitor(kind<12>());
        case 13: return visitor(kind<13>());
        default: return visitor(kind<14>());
        }
        // clang-format on
    }

private:
    static constexpr std::uint32_t longestRange = (1u << 28) - 1;

    template <std::size_t Tag> const ExprKinds::At<Tag>& kind() const {
        return *std::launder(reinterpret_cast<const ExprKinds::At<Tag>*>(m_node));
    }

    alignas(std::uint64_t) std::byte m_node[16];
    std::uint32_t m_begin;
    std::uint32_t m_length : 28;
    std::uint32_t m_tag : 4;
};

static_assert(sizeof(ExprBlock) % alignof(Expr) == 0);

inline std::size_t ExprList::size() const {
    std::size_t count = 0;
    for (const ExprBlock* block = m_first; block; block = block->next)
        count += block->size;
    return count;
}

inline const Expr* ExprList::operator[](std::size_t i) const {
    const ExprBlock* block = m_first;
    while (i >= block->size) {
        i -= block->size;
        block = block->next;
    }
    return block->items() + i;
}

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
        return new (allocate(sizeof(Expr), alignof(Expr))) Expr(node, range);
    }
    /// Takes back a node made last, when nothing was made after it; false otherwise.
    bool giveBack(const Expr* node) {
        const auto* start = reinterpret_cast<const std::byte*>(node);
        if (start + sizeof(Expr) != m_block + m_used)
            return false;
        m_used -= sizeof(Expr);
        return true;
    }
    /// The value of a number node made last, which is taken back to be held elsewhere (in a
    /// chain's link, a negative number, a measure); nothing for any other node.
    std::optional<double> takeBackNumber(const Expr* node) {
        const auto* number = node->as<expr::Number>();
        if (!number)
            return std::nullopt;
        const double value = number->value;
        if (!giveBack(node))
            return std::nullopt;
        return value;
    }
    /// The figure of a percentage of a plain number (5%) made last, whose two nodes are taken
    /// back; nothing for any other node.
    std::optional<double> takeBackPercent(const Expr* node) {
        const auto* percent = node->as<expr::Percent>();
        if (!percent || percent->operand != node - 1 || !percent->operand->as<expr::Number>() ||
            !giveBack(node))
            return std::nullopt;
        return takeBackNumber(node - 1);
    }
    /// The line of a reference node made last, which is taken back; nothing for any other node.
    std::optional<expr::Ref> takeBackRef(const Expr* node) {
        const auto* ref = node->as<expr::Ref>();
        if (!ref)
            return std::nullopt;
        const expr::Ref held = *ref;
        if (!giveBack(node))
            return std::nullopt;
        return held;
    }
    std::string_view keep(std::string_view text);
    /// A copy of a small record that nodes point at.
    template <typename T> const T* place(const T& record) {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (allocate(sizeof(T), alignof(T))) T(record);
    }
    /// The text with its length, for nodes that hold one pointer to it.
    KeptText keepCounted(std::string_view text);
    /// The block the next item of a run of blocks goes into: `last` while it has room, else a
    /// new one after it, four times as large up to 1,024 items (the first holds one).
    template <typename Item> ArenaBlock<Item>* roomAfter(ArenaBlock<Item>* last) {
        if (last && last->size < last->capacity)
            return last;
        constexpr std::uint32_t largest = 1024;
        return newBlock(last ? std::min(last->capacity * 4, largest) : 1, last);
    }
    /// An empty block for `capacity` items, after `last` when there is one.
    template <typename Item> ArenaBlock<Item>* newBlock(std::uint32_t capacity, ArenaBlock<Item>* last) {
        static_assert(sizeof(ArenaBlock<Item>) % alignof(Item) == 0);
        void* memory =
            allocate(sizeof(ArenaBlock<Item>) + capacity * sizeof(Item), alignof(ArenaBlock<Item>));
        auto* block = new (memory) ArenaBlock<Item>{nullptr, 0, capacity};
        if (last)
            last->next = block;
        return block;
    }

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
/// Writes a run of items (a chain's links, a list's items) into blocks of an arena as they are
/// read. The first few wait here and go into one block of just their number when the run ends,
/// so that a short run, the usual kind, leaves no room unused; a longer one goes on in blocks
/// that grow four times over. Call `prepare` before reading an item, so that any block is made
/// before the item's own nodes, then construct the item at `slot` and `commit` it.
template <typename Item, std::uint32_t Held = 4> class RunWriter {
    static_assert(std::is_trivially_copyable_v<Item> && std::is_trivially_destructible_v<Item>);

public:
    explicit RunWriter(ExprArena& arena) : m_arena(arena) {}
    RunWriter(const RunWriter&) = delete;
    RunWriter& operator=(const RunWriter&) = delete;

    bool empty() const { return m_held == 0 && !m_first; }
    void prepare() {
        if (m_held == Held) {
            m_first = m_last = m_arena.newBlock<Item>(Held, nullptr);
            std::memcpy(static_cast<void*>(m_last->items()), m_room, sizeof m_room);
            m_last->size = Held;
            m_held = 0;
        }
        if (m_first)
            m_last = m_arena.roomAfter(m_last);
    }
    /// The items still waiting here; empty once they went into a block.
    std::uint32_t waiting() const { return m_first ? 0 : m_held; }
    /// Waiting item `i`, i < waiting().
    const Item& waitingItem(std::uint32_t i) const { return reinterpret_cast<const Item*>(m_room)[i]; }
    void* slot() {
        return m_first ? static_cast<void*>(m_last->items() + m_last->size) : m_room + m_held * sizeof(Item);
    }
    void commit() { m_first ? ++m_last->size : ++m_held; }
    /// The first block of the run, or null when it is empty.
    const ArenaBlock<Item>* finish() {
        if (m_first || m_held == 0)
            return m_first;
        ArenaBlock<Item>* block = m_arena.newBlock<Item>(m_held, nullptr);
        std::memcpy(static_cast<void*>(block->items()), m_room, m_held * sizeof(Item));
        block->size = m_held;
        return block;
    }

private:
    ExprArena& m_arena;
    alignas(Item) std::byte m_room[Held * sizeof(Item)];
    std::uint32_t m_held = 0;
    ArenaBlock<Item>* m_first = nullptr;
    ArenaBlock<Item>* m_last = nullptr;
};

static_assert(sizeof(Expr) == 24, "nodes are packed: every line's tree is made of them");
static_assert(std::is_trivially_destructible_v<Expr> && std::is_trivially_destructible_v<expr::Link>,
              "an arena releases its nodes without destroying them");

} // namespace lumo
