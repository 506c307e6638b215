#pragma once

#include <optional>
#include <string>
#include <vector>

#include "LumoKit/base/Language.h"

namespace lumo::cli {

enum class OutputFormat { text, jsonLines, markdown, csv };
enum class BuiltinInput { none, sample, starter };

/// The command line, parsed.
struct CliOptions {
    std::vector<std::string> files; // "-" is standard input
    BuiltinInput builtin = BuiltinInput::none;
    std::optional<std::string> sheet;
    AppLanguage language = AppLanguage::system;
    bool degrees = false;
    int digits = 10;
    bool grouping = true;
    OutputFormat format = OutputFormat::text;
    bool showHelp = false;
    bool showVersion = false;
};

/// A usage mistake; main prints the message and the usage and exits with status 2.
struct UsageError {
    std::string message;
};

/// Parses argv (without the program name). Throws UsageError.
CliOptions parseOptions(const std::vector<std::string>& arguments);

/// The text printed by --help and after a usage error.
std::string usageText();

} // namespace lumo::cli
