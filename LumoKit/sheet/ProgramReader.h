#pragma once

#include <cstddef>
#include <optional>

#include "LumoKit/sheet/Program.h"

namespace lumo {

/// Reads a sheet's program one top-level node at a time, from a given line on: a run over a
/// long sheet then holds only the node it is executing, not a tree of every line. Never fails:
/// every structural mistake becomes an `invalid` node carrying its message. The lines above
/// the first must be lines, blanks and notes at the top level (none of them opens a block).
class ProgramReader {
public:
    explicit ProgramReader(const SheetLines& lines, std::size_t from = 0);

    /// The next top-level node with everything under it; nothing after the last line.
    std::optional<ProgramNode> next();

private:
    class Builder;

    const SheetLines& m_lines;
    std::size_t m_cursor;
};

} // namespace lumo
