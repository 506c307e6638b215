#include "LumoKit/sheet/ProgramReader.h"

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/language/Keywords.h"

namespace lumo {

namespace {

ProgramNode invalidNode(std::int64_t index, MessageKind mistake, ProgramBody body = {}) {
    return {Program::Invalid{index, std::make_shared<const Message>(mistake), std::move(body)}};
}

// Compared character by character: the prefixes are a few bytes, asked of every row, and a
// call to memcmp costs more than the comparison.
bool startsWith(std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size())
        return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if (text[i] != prefix[i])
            return false;
    }
    return true;
}

// Rows are valid UTF-8, so their parts are trimmed in place: the tree views the sheet's text.
std::string_view trimmed(std::string_view text) {
    return unicode::trimView(text);
}

using Keyword = keywords::StatementWord;

struct Header {
    Keyword keyword;
    std::string_view argument;
};

// The words that open a block with an argument after them; else stands alone.
constexpr Keyword headerWords[] = {Keyword::ifWord, Keyword::elifWord, Keyword::forWord, Keyword::whileWord,
                                   Keyword::defWord};

// A keyword counts only when a space, an ideographic space, "(" or the end follows it,
// so that "ifx:" stays an ordinary line.
bool keywordEndsAt(std::string_view rest, std::size_t length) {
    const std::string_view after = rest.substr(length);
    return after.empty() || after.front() == ' ' || after.front() == '(' || startsWith(after, "\u3000");
}

std::optional<Header> headerOf(const Program::Row& row) {
    if (row.kind != Program::Row::Kind::code || row.text.empty() || row.text.back() != ':')
        return std::nullopt;
    const std::string_view rest = trimmed(row.text.substr(0, row.text.size() - 1));
    if (rest == keywords::spelling(Keyword::elseWord))
        return Header{Keyword::elseWord, {}};
    for (const Keyword keyword : headerWords) {
        const std::string_view word = keywords::spelling(keyword);
        if (startsWith(rest, word) && keywordEndsAt(rest, word.size()))
            return Header{keyword, trimmed(rest.substr(word.size()))};
    }
    return std::nullopt;
}

std::vector<std::string> splitParameters(std::string_view text) {
    std::vector<std::string> params;
    if (trimmed(text).empty())
        return params;
    std::size_t start = 0;
    while (true) {
        const std::size_t comma = text.find(',', start);
        params.emplace_back(
            trimmed(text.substr(start, comma == std::string_view::npos ? text.npos : comma - start)));
        if (comma == std::string_view::npos)
            return params;
        start = comma + 1;
    }
}

} // namespace

// Recursive descent over the rows: one block at a time, each ending at the first code row
// indented less than the block's minimum.
class ProgramReader::Builder {
public:
    explicit Builder(ProgramReader& reader) : m_lines(reader.m_lines), m_cursor(reader.m_cursor) {}

    std::optional<ProgramNode> parseTopLevel() {
        if (atEnd())
            return std::nullopt;
        const Program::Row current = rowAt(m_cursor);
        if (current.kind == Program::Row::Kind::blank) {
            ++m_cursor;
            return Program::Blank{current.index};
        }
        if (current.kind == Program::Row::Kind::comment) {
            ++m_cursor;
            return Program::Comment{current.index};
        }
        return parseCodeRow(current);
    }

private:
    bool atEnd() const { return m_cursor >= m_lines.size(); }
    // Made again when asked again: a row is a few comparisons at the ends of its line, and
    // only the lookahead of a block asks twice.
    Program::Row rowAt(std::size_t index) const {
        return Program::makeRow(static_cast<std::int64_t>(index), m_lines[index]);
    }

    ProgramBody parseBlock(std::int64_t minimumIndent) {
        ProgramBody nodes;
        while (!atEnd()) {
            const Program::Row current = rowAt(m_cursor);
            if (current.kind == Program::Row::Kind::blank) {
                nodes.emplace_back(Program::Blank{current.index});
                ++m_cursor;
            } else if (current.kind == Program::Row::Kind::comment) {
                nodes.emplace_back(Program::Comment{current.index});
                ++m_cursor;
            } else if (current.indent < minimumIndent) {
                break;
            } else {
                nodes.push_back(parseCodeRow(current));
            }
        }
        return nodes;
    }

    // The first code row after `from`, past blank and note rows.
    std::optional<std::size_t> nextCodeRow(std::size_t from) const {
        for (std::size_t i = from; i < m_lines.size(); ++i) {
            if (rowAt(i).kind == Program::Row::Kind::code)
                return i;
        }
        return std::nullopt;
    }

    // Call with the cursor right after the header row.
    ProgramBody parseBody(std::int64_t headerIndent) {
        const auto first = nextCodeRow(m_cursor);
        if (!first || rowAt(*first).indent <= headerIndent)
            return {};
        return parseBlock(rowAt(*first).indent);
    }

    // `current` is the row at the cursor.
    ProgramNode parseCodeRow(const Program::Row& current) {
        ++m_cursor;
        if (const auto header = headerOf(current))
            return parseHeader(current, *header);
        return simpleStatement(current);
    }

    ProgramNode parseHeader(const Program::Row& headerRow, const Header& header) {
        switch (header.keyword) {
        case Keyword::ifWord:
            return parseIfChain(headerRow, header);
        case Keyword::elifWord:
        case Keyword::elseWord:
            return invalidNode(headerRow.index, MessageKind::noMatchingIf, parseBody(headerRow.indent));
        case Keyword::forWord:
            return parseFor(headerRow, header.argument);
        case Keyword::whileWord:
            return parseWhile(headerRow, header.argument);
        case Keyword::defWord:
            return parseDefine(headerRow, header.argument);
        case Keyword::returnWord:
        case Keyword::breakWord:
        case Keyword::continueWord:
            break; // never headers
        }
        return invalidNode(headerRow.index, MessageKind::badCondition, parseBody(headerRow.indent));
    }

