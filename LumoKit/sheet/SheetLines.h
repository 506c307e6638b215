#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// A sheet's text cut at "\n" the way the editor shows lines (an empty text is one line, and
/// a text ending in "\n" has an empty last line), as views rather than copies: a run reads
/// every line once, so copying them only costs memory. Lines with invalid UTF-8 are repaired
/// copies (each invalid byte U+FFFD) kept here; every view is valid UTF-8.
///
/// Views into a text point into the caller's text, which must outlive this object and
/// whatever is built from its views. Moving keeps the views valid; copying is not allowed.
class SheetLines {
public:
    explicit SheetLines(std::string_view text);
    /// Lines already cut; they are kept here.
    explicit SheetLines(std::vector<std::string> lines);

    SheetLines(SheetLines&&) = default;
    SheetLines& operator=(SheetLines&&) = default;
    SheetLines(const SheetLines&) = delete;
    SheetLines& operator=(const SheetLines&) = delete;

    std::size_t size() const { return m_views.size(); }
    std::string_view operator[](std::size_t index) const { return m_views[index]; }
    const std::vector<std::string_view>& views() const { return m_views; }

private:
    void add(std::string_view line);

    std::vector<std::string_view> m_views;
    // A deque, so that its strings never move while views point into them.
    std::deque<std::string> m_owned;
};

} // namespace lumo
