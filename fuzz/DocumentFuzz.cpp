// Any bytes must decode into a document or a clear error; a decoded document must merge,
// normalise and re-encode without a crash, and its encoding must decode again.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoKit/document/DocumentJson.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    lumo::LumoDocument document;
    try {
        document = lumo::decodeDocument(bytes);
    } catch (const std::exception&) {
        return 0;
    }
    auto now = lumo::Timestamp::fromSeconds(1'800'000'000);
    auto merged = lumo::sampleDocument(now).merged(document, now).normalized(now);
    auto encoded = lumo::encodeDocument(merged);
    auto again = lumo::decodeDocument(encoded);
    if (lumo::encodeDocument(again) != encoded)
        std::abort();
    return 0;
}
