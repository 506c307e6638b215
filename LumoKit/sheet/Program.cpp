#include "LumoKit/sheet/Program.h"

#include "LumoKit/base/Unicode.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/sheet/ProgramReader.h"

namespace lumo {

namespace {

std::int64_t indentWidth(std::string_view line) {
    static constexpr std::string_view ideographicSpace = "\u3000";
    std::int64_t width = 0;
    for (std::size_t i = 0; i < line.size();) {
        if (line[i] == ' ') {
            width += 1;
            ++i;
        } else if (line[i] == '\t') {
            width += 4;
            ++i;
        } else if (line.substr(i).starts_with(ideographicSpace)) {
            width += 1;
            i += ideographicSpace.size();
        } else {
            break;
        }
    }
    return width;
}

void collectInto(FunctionTable& table, const ProgramBody& nodes, const std::optional<std::string>& home) {
    for (const auto& node : nodes) {
        if (const auto* define = node.as<Program::Define>())
            table[std::string(define->name)] =
                ProgramFunction{std::string(define->name), define->params, define->body, home};
    }
}

} // namespace

Program::Row Program::makeRow(std::int64_t index, std::string_view line) {
    Row row{index, indentWidth(line), unicode::trimView(line), Row::Kind::code};
    if (row.text.empty()) {
        row.kind = Row::Kind::blank;
    } else if (keywords::isNoteText(row.text)) {
        row.kind = Row::Kind::comment;
    }
    return row;
}

ProgramBody Program::parse(const SheetLines& lines, std::size_t from) {
    ProgramBody nodes;
    ProgramReader reader(lines, from);
    while (auto node = reader.next())
        nodes.push_back(std::move(*node));
    return nodes;
}

FunctionTable Program::collectDefinitions(const ProgramBody& nodes, const std::optional<std::string>& home) {
    FunctionTable table;
    collectInto(table, nodes, home);
    return table;
}

bool Program::isValidName(std::string_view name) {
    const std::u32string scalars = unicode::decode(name);
    if (scalars.empty())
        return false;
    if (!unicode::isLetter(scalars.front()) && scalars.front() != U'_')
        return false;
    for (char32_t c : scalars) {
        if (!unicode::isLetter(c) && !unicode::isNumber(c) && c != U'_')
            return false;
    }
    return true;
}

ExprPtr Program::parseWholeExpression(std::string_view text) {
    return Parser(text).parseWholeExpression();
}

} // namespace lumo
