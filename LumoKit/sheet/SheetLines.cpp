#include "LumoKit/sheet/SheetLines.h"

#include <algorithm>

#include "LumoKit/base/Unicode.h"

namespace lumo {

SheetLines::SheetLines(std::string_view text) {
    m_views.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    // "\n" is never part of a longer sequence, so the lines of a valid text are valid.
    const bool valid = unicode::isValidUtf8(text);
    std::size_t start = 0;
    while (true) {
        const auto newline = text.find('\n', start);
        const auto line = text.substr(start, newline == std::string_view::npos ? newline : newline - start);
        if (valid)
            m_views.push_back(line);
        else
            add(line);
        if (newline == std::string_view::npos)
            return;
        start = newline + 1;
    }
}

SheetLines::SheetLines(std::vector<std::string> lines) {
    m_views.reserve(lines.size());
    for (auto& line : lines) {
        if (unicode::isValidUtf8(line))
            m_views.push_back(m_owned.emplace_back(std::move(line)));
        else
            m_views.push_back(m_owned.emplace_back(unicode::repairUtf8(line)));
    }
}

void SheetLines::add(std::string_view line) {
    if (unicode::isValidUtf8(line))
        m_views.push_back(line);
    else
        m_views.push_back(m_owned.emplace_back(unicode::repairUtf8(line)));
}

} // namespace lumo
