#include "LumoKit/export/CsvExport.h"

#include <ostream>

#include "LumoKit/base/Unicode.h"

namespace lumo {

std::string csvField(const std::string& text) {
    const bool quoted = text.find_first_of(",\"\r\n") != std::string::npos ||
                        (!text.empty() && (text.front() == ' ' || text.back() == ' '));
    if (!quoted)
        return text;
    std::string out = "\"";
    for (char c : text) {
        if (c == '"')
            out += '"';
        out += c;
    }
    return out + "\"";
}

void writeCsv(std::ostream& out, const std::vector<EvaluatedSheet>& sheets, const EvaluationOptions& options,
              Grouping grouping) {
    const bool english = options.language == Language::english;
    const bool severalSheets = sheets.size() > 1;
    if (severalSheets)
        out << (english ? "sheet," : "シート,");
    out << (english ? "line,name,answer,unit,number" : "行,名前,答え,単位,数値") << "\r\n";
    for (const EvaluatedSheet& sheet : sheets) {
        for (std::size_t i = 0; i < sheet.lines.size(); ++i) {
            if (unicode::trim(sheet.lines[i]).empty())
                continue;
            const LineResult blank;
            const LineResult& result = i < sheet.results.size() ? sheet.results[i] : blank;
            const bool isPlot = result.outcome.kind == LineOutcome::Kind::plot;
            const std::optional<double> number = answerNumber(result);
            if (severalSheets)
                out << csvField(sheet.name) << ",";
            out << csvField(sheet.lines[i]) << "," << csvField(result.name.value_or("")) << ","
                << csvField(isPlot ? result.outcome.plot()->title : answerText(result, options, grouping))
                << "," << csvField(number ? answerUnit(result.outcome.value) : "") << ","
                << (number ? plainNumber(*number) : "") << "\r\n";
        }
    }
}

} // namespace lumo