    ProgramNode parseIfChain(const Program::Row& ifRow, const Header& ifHeader) {
        Program::IfChain chain;
        std::optional<std::int64_t> failedIndex;
        auto addBranch = [&](const Program::Row& branchRow, const Header& header) {
            Program::Branch branch{branchRow.index, nullptr, {}};
            if (header.keyword != Keyword::elseWord) {
                try {
                    branch.condition = Program::parseWholeExpression(header.argument);
                } catch (const CalcError&) {
                    if (!failedIndex)
                        failedIndex = branchRow.index;
                }
            }
            branch.body = parseBody(branchRow.indent);
            chain.branches.push_back(std::move(branch));
        };
        addBranch(ifRow, ifHeader);
        while (true) {
            const auto next = nextCodeRow(m_cursor);
            if (!next || rowAt(*next).indent != ifRow.indent)
                break;
            const auto header = headerOf(rowAt(*next));
            if (!header || (header->keyword != Keyword::elifWord && header->keyword != Keyword::elseWord))
                break;
            // Notes and blank rows between a branch and the next header stay with that branch.
            for (; m_cursor < *next; ++m_cursor) {
                const Program::Row skipped = rowAt(m_cursor);
                if (skipped.kind == Program::Row::Kind::blank)
                    chain.branches.back().body.emplace_back(Program::Blank{skipped.index});
                else
                    chain.branches.back().body.emplace_back(Program::Comment{skipped.index});
            }
            const Program::Row branchRow = rowAt(m_cursor);
            ++m_cursor;
            addBranch(branchRow, *header);
            if (header->keyword == Keyword::elseWord)
                break;
        }
        if (failedIndex) {
            ProgramBody body;
            body.push_back({std::move(chain)});
            return invalidNode(*failedIndex, MessageKind::badCondition, std::move(body));
        }
        return {std::move(chain)};
    }

    ProgramNode parseFor(const Program::Row& headerRow, std::string_view argument) {
        static const std::string separator = " " + std::string(keywords::inWord) + " ";
        const std::size_t in = argument.find(separator);
        if (in == std::string::npos) {
            return invalidNode(headerRow.index, MessageKind::badLoopRange, parseBody(headerRow.indent));
        }
        Program::ForLoop loop{headerRow.index, trimmed(argument.substr(0, in)), nullptr, {}};
        std::optional<MessageKind> mistake;
        if (!Program::isValidName(loop.name)) {
            mistake = MessageKind::forNeedsOneName;
        } else {
            try {
                loop.iterable =
                    Program::parseWholeExpression(trimmed(argument.substr(in + separator.size())));
            } catch (const CalcError&) {
                mistake = MessageKind::badLoopRange;
            }
        }
        loop.body = parseBody(headerRow.indent);
        if (mistake)
            return invalidNode(headerRow.index, *mistake, std::move(loop.body));
        return {std::move(loop)};
    }

    ProgramNode parseWhile(const Program::Row& headerRow, std::string_view argument) {
        Program::WhileLoop loop{headerRow.index, nullptr, {}};
        bool readable = true;
        try {
            loop.condition = Program::parseWholeExpression(argument);
        } catch (const CalcError&) {
            readable = false;
        }
        loop.body = parseBody(headerRow.indent);
        if (!readable)
            return invalidNode(headerRow.index, MessageKind::badWhileCondition, std::move(loop.body));
        return {std::move(loop)};
    }

    ProgramNode parseDefine(const Program::Row& headerRow, std::string_view argument) {
        ProgramBody body = parseBody(headerRow.indent);
        const std::size_t open = argument.find('(');
        if (open == std::string::npos || argument.empty() || argument.back() != ')')
            return invalidNode(headerRow.index, MessageKind::defShape, std::move(body));
        Program::Define define{headerRow.index, trimmed(argument.substr(0, open)),
                               splitParameters(argument.substr(open + 1, argument.size() - open - 2)),
                               nullptr};
        bool namesValid = Program::isValidName(define.name);
        for (const auto& param : define.params)
            namesValid = namesValid && Program::isValidName(param);
        if (!namesValid)
            return invalidNode(headerRow.index, MessageKind::defNames, std::move(body));
        define.body = std::make_shared<const ProgramBody>(std::move(body));
        return {std::move(define)};
    }

    static ProgramNode simpleStatement(const Program::Row& current) {
        const std::string_view text = current.text;
        if (text == keywords::spelling(Keyword::breakWord))
            return {Program::BreakLoop{current.index}};
        if (text == keywords::spelling(Keyword::continueWord))
            return {Program::ContinueLoop{current.index}};
        constexpr std::string_view returnWord = keywords::spelling(Keyword::returnWord);
        if (text == returnWord)
            return {Program::Return{current.index, nullptr}};
        const std::string_view rest = text.substr(std::min(text.size(), returnWord.size()));
        if (startsWith(text, returnWord) && (startsWith(rest, " ") || startsWith(rest, "("))) {
            try {
                return {Program::Return{current.index, Program::parseWholeExpression(rest)}};
            } catch (const CalcError&) {
                return invalidNode(current.index, MessageKind::badReturnValue);
            }
        }
        return {Program::Line{current.index, text, {}}};
    }

    const SheetLines& m_lines;
    std::size_t& m_cursor;
};

ProgramReader::ProgramReader(const SheetLines& lines, std::size_t from) : m_lines(lines), m_cursor(from) {}

std::optional<ProgramNode> ProgramReader::next() {
    return Builder(*this).parseTopLevel();
}

} // namespace lumo
