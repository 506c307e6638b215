#include "BuiltinDocuments.h"

namespace lumo {

LumoDocument starterDocument(Timestamp) { return {}; }
LumoDocument sampleDocument(Timestamp) { return {}; }
std::vector<Sheet> tutorialSheets(AppLanguage, Timestamp) { return {}; }

} // namespace lumo
