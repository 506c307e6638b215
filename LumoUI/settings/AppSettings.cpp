#include "LumoUI/settings/AppSettings.h"

#include <QLocale>
#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>
#include <utility>

#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/ValueFormatter.h"
#include "LumoUI/settings/NotificationCenter.h"

namespace lumo {

namespace {

namespace keys {
constexpr auto appearance = "lumo.appearance";
constexpr auto keypadSize = "lumo.keypadSize";
constexpr auto textSize = "lumo.textSize";
constexpr auto resultColumnWidth = "lumo.resultColumnWidth";
constexpr auto maxFractionDigits = "lumo.maxFractionDigits";
constexpr auto angle = "lumo.angle";
constexpr auto sheetListStyle = "lumo.sheetListStyle";
constexpr auto showsNamedValues = "lumo.showsNamedValues";
constexpr auto syntaxColors = "lumo.syntaxColors";
constexpr auto keypadSide = "lumo.keypadSide";
constexpr auto groupsDigits = "lumo.groupsDigits";
constexpr auto hapticFeedback = "lumo.hapticFeedback";
constexpr auto language = "lumo.language";
constexpr auto acceptedTermsVersion = "lumo.acceptedTermsVersion";
constexpr auto cloudFolder = "lumo.cloudFolder";
constexpr auto keyLayoutPrefix = "lumo.keyLayout.";
constexpr auto keyLayoutUpdatedAt = "lumo.keyLayout.updatedAt";
} // namespace keys

template <typename Enum, std::size_t N> using RawTable = std::array<std::pair<Enum, const char*>, N>;

constexpr RawTable<AppearanceSetting, 3> appearanceRaw{{{AppearanceSetting::automatic, "auto"},
                                                        {AppearanceSetting::light, "light"},
                                                        {AppearanceSetting::dark, "dark"}}};
constexpr RawTable<KeypadSizeSetting, 3> keypadSizeRaw{{{KeypadSizeSetting::small, "small"},
                                                        {KeypadSizeSetting::medium, "medium"},
                                                        {KeypadSizeSetting::large, "large"}}};
constexpr RawTable<TextSizeSetting, 4> textSizeRaw{{{TextSizeSetting::small, "small"},
                                                    {TextSizeSetting::standard, "standard"},
                                                    {TextSizeSetting::large, "large"},
                                                    {TextSizeSetting::xlarge, "xlarge"}}};
constexpr RawTable<SheetListStyle, 3> sheetListStyleRaw{
    {{SheetListStyle::both, "both"}, {SheetListStyle::tabs, "tabs"}, {SheetListStyle::sidebar, "sidebar"}}};
constexpr RawTable<KeypadSide, 2> keypadSideRaw{{{KeypadSide::right, "right"}, {KeypadSide::left, "left"}}};
constexpr RawTable<AngleSetting, 2> angleRaw{
    {{AngleSetting::degrees, "degrees"}, {AngleSetting::radians, "radians"}}};

template <typename Enum, std::size_t N> QString rawOf(const RawTable<Enum, N>& table, Enum value) {
    for (const auto& [candidate, raw] : table) {
        if (candidate == value)
            return QString::fromLatin1(raw);
    }
    return {};
}

bool isText(const QVariant& value) {
    return value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QByteArray;
}

bool isNumber(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

// Enumerations: the case whose raw value matches exactly (case-sensitive), else `fallback`.
template <typename Enum, std::size_t N>
Enum decodeEnum(const QVariant& stored, const RawTable<Enum, N>& table, Enum fallback) {
    if (!isText(stored))
        return fallback;
    const QString text = stored.toString();
    for (const auto& [candidate, raw] : table) {
        if (text == QLatin1String(raw))
            return candidate;
    }
    return fallback;
}

// INI files hand every scalar back as text, so a number written as text counts as a number.
std::optional<double> decodeDouble(const QVariant& stored) {
    bool ok = false;
    double value = 0;
    if (isNumber(stored))
        value = stored.toDouble(&ok);
    else if (isText(stored))
        value = stored.toString().trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<int> decodeInt(const QVariant& stored) {
    bool ok = false;
    int value = 0;
    if (stored.typeId() == QMetaType::Double || stored.typeId() == QMetaType::Float) {
        const double number = stored.toDouble();
        if (number != std::trunc(number))
            return std::nullopt;
        value = stored.toInt(&ok);
    } else if (isNumber(stored)) {
        value = stored.toInt(&ok);
    } else if (isText(stored)) {
        value = stored.toString().trimmed().toInt(&ok, 10);
    }
    if (!ok)
        return std::nullopt;
    return value;
}

bool decodeBool(const QVariant& stored, bool fallback) {
    if (stored.typeId() == QMetaType::Bool)
        return stored.toBool();
    if (isText(stored)) {
        const QString text = stored.toString();
        if (text == QLatin1String("true"))
            return true;
        if (text == QLatin1String("false"))
            return false;
    }
    return fallback;
}

QMap<QString, QString> decodeColors(const QVariant& stored) {
    QMap<QString, QString> colors;
    if (stored.typeId() != QMetaType::QVariantMap)
        return colors;
    const QVariantMap map = stored.toMap();
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        // One entry that is not text makes the whole dictionary unreadable.
        if (!isText(it.value()))
            return {};
        colors.insert(it.key(), it.value().toString());
    }
    return colors;
}

double clampWidth(double width) {
    return std::clamp(width, AppSettings::minResultColumnWidth, AppSettings::maxResultColumnWidth);
}

std::vector<std::string> qtPreferredLanguages() {
    std::vector<std::string> languages;
    for (const QString& tag : QLocale::system().uiLanguages())
        languages.push_back(tag.toStdString());
    return languages;
}

QString keyLayoutKey(const std::string& kind) {
    return QString::fromLatin1(keys::keyLayoutPrefix) + QString::fromStdString(kind);
}

} // namespace

QString rawValue(AppearanceSetting value) {
    return rawOf(appearanceRaw, value);
}
QString rawValue(KeypadSizeSetting value) {
    return rawOf(keypadSizeRaw, value);
}
QString rawValue(TextSizeSetting value) {
    return rawOf(textSizeRaw, value);
}
QString rawValue(SheetListStyle value) {
    return rawOf(sheetListStyleRaw, value);
}
QString rawValue(KeypadSide value) {
    return rawOf(keypadSideRaw, value);
}
QString rawValue(AngleSetting value) {
    return rawOf(angleRaw, value);
}

AppSettings::AppSettings(QSettings& store, NotificationCenter* notifications, QObject* parent)
    : QObject(parent), m_store(store), m_notifications(notifications) {
    L10n::setPreferredLanguagesProvider(qtPreferredLanguages);
    load();
    pushIntoEngine();
}

void AppSettings::load() {
    m_appearance = decodeEnum(m_store.value(keys::appearance), appearanceRaw, AppearanceSetting::dark);
    // Only the exact raw values count; "Dark" and other spellings fall back to the defaults.
    m_keypadSize = decodeEnum(m_store.value(keys::keypadSize), keypadSizeRaw, KeypadSizeSetting::large);
    m_textSize = decodeEnum(m_store.value(keys::textSize), textSizeRaw, TextSizeSetting::standard);
    m_resultColumnWidth =
        clampWidth(decodeDouble(m_store.value(keys::resultColumnWidth)).value_or(defaultResultColumnWidth));
    m_maxFractionDigits =
        decodeInt(m_store.value(keys::maxFractionDigits)).value_or(defaultMaxFractionDigits);
    m_angle = decodeEnum(m_store.value(keys::angle), angleRaw, AngleSetting::radians);
    m_sheetListStyle =
        decodeEnum(m_store.value(keys::sheetListStyle), sheetListStyleRaw, SheetListStyle::both);
    m_showsNamedValues = decodeBool(m_store.value(keys::showsNamedValues), true);
    m_syntaxColors = decodeColors(m_store.value(keys::syntaxColors));
    m_keypadSide = decodeEnum(m_store.value(keys::keypadSide), keypadSideRaw, KeypadSide::right);
    m_groupsDigits = decodeBool(m_store.value(keys::groupsDigits), true);
    m_hapticFeedback = decodeBool(m_store.value(keys::hapticFeedback), true);
    const QVariant language = m_store.value(keys::language);
    m_language = isText(language)
                     ? appLanguageFromRaw(language.toString().toStdString()).value_or(AppLanguage::system)
                     : AppLanguage::system;
    m_acceptedTermsVersion = decodeInt(m_store.value(keys::acceptedTermsVersion)).value_or(0);
    const QVariant cloudFolder = m_store.value(keys::cloudFolder);
    m_cloudFolder = isText(cloudFolder) ? cloudFolder.toString() : QString();
}

void AppSettings::pushIntoEngine() const {
    ValueFormatter::setMaxFractionDigits(m_maxFractionDigits);
    AngleMode::setDegrees(m_angle == AngleSetting::degrees);
    L10n::setCurrent(m_language);
}

void AppSettings::post(const char* name) {
    if (m_notifications)
        m_notifications->post(QString::fromLatin1(name));
}

// Every setter goes through here: keep the value, write its stored form, then tell the
// listeners in order (the object's own signal first, then the notification).
template <typename Value, typename Signal>
void AppSettings::write(Value& field, Value value, const char* key, const QVariant& stored, Signal changed,
                        const char* notification) {
    field = std::move(value);
    m_store.setValue(QLatin1String(key), stored);
    if constexpr (std::is_invocable_v<Signal, AppSettings*>)
        emit(this->*changed)();
    else if constexpr (std::is_invocable_v<Signal, AppSettings*, Value>)
        emit(this->*changed)(field);
    else
        static_assert(std::is_null_pointer_v<Signal>, "a setter's signal takes the new value or nothing");
    if (notification)
        post(notification);
}

void AppSettings::setAppearance(AppearanceSetting value) {
    write(m_appearance, value, keys::appearance, rawValue(value), &AppSettings::appearanceChanged);
}

void AppSettings::setKeypadSize(KeypadSizeSetting value) {
    write(m_keypadSize, value, keys::keypadSize, rawValue(value), &AppSettings::keypadSizeChanged,
          notification::keypadSizeChanged);
}

void AppSettings::setTextSize(TextSizeSetting value) {
    write(m_textSize, value, keys::textSize, rawValue(value), &AppSettings::textSizeChanged);
}

void AppSettings::setResultColumnWidth(double width) {
    const double clamped = clampWidth(std::isfinite(width) ? width : defaultResultColumnWidth);
    write(m_resultColumnWidth, clamped, keys::resultColumnWidth, clamped, noSignal,
          notification::resultWidthChanged);
}

void AppSettings::setMaxFractionDigits(int digits) {
    ValueFormatter::setMaxFractionDigits(digits);
    write(m_maxFractionDigits, digits, keys::maxFractionDigits, digits,
          &AppSettings::maxFractionDigitsChanged);
}

void AppSettings::setAngle(AngleSetting value) {
    AngleMode::setDegrees(value == AngleSetting::degrees);
    write(m_angle, value, keys::angle, rawValue(value), &AppSettings::angleChanged);
}

void AppSettings::setSheetListStyle(SheetListStyle value) {
    write(m_sheetListStyle, value, keys::sheetListStyle, rawValue(value),
          &AppSettings::sheetListStyleChanged);
}

void AppSettings::setShowsNamedValues(bool shows) {
    write(m_showsNamedValues, shows, keys::showsNamedValues, shows, &AppSettings::showsNamedValuesChanged);
}

void AppSettings::setSyntaxColors(const QMap<QString, QString>& colors) {
    QVariantMap stored;
    for (auto it = colors.cbegin(); it != colors.cend(); ++it)
        stored.insert(it.key(), it.value());
    write(m_syntaxColors, colors, keys::syntaxColors, stored, &AppSettings::syntaxColorsChanged,
          notification::syntaxColorsChanged);
}

void AppSettings::setKeypadSide(KeypadSide value) {
    write(m_keypadSide, value, keys::keypadSide, rawValue(value), &AppSettings::keypadSideChanged);
}

void AppSettings::setGroupsDigits(bool groups) {
    write(m_groupsDigits, groups, keys::groupsDigits, groups, &AppSettings::groupsDigitsChanged);
}

void AppSettings::setHapticFeedback(bool enabled) {
    write(m_hapticFeedback, enabled, keys::hapticFeedback, enabled, &AppSettings::hapticFeedbackChanged);
}

void AppSettings::setLanguage(AppLanguage language) {
    L10n::setCurrent(language);
    write(m_language, language, keys::language, QString::fromStdString(std::string(lumo::rawValue(language))),
          &AppSettings::languageChanged, notification::languageChanged);
}

void AppSettings::acceptTerms() {
    write(m_acceptedTermsVersion, int(currentTermsVersion), keys::acceptedTermsVersion, currentTermsVersion,
          &AppSettings::acceptedTermsVersionChanged);
}

void AppSettings::setCloudFolder(const QString& folder) {
    write(m_cloudFolder, folder, keys::cloudFolder, folder, &AppSettings::cloudFolderChanged);
}

KeyLayouts AppSettings::keyLayouts() const {
    KeyLayouts layouts;
    const QString prefix = QString::fromLatin1(keys::keyLayoutPrefix);
    for (const QString& key : m_store.allKeys()) {
        if (!key.startsWith(prefix) || key == QLatin1String(keys::keyLayoutUpdatedAt))
            continue;
        const QVariant stored = m_store.value(key);
        if (stored.typeId() != QMetaType::QVariantMap)
            continue;
        auto& panels = layouts[key.mid(prefix.size()).toStdString()];
        const QVariantMap map = stored.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            std::vector<std::string> keys;
            for (const QString& identifier : it.value().toStringList())
                keys.push_back(identifier.toStdString());
            panels[it.key().toStdString()] = std::move(keys);
        }
    }
    return layouts;
}

std::optional<Timestamp> AppSettings::keyLayoutsUpdatedAt() const {
    const std::optional<double> seconds = decodeDouble(m_store.value(keys::keyLayoutUpdatedAt));
    if (!seconds)
        return std::nullopt;
    return Timestamp::fromSeconds(*seconds);
}

void AppSettings::setKeyLayouts(const KeyLayouts& layouts, std::optional<Timestamp> updatedAt) {
    const QString prefix = QString::fromLatin1(keys::keyLayoutPrefix);
    for (const QString& key : m_store.allKeys()) {
        if (key.startsWith(prefix))
            m_store.remove(key);
    }
    for (const auto& [kind, panels] : layouts) {
        QVariantMap stored;
        for (const auto& [panel, keys] : panels) {
            QStringList identifiers;
            for (const std::string& identifier : keys)
                identifiers.append(QString::fromStdString(identifier));
            stored.insert(QString::fromStdString(panel), identifiers);
        }
        m_store.setValue(keyLayoutKey(kind), stored);
    }
    if (updatedAt)
        m_store.setValue(keys::keyLayoutUpdatedAt, updatedAt->seconds);
}

QVariant AppSettings::viewPreference(const QString& key, const QVariant& fallback) const {
    return m_store.value(key, fallback);
}

void AppSettings::setViewPreference(const QString& key, const QVariant& value) {
    const bool changed = m_store.value(key) != value;
    m_store.setValue(key, value);
    if (changed)
        emit viewPreferenceChanged(key, value);
}

} // namespace lumo
