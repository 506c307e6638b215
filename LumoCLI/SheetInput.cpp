#include "LumoCLI/SheetInput.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoKit/document/DocumentJson.h"

namespace lumo::cli {

namespace {

bool isDocumentPath(const std::string& path) {
    return path.size() >= 5 && path.compare(path.size() - 5, 5, ".json") == 0;
}

std::string readAll(std::istream& in) {
    std::ostringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

std::string readFile(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw InputError{path + ": is a directory"};
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw InputError{path + ": can't be read (" + std::strerror(errno) + ")"};
    std::string bytes = readAll(in);
    if (in.bad())
        throw InputError{path + ": can't be read"};
    return bytes;
}

void appendDocument(std::vector<InputSheet>& sheets, const LumoDocument& document) {
    for (const auto& sheet : document.sheets)
        sheets.push_back({sheet.name, sheet.text});
}

LumoDocument decodeNamed(const std::string& path, const std::string& bytes) {
    try {
        return decodeDocument(bytes);
    } catch (const std::exception& error) {
        throw InputError{path + ": not a Lumo document (" + error.what() + ")"};
    }
}

} // namespace

std::string sheetNameForPath(const std::string& path) {
    return std::filesystem::path(path).stem().string();
}

std::vector<InputSheet> loadSheets(const CliOptions& options, std::istream& standardInput) {
    std::vector<InputSheet> sheets;
    switch (options.builtin) {
    case BuiltinInput::sample:
        appendDocument(sheets, sampleDocument(Timestamp::now()));
        return sheets;
    case BuiltinInput::starter:
        appendDocument(sheets, starterDocument(Timestamp::now()));
        return sheets;
    case BuiltinInput::none:
        break;
    }
    if (options.files.empty()) {
        sheets.push_back({"stdin", readAll(standardInput)});
        return sheets;
    }
    for (const auto& path : options.files) {
        if (path == "-") {
            sheets.push_back({"stdin", readAll(standardInput)});
        } else if (isDocumentPath(path)) {
            appendDocument(sheets, decodeNamed(path, readFile(path)));
        } else {
            sheets.push_back({sheetNameForPath(path), readFile(path)});
        }
    }
    return sheets;
}

} // namespace lumo::cli
