#include "LineEditor.h"

namespace lumo {

const std::vector<CursorMove>& allCursorMoves() {
    static const std::vector<CursorMove> moves{CursorMove::up, CursorMove::down, CursorMove::left,
                                               CursorMove::right, CursorMove::lineStart, CursorMove::lineEnd};
    return moves;
}

std::string_view rawValue(CursorMove) { return {}; }

std::optional<CursorMove> cursorMoveFromRaw(std::string_view) { return std::nullopt; }

namespace LineEditor {

std::int64_t move(CursorMove, std::string_view, std::int64_t caret) { return caret; }

std::string newlineIndent(std::string_view, std::int64_t) { return {}; }

SignToggle toggleSign(std::string_view text, std::int64_t caret) { return {std::string(text), caret}; }

std::string snippetSpacing(std::string_view snippet, std::string_view, std::int64_t, SnippetRole) {
    return std::string(snippet);
}

std::string snippetSpacing(const InsertSnippet& snippet, std::string_view text, std::int64_t caret) {
    return snippetSpacing(snippet.text, text, caret,
                          snippet.isNamedValue ? SnippetRole::namedValue : SnippetRole::plain);
}

std::string multiplySign(std::string_view, std::int64_t) { return {}; }

} // namespace LineEditor

} // namespace lumo
