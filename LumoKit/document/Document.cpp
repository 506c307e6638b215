#include "LumoKit/document/Document.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <tuple>
#include <unordered_map>

#include <nlohmann/json.hpp>
#include <uuid/uuid.h>

#include "LumoKit/base/Language.h"

namespace lumo {

using nlohmann::json;

// MARK: - Uuid

namespace {

constexpr std::size_t uuidTextLength = 36;

bool isHyphenPosition(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

Uuid Uuid::random() {
    uuid_t raw;
    uuid_generate_random(raw);
    std::array<std::uint8_t, 16> bytes{};
    std::copy(std::begin(raw), std::end(raw), bytes.begin());
    return Uuid(bytes);
}

std::optional<Uuid> Uuid::fromString(std::string_view text) {
    if (text.size() != uuidTextLength)
        return std::nullopt;
    std::array<std::uint8_t, 16> bytes{};
    std::size_t nibble = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isHyphenPosition(i)) {
            if (text[i] != '-')
                return std::nullopt;
            continue;
        }
        const int value = hexDigitValue(text[i]);
        if (value < 0)
            return std::nullopt;
        bytes[nibble / 2] =
            static_cast<std::uint8_t>(bytes[nibble / 2] | (nibble % 2 == 0 ? value << 4 : value));
        ++nibble;
    }
    return Uuid(bytes);
}

std::string Uuid::toString() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(uuidTextLength);
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += digits[m_bytes[i] >> 4];
        text += digits[m_bytes[i] & 0x0F];
    }
    return text;
}

// MARK: - Timestamp

Timestamp Timestamp::now() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Timestamp{std::chrono::duration<double>(sinceEpoch).count()};
}

