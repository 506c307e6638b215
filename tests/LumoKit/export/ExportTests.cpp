#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/export/CsvExport.h"
#include "LumoKit/export/MarkdownExport.h"
#include "LumoKit/export/SheetAnswers.h"
#include "LumoKit/sheet/DocumentEvaluator.h"

namespace lumo {
namespace {

EvaluationOptions english() {
    EvaluationOptions options;
    options.language = Language::english;
    return options;
}

EvaluatedSheet evaluated(const std::string& text, const std::string& name = "Sheet") {
    return {name, unicode::splitLines(text), DocumentEvaluator::evaluate(text, {}, english())};
}

// A reader of RFC 4180 CSV, as a spreadsheet reads it: quoted fields may hold commas, quotes
// and line breaks.
std::vector<std::vector<std::string>> parseCsv(const std::string& csv) {
    std::vector<std::vector<std::string>> rows(1);
    std::string field;
    bool quoted = false;
    for (std::size_t i = 0; i < csv.size(); ++i) {
        const char c = csv[i];
        if (quoted) {
            if (c == '"' && i + 1 < csv.size() && csv[i + 1] == '"')
                field += csv[++i];
            else if (c == '"')
                quoted = false;
            else
                field += c;
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            rows.back().push_back(std::exchange(field, {}));
        } else if (c == '\r' && i + 1 < csv.size() && csv[i + 1] == '\n') {
            rows.back().push_back(std::exchange(field, {}));
            rows.emplace_back();
            ++i;
        } else {
            field += c;
        }
    }
    if (rows.back().empty() && field.empty())
        rows.pop_back();
    return rows;
}

TEST(Export, PlainNumbersReadBackExactly) {
    struct Case {
        double number;
        std::string text;
    };
    const Case cases[] = {
        {0.1 + 0.2, "0.30000000000000004"},
        {1234567.891, "1234567.891"},
        {-42, "-42"},
        {-0.0, "0"},
        {1e20, "100000000000000000000"},
        {1e21, "1e+21"},
        {5e-7, "0.0000005"},
        {1e-8, "1e-08"},
        {1.0 / 3.0, "0.3333333333333333"},
        {std::numeric_limits<double>::quiet_NaN(), ""},
        {std::numeric_limits<double>::infinity(), ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(plainNumber(c.number), c.text) << c.number;
        if (!c.text.empty()) {
            EXPECT_EQ(std::strtod(c.text.c_str(), nullptr), c.number) << c.text;
        }
    }
}

TEST(Export, CsvFieldsAreQuotedWhenTheyMustBe) {
    struct Case {
        std::string field;
        std::string written;
    };
    const Case cases[] = {
        {"plain", "plain"},
        {"", ""},
        {"[4,800, 12,000]", "\"[4,800, 12,000]\""},
        {R"("quoted")", R"("""quoted""")"},
        {"two\nlines", "\"two\nlines\""},
        {" edge", "\" edge\""},
        {"価格 = 100", "価格 = 100"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(csvField(c.field), c.written) << c.field;
}

TEST(Export, MarkdownCodeSurvivesTableCells) {
    struct Case {
        std::string text;
        std::string written;
    };
    const Case cases[] = {
        {"1200 × 35", "`1200 × 35`"},
        {"a | b", "`a \\| b`"},
        {"say `hi`", "`` say `hi` ``"},
        {"``", "``` `` ```"},
        {"  x  ", "`   x   `"},
        {"    return v", "`    return v`"},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(markdownCode(c.text), c.written) << c.text;
}

// Everything a spreadsheet needs comes back out of the file: the answer as shown, the unit and
// the full-precision number, also for answers whose text holds commas and quotes.
TEST(Export, CsvParsesBackWithNumbersIntact) {
    const std::string text =
        "a = 0.1 + 0.2\n1234567.891 × 3\nwidth = 120 mm\n+ 12.5%\n2^70\n"
        "list = [1, 2, 3]\nnote = 'say \"hi\", then go'\n1 +\n\n// a note, with a comma\n";
    const EvaluatedSheet sheet = evaluated(text);
    std::ostringstream out;
    writeCsv(out, {sheet}, english(), Grouping::grouped);
    const auto rows = parseCsv(out.str());
    ASSERT_EQ(rows.size(), 10u) << out.str();
    EXPECT_EQ(rows[0], (std::vector<std::string>{"line", "name", "answer", "unit", "number"}));
    std::size_t row = 1;
    for (std::size_t i = 0; i < sheet.lines.size(); ++i) {
        if (unicode::trim(sheet.lines[i]).empty())
            continue;
        const auto& fields = rows.at(row++);
        ASSERT_EQ(fields.size(), 5u) << sheet.lines[i];
        EXPECT_EQ(fields[0], sheet.lines[i]);
        EXPECT_EQ(fields[1], sheet.results[i].name.value_or(""));
        EXPECT_EQ(fields[2], answerText(sheet.results[i], english(), Grouping::grouped));
        if (const auto number = answerNumber(sheet.results[i])) {
            EXPECT_EQ(std::strtod(fields[4].c_str(), nullptr), *number) << fields[4];
            EXPECT_EQ(fields[4].find(','), std::string::npos) << "no grouping in " << fields[4];
        } else {
            EXPECT_EQ(fields[4], "") << sheet.lines[i];
        }
    }
    EXPECT_EQ(rows[3][3], "mm");
    EXPECT_EQ(rows[4][3], "mm") << "a percent added to a length stays a length";
    EXPECT_EQ(rows[7][2], R"("say "hi", then go")");
    EXPECT_EQ(rows[8][2], "The expression ends in the middle");
}

} // namespace
} // namespace lumo
