#include "LumoUI/store/StoreTexts.h"

#include "LumoKit/base/Language.h"
#include "LumoKit/base/Messages.h"

namespace lumo::storeTexts {

std::string newSheetName() {
    return Message(MessageKind::newSheetName).text(L10n::resolved());
}

std::string numberedSheetName(std::size_t number) {
    const std::string digits = std::to_string(number);
    return L10n::pick("シート " + digits, "Sheet " + digits);
}

std::string copyName(const std::string& originalName) {
    return L10n::pick(originalName + " のコピー", originalName + " Copy");
}

std::string clearSheetPrompt() {
    // clang-format off
    return L10n::pick(
        "このシートだけを消去します。ほかのシートはそのまま残ります。元に戻すこともできます（↩︎ または ⌘Z）。",
        "Only this sheet is cleared; your other sheets are untouched. You can undo it (↩︎ or ⌘Z).");
    // clang-format on
}

std::string eraseAllContentTitle() {
    return L10n::pick("全ての内容を消去しますか？", "Erase All Content?");
}

std::string eraseAllContentMessage() {
    return L10n::pick("すべてのシートが消え、元に戻せません。他の端末からも消えます。",
                      "All sheets will be deleted. This can’t be undone, and they will disappear from your "
                      "other devices too.");
}

std::string eraseAllContentButton() {
    return L10n::pick("全ての内容を消去", "Erase All Content");
}

} // namespace lumo::storeTexts
