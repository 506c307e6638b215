// Any bytes must lex and parse into a tree or a CalcError, never a crash.
#include <cstdint>
#include <string_view>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/language/Parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        (void)lumo::parseStatement(text);
    } catch (const lumo::CalcError&) {
    }
    return 0;
}
