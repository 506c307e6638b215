#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "LumoKit/base/Messages.h"
#include "LumoKit/language/Parser.h"
#include "LumoKit/sheet/SheetLines.h"

namespace lumo {

struct ProgramNode;
/// The nodes of a block, in line order.
using ProgramBody = std::vector<ProgramNode>;
/// Bodies are shared so that a def can hand its body to a function without copying it.
using ProgramBodyPtr = std::shared_ptr<const ProgramBody>;

/// The parse of one prepared line text, kept so that a line run many times (inside a loop or
/// a function) is parsed once.
struct ParsedLine {
    ParsedLine() = default;
    // The tree points into the arena inside: a parse stays where it was made.
    ParsedLine(const ParsedLine&) = delete;
    ParsedLine& operator=(const ParsedLine&) = delete;

    ExprArena arena;                    // the statement's tree: one allocation with the parse
    std::optional<Statement> statement; // absent when the parse failed
    Message error;                      // the parser's message when it failed
    // Read from the tree once, so that a line answered from its memo never walks its tree.
    bool isPlot = false;        // a plot or chart call
    bool isBareSumWord = false; // only a sum word (sum, total and their spellings)
};

/// The parses of one line, as written and continued with "prev ", filled on first use. They
/// live in the run's SheetParseCache; a run without one owns them here.
struct LineParseCache {
    std::optional<bool> canContinue; // whether the text starts like a continuation
    const ParsedLine* asWritten = nullptr;
    const ParsedLine* continued = nullptr;
    std::unique_ptr<const ParsedLine> ownedAsWritten;
    std::unique_ptr<const ParsedLine> ownedContinued;

    /// Lets go of the parses (the answer is what stays of a line that runs once).
    void release() {
        asWritten = continued = nullptr;
        ownedAsWritten.reset();
        ownedContinued.reset();
    }
};

struct ProgramFunction;
using FunctionTable = std::unordered_map<std::string, ProgramFunction>;

/// A sheet's program: the cases of its tree, and the parse operations that build the tree
/// from the sheet's lines. Stateless. A tree views the texts of the SheetLines it was parsed
/// from, so those must outlive it.
struct Program {
    /// An ordinary line to evaluate; `source` is the trimmed text.
    struct Line {
        std::int64_t index = 0;
        std::string_view source;
        mutable LineParseCache cache; // filled while the run meets the line
    };
    struct Blank {
        std::int64_t index = 0;
    };
    struct Comment {
        std::int64_t index = 0;
    };
    /// A structural mistake with its finished message. The body under a faulty header is kept
    /// so that its lines are known, but it never runs.
    struct Invalid {
        std::int64_t index = 0;
        // Shared, so that a node stays small: mistakes are rare and lines are many.
        std::shared_ptr<const Message> message;
        ProgramBody body;
    };
    /// One branch of an if chain; an else has no condition.
    struct Branch {
        std::int64_t index = 0;
        ExprPtr condition;
        ProgramBody body;
    };
    struct IfChain {
        std::vector<Branch> branches;
    };
    struct ForLoop {
        std::int64_t index = 0;
        std::string_view name;
        ExprPtr iterable;
        ProgramBody body;
    };
    struct WhileLoop {
        std::int64_t index = 0;
        ExprPtr condition;
        ProgramBody body;
    };
    struct Define {
        std::int64_t index = 0;
        std::string_view name;
        std::vector<std::string> params;
        ProgramBodyPtr body;
    };
    /// A return; `value` is null for a bare return.
    struct Return {
        std::int64_t index = 0;
        ExprPtr value;
    };
    struct BreakLoop {
        std::int64_t index = 0;
    };
    struct ContinueLoop {
        std::int64_t index = 0;
    };

    /// One line prepared for parsing.
    struct Row {
        enum class Kind { blank, comment, code };

        std::int64_t index = 0;
        std::int64_t indent = 0; // space and ideographic space count 1, tab 4
        std::string_view text;   // trimmed at both ends, a view into the line
        Kind kind = Kind::blank;
    };

    /// The row of line `index` (valid UTF-8): its indentation width, trimmed text and kind.
    static Row makeRow(std::int64_t index, std::string_view line);

    /// Parses a sheet into its top-level nodes, from line `from` on. Never fails: every
    /// structural mistake becomes an `invalid` node carrying its message. The lines above
    /// `from` must be lines, blanks and notes at the top level (none of them opens a block).
    static ProgramBody parse(const SheetLines& lines, std::size_t from = 0);

    /// The top-level defs of a parsed sheet, each with the given home; a later def of the same
    /// name replaces an earlier one.
    static FunctionTable collectDefinitions(const ProgramBody& nodes, const std::optional<std::string>& home);

    /// Not empty; a letter or "_" first; then letters, digits or "_" (Unicode letters and digits).
    static bool isValidName(std::string_view name);

    /// Parses a whole text as one expression; throws CalcError when it does not parse or when
    /// anything is left over.
    static ExprPtr parseWholeExpression(std::string_view text);
};

/// One node of a sheet's program tree.
struct ProgramNode {
    using Node = std::variant<Program::Line, Program::Blank, Program::Comment, Program::Invalid,
                              Program::IfChain, Program::ForLoop, Program::WhileLoop, Program::Define,
                              Program::Return, Program::BreakLoop, Program::ContinueLoop>;
    Node node;

    ProgramNode() = default;
    // Implicit, so that a case converts to a node wherever a node is expected.
    template <typename Case>
    requires std::is_constructible_v<Node, Case&&> ProgramNode(Case&& alternative)
        : node(std::forward<Case>(alternative)) {}

    template <typename T> const T* as() const { return std::get_if<T>(&node); }
    template <typename T> bool is() const { return std::holds_alternative<T>(node); }
};

/// A function that a def defines. `home` is the sheet that defines it; absent for the sheet
/// being evaluated.
struct ProgramFunction {
    std::string name;
    std::vector<std::string> params;
    ProgramBodyPtr body;
    std::optional<std::string> home;
};

} // namespace lumo
