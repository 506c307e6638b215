#pragma once

#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/document/Document.h"

namespace lumo {

/// The tutorial a new user starts with, in the edition of the current interface language.
/// Its sheets get fresh identifiers at every call; all are dated `now`.
LumoDocument starterDocument(Timestamp now);

/// The fixed five-sheet demonstration document, in the edition of the current interface
/// language. Identifiers are fixed; all sheets are dated `now`.
LumoDocument sampleDocument(Timestamp now);

/// The four tutorial sheets of the edition that `language` resolves to.
std::vector<Sheet> tutorialSheets(AppLanguage language, Timestamp now);

} // namespace lumo