namespace {

using namespace std::chrono;

// Years 0000 to 9999 are the ones the four-digit form can hold.
const double earliestWritableSeconds =
    static_cast<double>(sys_seconds(sys_days(year(0) / January / 1)).time_since_epoch().count());
const double latestWritableSeconds =
    static_cast<double>(sys_seconds(sys_days(year(9999) / December / 31)).time_since_epoch().count()) + 86399;

void appendPadded(std::string& out, long value, int width) {
    std::string digits = std::to_string(value);
    if (static_cast<int>(digits.size()) < width)
        out.append(static_cast<std::size_t>(width) - digits.size(), '0');
    out += digits;
}

// Reads `count` decimal digits at `position`; nothing if any is not a digit.
std::optional<int> readDigits(std::string_view text, std::size_t position, std::size_t count) {
    int value = 0;
    for (std::size_t i = position; i < position + count; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

bool hasSeparatorsAt(std::string_view text, std::initializer_list<std::pair<std::size_t, char>> separators) {
    return std::all_of(separators.begin(), separators.end(),
                       [&](const auto& separator) { return text[separator.first] == separator.second; });
}

// The offset east of UTC in seconds for "Z", "+hh:mm" or "-hh:mm".
std::optional<int> readZoneOffset(std::string_view zone) {
    if (zone == "Z")
        return 0;
    if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') || zone[3] != ':')
        return std::nullopt;
    const auto hours = readDigits(zone, 1, 2);
    const auto minutes = readDigits(zone, 4, 2);
    if (!hours || !minutes || *hours > 23 || *minutes > 59)
        return std::nullopt;
    const int offset = *hours * 3600 + *minutes * 60;
    return zone[0] == '+' ? offset : -offset;
}

} // namespace

std::string formatIso8601(Timestamp time) {
    double seconds = std::isfinite(time.seconds) ? std::floor(time.seconds) : 0.0;
    seconds = std::clamp(seconds, earliestWritableSeconds, latestWritableSeconds);
    const sys_seconds moment{std::chrono::seconds(static_cast<std::int64_t>(seconds))};
    const sys_days day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss clock{moment - day};

    std::string text;
    text.reserve(20);
    appendPadded(text, static_cast<int>(date.year()), 4);
    text += '-';
    appendPadded(text, static_cast<long>(static_cast<unsigned>(date.month())), 2);
    text += '-';
    appendPadded(text, static_cast<long>(static_cast<unsigned>(date.day())), 2);
    text += 'T';
    appendPadded(text, clock.hours().count(), 2);
    text += ':';
    appendPadded(text, clock.minutes().count(), 2);
    text += ':';
    appendPadded(text, static_cast<long>(clock.seconds().count()), 2);
    text += 'Z';
    return text;
}

std::optional<Timestamp> parseIso8601(std::string_view text) {
    constexpr std::size_t dateTimeLength = 19; // "YYYY-MM-DDTHH:MM:SS"
    if (text.size() <= dateTimeLength)
        return std::nullopt;
    if (!hasSeparatorsAt(text, {{4, '-'}, {7, '-'}, {10, 'T'}, {13, ':'}, {16, ':'}}))
        return std::nullopt;
    const auto yearValue = readDigits(text, 0, 4);
    const auto monthValue = readDigits(text, 5, 2);
    const auto dayValue = readDigits(text, 8, 2);
    const auto hourValue = readDigits(text, 11, 2);
    const auto minuteValue = readDigits(text, 14, 2);
    const auto secondValue = readDigits(text, 17, 2);
    const auto offset = readZoneOffset(text.substr(dateTimeLength));
    if (!yearValue || !monthValue || !dayValue || !hourValue || !minuteValue || !secondValue || !offset)
        return std::nullopt;
    if (*hourValue > 23 || *minuteValue > 59 || *secondValue > 59)
        return std::nullopt;
    const year_month_day date{year(*yearValue), month(static_cast<unsigned>(*monthValue)),
                              day(static_cast<unsigned>(*dayValue))};
    if (!date.ok())
        return std::nullopt;
    const auto dayStart = sys_seconds(sys_days(date)).time_since_epoch().count();
    const auto seconds = dayStart + *hourValue * 3600 + *minuteValue * 60 + *secondValue - *offset;
    return Timestamp{static_cast<double>(seconds)};
}

// MARK: - Merging and normalising

namespace {

// Tombstone keys are compared in canonical form, so a lower-case key from a hand-edited
// file still matches its sheet.
std::string canonicalTombstoneKey(const std::string& key) {
    const auto uuid = Uuid::fromString(key);
    return uuid ? uuid->toString() : key;
}

void recordTombstone(std::map<std::string, Timestamp>& tombstones, const std::string& key, Timestamp date) {
    const auto [entry, inserted] = tombstones.emplace(canonicalTombstoneKey(key), date);
    if (!inserted && entry->second < date)
        entry->second = date;
}

std::map<std::string, Timestamp> unitedTombstones(const std::map<std::string, Timestamp>& first,
                                                  const std::map<std::string, Timestamp>& second) {
    std::map<std::string, Timestamp> united;
    for (const auto& [key, date] : first)
        recordTombstone(united, key, date);
    for (const auto& [key, date] : second)
        recordTombstone(united, key, date);
    return united;
}

bool isDeleted(const Sheet& sheet, const std::map<std::string, Timestamp>& tombstones) {
    const auto entry = tombstones.find(sheet.id.toString());
    return entry != tombstones.end() && entry->second >= sheet.updatedAt;
}

// Every identifier of the order-giving copy in its order, then those only the other copy
// has, in that copy's order.
std::vector<Uuid> mergedOrder(const std::vector<Sheet>& primary, const std::vector<Sheet>& secondary) {
    std::vector<Uuid> order;
    std::unordered_map<Uuid, bool> seen;
    for (const auto* sheets : {&primary, &secondary}) {
        for (const Sheet& sheet : *sheets) {
            if (seen.emplace(sheet.id, true).second)
                order.push_back(sheet.id);
        }
    }
    return order;
}

Sheet replacementSheet(Timestamp now) {
    return Sheet{Uuid::random(), L10n::pick("新しいシート", "New Sheet"), "", now, {}};
}

std::string contentKey(const Sheet& sheet) {
    std::string key = sheet.name;
    key += '\0';
    key += sheet.text;
    return key;
}

// Sheets sharing an identifier would make every later lookup ambiguous. The latest edit
// survives, in the place of the first occurrence.
std::vector<Sheet> withUniqueIdentifiers(const std::vector<Sheet>& sheets) {
    std::vector<Sheet> unique;
    std::unordered_map<Uuid, std::size_t> indexOfId;
    for (const Sheet& sheet : sheets) {
        const auto [entry, inserted] = indexOfId.emplace(sheet.id, unique.size());
        if (inserted)
            unique.push_back(sheet);
        else if (sheet.updatedAt > unique[entry->second].updatedAt)
            unique[entry->second] = sheet;
    }
    return unique;
}

} // namespace

LumoDocument LumoDocument::merged(const LumoDocument& other, Timestamp now) const {
    LumoDocument result;
    result.selectedSheetID = selectedSheetID;
    result.deletedSheets = unitedTombstones(deletedSheets, other.deletedSheets);

    std::unordered_map<Uuid, Sheet> newest;
    for (const auto* copy : {&sheets, &other.sheets}) {
        for (const Sheet& sheet : *copy) {
            const auto [entry, inserted] = newest.emplace(sheet.id, sheet);
            if (!inserted && sheet.updatedAt > entry->second.updatedAt)
                entry->second = sheet;
        }
    }

    // std::optional orders an absent date before every present one: the distant past.
    const bool otherOrderIsNewer = other.sheetOrderUpdatedAt > sheetOrderUpdatedAt;
    const auto order =
        otherOrderIsNewer ? mergedOrder(other.sheets, sheets) : mergedOrder(sheets, other.sheets);
    for (const Uuid& id : order) {
        const Sheet& sheet = newest.at(id);
        if (!isDeleted(sheet, result.deletedSheets))
            result.sheets.push_back(sheet);
    }
    result.sheetOrderUpdatedAt = std::max(sheetOrderUpdatedAt, other.sheetOrderUpdatedAt);

    const bool otherLayoutsAreNewer = other.keyLayoutsUpdatedAt > keyLayoutsUpdatedAt;
    result.keyLayouts = otherLayoutsAreNewer ? other.keyLayouts : keyLayouts;
    result.keyLayoutsUpdatedAt = otherLayoutsAreNewer ? other.keyLayoutsUpdatedAt : keyLayoutsUpdatedAt;

    const Timestamp cutoff{now.seconds - tombstoneLifetimeSeconds};
    std::erase_if(result.deletedSheets, [&](const auto& entry) { return entry.second <= cutoff; });

    if (result.sheets.empty()) {
        result.sheets.push_back(replacementSheet(now));
        result.selectedSheetID = result.sheets.front().id;
    }
    return result;
}

LumoDocument LumoDocument::normalized(Timestamp now) const {
    LumoDocument result = *this;
    const std::vector<Sheet> unique = withUniqueIdentifiers(sheets);

    // The earliest copy is the one every device is most likely to have kept as well.
    std::unordered_map<std::string, std::size_t> keeperOfKey;
    for (std::size_t i = 0; i < unique.size(); ++i) {
        const auto [entry, inserted] = keeperOfKey.emplace(contentKey(unique[i]), i);
        // Equal dates fall to the smaller identifier, not the document order, so that devices
        // whose orders differ keep the same sheet.
        const Sheet& keeper = unique[entry->second];
        if (!inserted && std::tie(unique[i].updatedAt, unique[i].id) < std::tie(keeper.updatedAt, keeper.id))
            entry->second = i;
    }

    result.sheets.clear();
    for (std::size_t i = 0; i < unique.size(); ++i) {
        if (keeperOfKey.at(contentKey(unique[i])) == i)
            result.sheets.push_back(unique[i]);
        else
            recordTombstone(result.deletedSheets, unique[i].id.toString(), now);
    }

    const bool selectionExists =
        selectedSheetID && std::any_of(result.sheets.begin(), result.sheets.end(),
                                       [&](const Sheet& sheet) { return sheet.id == *selectedSheetID; });
    if (!selectionExists)
        result.selectedSheetID =
            result.sheets.empty() ? std::nullopt : std::optional<Uuid>(result.sheets.front().id);
    return result;
}

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

[[noreturn]] void failDecoding(const std::string& japaneseDetail, const std::string& englishDetail) {
    throw DocumentDecodeError(L10n::pick("文書ファイルを読み込めません: " + japaneseDetail,
                                         "The document file can’t be read: " + englishDetail));
}

[[noreturn]] void failWrongType(const std::string& path, const std::string& japaneseKind,
                                const std::string& englishKind) {
    failDecoding("「" + path + "」は" + japaneseKind + "でなければなりません",
                 "“" + path + "” must be " + englishKind);
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
                failDecoding("入れ子が " + std::to_string(maximumNestingDepth) + " 段を超えています",
                             "it is nested more than " + std::to_string(maximumNestingDepth) +
                                 " levels deep");
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
}

json parseJson(std::string_view bytes) {
    rejectDeepNesting(bytes);
    json value = json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (value.is_discarded())
        failDecoding("正しい UTF-8 の JSON ではありません", "it is not valid JSON in UTF-8");
    return value;
}

const json& requireObject(const json& value, const std::string& path) {
    if (!value.is_object())
        failWrongType(path, "オブジェクト", "an object");
    return value;
}

const json& requireKey(const json& object, const std::string& key, const std::string& path) {
    const auto entry = object.find(key);
    if (entry == object.end())
        failDecoding("「" + path + "」がありません", "“" + path + "” is missing");
    return *entry;
}

std::string readString(const json& value, const std::string& path) {
    if (!value.is_string())
        failWrongType(path, "文字列", "a string");
    return value.get<std::string>();
}

Timestamp readDate(const json& value, const std::string& path) {
    const auto date = value.is_string() ? parseIso8601(value.get_ref<const std::string&>()) : std::nullopt;
    if (!date)
        failWrongType(path, "2025-01-31T09:15:00Z の形の日付", "a date like 2025-01-31T09:15:00Z");
    return *date;
}

Uuid readUuid(const json& value, const std::string& path) {
    const auto uuid =
        value.is_string() ? Uuid::fromString(value.get_ref<const std::string&>()) : std::nullopt;
    if (!uuid)
        failWrongType(path, "UUID", "a UUID");
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
    failWrongType(path, "整数", "an integer");
}

const json& requireArray(const json& value, const std::string& path) {
    if (!value.is_array())
        failWrongType(path, "配列", "an array");
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

std::size_t std::hash<lumo::Uuid>::operator()(const lumo::Uuid& uuid) const noexcept {
    // Random identifiers are already well mixed; fold the two halves together.
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        high = (high << 8) | uuid.bytes()[i];
        low = (low << 8) | uuid.bytes()[i + 8];
    }
    return static_cast<std::size_t>(high ^ (low * 0x9E3779B97F4A7C15ULL));
}
