#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "LumoKit/document/Document.h"

namespace lumo {

/// A document file that cannot be read. The message says what is wrong and where.
class DocumentDecodeError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The document file ("document.json"): pretty printed JSON with sorted keys.
/// Invalid UTF-8 in a text is written as U+FFFD rather than failing.
std::string encodeDocument(const LumoDocument& document);
/// Throws DocumentDecodeError for anything that is not a valid document file.
LumoDocument decodeDocument(std::string_view bytes);

/// A single sheet in the same JSON form as inside the document file.
std::string encodeSheet(const Sheet& sheet);
/// Throws DocumentDecodeError like decodeDocument().
Sheet decodeSheet(std::string_view bytes);

} // namespace lumo
