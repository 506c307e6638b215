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
/// A plain-text file's or standard input's final line feed ends its last line.
std::vector<InputSheet> loadSheets(const CliOptions& options, std::istream& standardInput);

/// Throws UsageError, listing the sheets there are, unless one of `sheets` is called `name`.
void requireSheetNamed(const std::string& name, const std::vector<InputSheet>& sheets);

/// The sheet name for a plain-text file: its file name without the extension.
std::string sheetNameForPath(const std::string& path);

} // namespace lumo::cli
