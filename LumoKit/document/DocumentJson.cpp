#include "LumoKit/document/DocumentJson.h"

#include <cmath>
#include <limits>

#include <nlohmann/json.hpp>

#include "LumoKit/base/Language.h"
#include "LumoKit/base/Messages.h"

namespace lumo {

using nlohmann::json;

// MARK: - Encoding

namespace {

json sheetToJson(const Sheet& sheet) {
    return json{{"id", sheet.id.toString()},
                {"name", sheet.name},
                {"text", sheet.text},
                {"updatedAt", formatIso8601(sheet.updatedAt)},
                {"lockedLines", sheet.lockedLines}};
}

json documentToJson(const LumoDocument& document) {
    json sheets = json::array();
    for (const Sheet& sheet : document.sheets)
        sheets.push_back(sheetToJson(sheet));

    json tombstones = json::object();
    for (const auto& [key, date] : document.deletedSheets)
        tombstones[key] = formatIso8601(date);

    json object{{"sheets", std::move(sheets)},
                {"deletedSheets", std::move(tombstones)},
                {"keyLayouts", document.keyLayouts.empty() ? json::object() : json(document.keyLayouts)}};
    if (document.selectedSheetID)
        object["selectedSheetID"] = document.selectedSheetID->toString();
    if (document.keyLayoutsUpdatedAt)
        object["keyLayoutsUpdatedAt"] = formatIso8601(*document.keyLayoutsUpdatedAt);
    if (document.sheetOrderUpdatedAt)
        object["sheetOrderUpdatedAt"] = formatIso8601(*document.sheetOrderUpdatedAt);
    return object;
}

// Texts typed on this machine are valid UTF-8, but a text is never worth losing a save
// over: anything else is written as U+FFFD.
std::string dumpPretty(const json& value) {
    return value.dump(2, ' ', false, json::error_handler_t::replace);
}

} // namespace

std::string encodeDocument(const LumoDocument& document) {
    return dumpPretty(documentToJson(document));
}

std::string encodeSheet(const Sheet& sheet) {
    return dumpPretty(sheetToJson(sheet));
}

// MARK: - Decoding

namespace {

constexpr int maximumNestingDepth = 64;

// Decoding happens outside any run, so its messages are in the interface's language.
[[noreturn]] void failDecoding(Message detail) {
    throw DocumentDecodeError(
        Message(MessageKind::documentUnreadable, {std::move(detail)}).text(L10n::resolved()));
}

[[noreturn]] void failWrongType(const std::string& path, MessageKind expected) {
    failDecoding({MessageKind::documentWrongType, {path, expected}});
}

// nlohmann's parser keeps its own stack, but values nested thousands deep still cost
// recursion elsewhere (copying, comparing); no document comes anywhere near this depth.
void rejectDeepNesting(std::string_view bytes) {
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    for (const char c : bytes) {
        if (inString) {
            if (escaped)
                escaped = false;
            else if (c == '\\')
                escaped = true;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > maximumNestingDepth)
                failDecoding({MessageKind::documentTooDeep, {std::to_string(maximumNestingDepth)}});
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
}

json parseJson(std::string_view bytes) {
    rejectDeepNesting(bytes);
    json value = json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (value.is_discarded())
        failDecoding(MessageKind::documentNotJson);
    return value;
}

const json& requireObject(const json& value, const std::string& path) {
    if (!value.is_object())
        failWrongType(path, MessageKind::anObject);
    return value;
}

const json& requireKey(const json& object, const std::string& key, const std::string& path) {
    const auto entry = object.find(key);
    if (entry == object.end())
        failDecoding({MessageKind::documentKeyMissing, {path}});
    return *entry;
}

std::string readString(const json& value, const std::string& path) {
    if (!value.is_string())
        failWrongType(path, MessageKind::aString);
    return value.get<std::string>();
}

Timestamp readDate(const json& value, const std::string& path) {
    const auto date = value.is_string() ? parseIso8601(value.get_ref<const std::string&>()) : std::nullopt;
    if (!date)
        failWrongType(path, MessageKind::aDate);
    return *date;
}

Uuid readUuid(const json& value, const std::string& path) {
    const auto uuid =
        value.is_string() ? Uuid::fromString(value.get_ref<const std::string&>()) : std::nullopt;
    if (!uuid)
        failWrongType(path, MessageKind::aUuid);
    return *uuid;
}

std::int64_t readInteger(const json& value, const std::string& path) {
    if (value.is_number_integer() && !value.is_number_unsigned())
        return value.get<std::int64_t>();
    if (value.is_number_unsigned() && value.get<std::uint64_t>() <= std::numeric_limits<std::int64_t>::max())
        return value.get<std::int64_t>();
    // A whole number written with a fraction part ("3.0") is still a line number.
    constexpr double int64Limit = 9223372036854775808.0; // 2^63
    if (value.is_number_float()) {
        const double number = value.get<double>();
        if (std::floor(number) == number && number >= -int64Limit && number < int64Limit)
            return static_cast<std::int64_t>(number);
    }
    failWrongType(path, MessageKind::anInteger);
}

const json& requireArray(const json& value, const std::string& path) {
    if (!value.is_array())
        failWrongType(path, MessageKind::anArray);
    return value;
}

std::vector<std::string> readStringArray(const json& value, const std::string& path) {
    std::vector<std::string> strings;
    const json& array = requireArray(value, path);
    for (std::size_t i = 0; i < array.size(); ++i)
        strings.push_back(readString(array[i], path + "[" + std::to_string(i) + "]"));
    return strings;
}

Sheet sheetFromJson(const json& value, const std::string& path) {
    const json& object = requireObject(value, path);
    Sheet sheet;
    sheet.id = readUuid(requireKey(object, "id", path + ".id"), path + ".id");
    sheet.name = readString(requireKey(object, "name", path + ".name"), path + ".name");
    sheet.text = readString(requireKey(object, "text", path + ".text"), path + ".text");
    // A sheet without a date loses every merge against a dated copy.
    if (const auto entry = object.find("updatedAt"); entry != object.end())
        sheet.updatedAt = readDate(*entry, path + ".updatedAt");
    if (const auto entry = object.find("lockedLines"); entry != object.end()) {
        const json& lines = requireArray(*entry, path + ".lockedLines");
        for (std::size_t i = 0; i < lines.size(); ++i)
            sheet.lockedLines.push_back(
                readInteger(lines[i], path + ".lockedLines[" + std::to_string(i) + "]"));
    }
    return sheet;
}

std::map<std::string, Timestamp> tombstonesFromJson(const json& value, const std::string& path) {
    std::map<std::string, Timestamp> tombstones;
    for (const auto& [key, date] : requireObject(value, path).items())
        tombstones.emplace(key, readDate(date, path + "." + key));
    return tombstones;
}

KeyLayouts keyLayoutsFromJson(const json& value, const std::string& path) {
    KeyLayouts layouts;
    for (const auto& [layoutName, layout] : requireObject(value, path).items()) {
        const std::string layoutPath = path + "." + layoutName;
        auto& tabs = layouts[layoutName];
        for (const auto& [tabName, keys] : requireObject(layout, layoutPath).items())
            tabs.emplace(tabName, readStringArray(keys, layoutPath + "." + tabName));
    }
    return layouts;
}

std::optional<Timestamp> optionalDate(const json& object, const std::string& key) {
    const auto entry = object.find(key);
    if (entry == object.end())
        return std::nullopt;
    return readDate(*entry, key);
}

LumoDocument documentFromJson(const json& value) {
    const json& object = requireObject(value, "document");
    LumoDocument document;
    const json& sheets = requireArray(requireKey(object, "sheets", "sheets"), "sheets");
    for (std::size_t i = 0; i < sheets.size(); ++i)
        document.sheets.push_back(sheetFromJson(sheets[i], "sheets[" + std::to_string(i) + "]"));
    if (const auto entry = object.find("selectedSheetID"); entry != object.end())
        document.selectedSheetID = readUuid(*entry, "selectedSheetID");
    if (const auto entry = object.find("deletedSheets"); entry != object.end())
        document.deletedSheets = tombstonesFromJson(*entry, "deletedSheets");
    if (const auto entry = object.find("keyLayouts"); entry != object.end())
        document.keyLayouts = keyLayoutsFromJson(*entry, "keyLayouts");
    document.keyLayoutsUpdatedAt = optionalDate(object, "keyLayoutsUpdatedAt");
    document.sheetOrderUpdatedAt = optionalDate(object, "sheetOrderUpdatedAt");
    return document;
}

} // namespace

LumoDocument decodeDocument(std::string_view bytes) {
    return documentFromJson(parseJson(bytes));
}

Sheet decodeSheet(std::string_view bytes) {
    return sheetFromJson(parseJson(bytes), "sheet");
}

} // namespace lumo
