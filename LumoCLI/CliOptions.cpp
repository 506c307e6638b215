#include "LumoCLI/CliOptions.h"

#include <charconv>
#include <utility>

namespace lumo::cli {

namespace {

std::optional<AppLanguage> languageNamed(const std::string& name) {
    if (name == "ja")
        return AppLanguage::japanese;
    if (name == "en")
        return AppLanguage::english;
    return appLanguageFromRaw(name);
}

std::optional<OutputFormat> formatNamed(const std::string& name) {
    if (name == "text")
        return OutputFormat::text;
    if (name == "markdown" || name == "md")
        return OutputFormat::markdown;
    if (name == "csv")
        return OutputFormat::csv;
    if (name == "json")
        return OutputFormat::jsonLines;
    return std::nullopt;
}

std::optional<int> wholeNumber(const std::string& text) {
    int value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

// Options that take a value accept both "--name value" and "--name=value".
class ArgumentReader {
public:
    explicit ArgumentReader(const std::vector<std::string>& arguments) : m_arguments(arguments) {}

    bool done() const { return m_index >= m_arguments.size(); }
    std::string next() { return m_arguments[m_index++]; }

    std::string valueFor(const std::string& option, std::optional<std::string>& inlineValue) {
        if (inlineValue)
            return *std::exchange(inlineValue, std::nullopt);
        if (done())
            throw UsageError{"option " + option + " needs a value"};
        return next();
    }

private:
    const std::vector<std::string>& m_arguments;
    std::size_t m_index = 0;
};

} // namespace

CliOptions parseOptions(const std::vector<std::string>& arguments) {
    CliOptions options;
    ArgumentReader reader(arguments);
    bool onlyFiles = false;
    while (!reader.done()) {
        std::string argument = reader.next();
        if (onlyFiles || argument == "-" || argument.rfind("-", 0) != 0) {
            options.files.push_back(argument);
            continue;
        }
        if (argument == "--") {
            onlyFiles = true;
            continue;
        }
        std::optional<std::string> inlineValue;
        if (auto equals = argument.find('='); equals != std::string::npos) {
            inlineValue = argument.substr(equals + 1);
            argument.resize(equals);
        }
        auto takesNoValue = [&] {
            if (inlineValue)
                throw UsageError{"option " + argument + " takes no value"};
        };
        if (argument == "--help" || argument == "-h") {
            takesNoValue();
            options.showHelp = true;
        } else if (argument == "--version") {
            takesNoValue();
            options.showVersion = true;
        } else if (argument == "--sample") {
            takesNoValue();
            options.builtin = BuiltinInput::sample;
        } else if (argument == "--starter") {
            takesNoValue();
            options.builtin = BuiltinInput::starter;
        } else if (argument == "--json") {
            takesNoValue();
            options.format = OutputFormat::jsonLines;
        } else if (argument == "--format") {
            auto value = reader.valueFor(argument, inlineValue);
            auto format = formatNamed(value);
            if (!format)
                throw UsageError{"unknown format '" + value + "' (use text, markdown, csv or json)"};
            options.format = *format;
        } else if (argument == "--no-grouping") {
            takesNoValue();
            options.grouping = false;
        } else if (argument == "--sheet") {
            options.sheet = reader.valueFor(argument, inlineValue);
        } else if (argument == "--lang") {
            auto value = reader.valueFor(argument, inlineValue);
            auto language = languageNamed(value);
            if (!language)
                throw UsageError{"unknown language '" + value +
                                 "' (use system, japanese, english, ja or en)"};
            options.language = *language;
        } else if (argument == "--angle") {
            auto value = reader.valueFor(argument, inlineValue);
            if (value != "radians" && value != "degrees")
                throw UsageError{"unknown angle unit '" + value + "' (use radians or degrees)"};
            options.degrees = value == "degrees";
        } else if (argument == "--digits") {
            auto value = reader.valueFor(argument, inlineValue);
            auto digits = wholeNumber(value);
            if (!digits || *digits < 0 || *digits > 15)
                throw UsageError{"--digits needs a whole number from 0 to 15, not '" + value + "'"};
            options.digits = *digits;
        } else {
            throw UsageError{"unknown option " + argument};
        }
    }
    if (options.builtin != BuiltinInput::none && !options.files.empty())
        throw UsageError{"--sample and --starter can't be combined with files"};
    return options;
}

std::string usageText() {
    return R"(usage: lumo [options] [FILE ...]

Evaluates Lumo sheets and prints each line with its answer.
FILE is a plain-text sheet, or a document (.json) whose sheets are all evaluated.
Several files form one document, in the order given. No FILE, or "-", reads one
sheet from standard input.

options:
  --sample              evaluate the built-in sample document
  --starter             evaluate the built-in tutorial (starter) document
  --sheet NAME          print only the sheet called NAME
  --lang LANG           system, japanese or english (also ja, en); default system
  --angle UNIT          radians or degrees; default radians
  --digits N            maximum fraction digits, 0 to 15; default 10
  --no-grouping         write 1234567 instead of 1,234,567
  --format FORMAT       text (the default), markdown (a table of lines and answers
                        per sheet) or csv (line, name, answer, unit and the plain
                        number; a sheet column first when there are several sheets)
  --json                JSON Lines: one object per line of every sheet (the same
                        as --format json)
  --help                show this help
  --version             show the version

exit status: 0 when the sheets were evaluated, 1 when an input can't be read or
decoded, 2 for a usage error (a --sheet NAME that no input has is one).
)";
}

} // namespace lumo::cli
