#include "Document.h"

namespace lumo {

Uuid Uuid::random() { return Uuid{}; }
std::optional<Uuid> Uuid::fromString(std::string_view) { return std::nullopt; }
std::string Uuid::toString() const { return {}; }
bool Uuid::isNil() const { return true; }
Timestamp Timestamp::now() { return Timestamp{}; }
std::string formatIso8601(Timestamp) { return {}; }
std::optional<Timestamp> parseIso8601(std::string_view) { return std::nullopt; }
LumoDocument LumoDocument::merged(const LumoDocument&, Timestamp) const { return *this; }
LumoDocument LumoDocument::normalized(Timestamp) const { return *this; }
std::string encodeDocument(const LumoDocument&) { return {}; }
LumoDocument decodeDocument(std::string_view) { return {}; }
std::string encodeSheet(const Sheet&) { return {}; }
Sheet decodeSheet(std::string_view) { return {}; }

} // namespace lumo

std::size_t std::hash<lumo::Uuid>::operator()(const lumo::Uuid&) const noexcept { return 0; }
