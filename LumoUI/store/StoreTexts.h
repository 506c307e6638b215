#pragma once

#include <cstddef>
#include <string>

namespace lumo {

/// The texts the document store gives its sheets and shows in its prompts, in the current
/// language.
namespace storeTexts {

/// The name of the sheet that replaces the last one deleted or erased.
std::string newSheetName();
/// The name of an added sheet: "Sheet n" / "シート n".
std::string numberedSheetName(std::size_t number);
/// The name of a duplicated sheet.
std::string copyName(const std::string& originalName);

/// The confirmation shown before a sheet is cleared.
std::string clearSheetPrompt();

std::string eraseAllContentTitle();
std::string eraseAllContentMessage();
std::string eraseAllContentButton();

} // namespace storeTexts

} // namespace lumo
