// Any bytes must decode into a document or a clear error; a decoded document must merge (by
// dates and against a common copy), normalise and re-encode without a crash, and its encoding
// must decode again.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoKit/document/DocumentJson.h"
#include "LumoKit/document/ThreeWayMerge.h"

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
    // Merged against itself as the common copy, and with no common copy at all.
    const auto sample = lumo::sampleDocument(now);
    merged = lumo::threeWayMerged(merged, lumo::threeWayMerged(sample, document, &document, now).document,
                                  &sample, now)
                 .document;
    merged = lumo::threeWayMerged(merged, document, nullptr, now).document;
    auto encoded = lumo::encodeDocument(merged);
    auto again = lumo::decodeDocument(encoded);
    if (lumo::encodeDocument(again) != encoded)
        std::abort();
    return 0;
}
