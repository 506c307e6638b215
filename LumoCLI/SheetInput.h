#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "LumoCLI/CliOptions.h"
#include "LumoKit/sheet/DocumentEvaluator.h"

namespace lumo::cli {

/// A sheet to evaluate: its name and its text.
struct InputSheet {
    std::string name;
    std::string text;
};

/// An input that can't be read or decoded; the message names the file.
struct InputError {
    std::string message;
};

/// Gathers the sheets of the document the options describe, in tab order. Throws InputError.
std::vector<InputSheet> loadSheets(const CliOptions& options, std::istream& standardInput);

/// The sheet name for a plain-text file: its file name without the extension.
std::string sheetNameForPath(const std::string& path);

} // namespace lumo::cli
