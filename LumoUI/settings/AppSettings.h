#pragma once

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <cstddef>
#include <optional>

#include "LumoKit/base/Language.h"
#include "LumoKit/document/Document.h"

class QSettings;

namespace lumo {

class NotificationCenter;

// Each enumeration is stored as its raw string; the raw value is the case name except for
// AppearanceSetting::automatic, whose raw value is "auto" (a C++ keyword).
enum class AppearanceSetting { automatic, light, dark };
enum class KeypadSizeSetting { small, medium, large };
enum class TextSizeSetting { small, standard, large, xlarge };
enum class SheetListStyle { both, tabs, sidebar };
enum class KeypadSide { right, left };
enum class AngleSetting { degrees, radians };

QString rawValue(AppearanceSetting value);
QString rawValue(KeypadSizeSetting value);
QString rawValue(TextSizeSetting value);
QString rawValue(SheetListStyle value);
QString rawValue(KeypadSide value);
QString rawValue(AngleSetting value);

/// The user's preferences, kept in a QSettings store under keys beginning with "lumo.".
/// This is the one class that touches QSettings.
///
/// Every key is read once at construction. A missing key, a value of the wrong type or an
/// unknown raw value decodes to the field's default; numbers and booleans given as text
/// ("10", "true", as INI files store them) are read as what the text says. Creating the object
/// and each relevant setter push the fraction digits, the angle mode and the language into the
/// engine's process-wide state.
class AppSettings : public QObject {
    Q_OBJECT

public:
    static constexpr double minResultColumnWidth = 84;
    static constexpr double maxResultColumnWidth = 560;
    static constexpr double defaultResultColumnWidth = 180;
    static constexpr int defaultMaxFractionDigits = 10;
    /// The version of the terms of use that acceptTerms() records.
    static constexpr int currentTermsVersion = 1;

    /// Reads the store, which the caller owns and keeps alive. `notifications` may be null, in
    /// which case nothing is posted. Also hands Qt's preferred UI languages to the engine.
    AppSettings(QSettings& store, NotificationCenter* notifications, QObject* parent = nullptr);

    AppearanceSetting appearance() const { return m_appearance; }
    KeypadSizeSetting keypadSize() const { return m_keypadSize; }
    TextSizeSetting textSize() const { return m_textSize; }
    double resultColumnWidth() const { return m_resultColumnWidth; }
    int maxFractionDigits() const { return m_maxFractionDigits; }
    AngleSetting angle() const { return m_angle; }
    SheetListStyle sheetListStyle() const { return m_sheetListStyle; }
    bool showsNamedValues() const { return m_showsNamedValues; }
    /// Syntax-kind key ("number.dark") → hex colour text; an absent entry means the theme's colour.
    const QMap<QString, QString>& syntaxColors() const { return m_syntaxColors; }
    KeypadSide keypadSide() const { return m_keypadSide; }
    bool groupsDigits() const { return m_groupsDigits; }
    bool hapticFeedback() const { return m_hapticFeedback; }
    AppLanguage language() const { return m_language; }
    int acceptedTermsVersion() const { return m_acceptedTermsVersion; }
    /// The folder that the user's sync client keeps in step across devices ("lumo.cloudFolder");
    /// empty when syncing is off.
    QString cloudFolder() const { return m_cloudFolder; }
    bool hasAcceptedTerms() const { return m_acceptedTermsVersion >= currentTermsVersion; }

    void setAppearance(AppearanceSetting value);
    /// Also posts "lumo.keypadSizeChanged".
    void setKeypadSize(KeypadSizeSetting value);
    void setTextSize(TextSizeSetting value);
    /// Clamps to [84, 560] and posts "lumo.resultWidthChanged".
    void setResultColumnWidth(double width);
    /// Also updates the answer formatter's process-wide maximum.
    void setMaxFractionDigits(int digits);
    /// Also updates the evaluator's degrees flag.
    void setAngle(AngleSetting value);
    void setSheetListStyle(SheetListStyle value);
    void setShowsNamedValues(bool shows);
    /// Also posts "lumo.syntaxColorsChanged".
    void setSyntaxColors(const QMap<QString, QString>& colors);
    void setKeypadSide(KeypadSide value);
    void setGroupsDigits(bool groups);
    void setHapticFeedback(bool enabled);
    /// Writes the key, switches the engine's language, then posts "lumo.languageChanged".
    void setLanguage(AppLanguage language);
    /// Records that the current terms of use were accepted.
    void acceptTerms();
    /// Takes effect for the document store created next.
    void setCloudFolder(const QString& folder);

    /// The keypad layouts kept under "lumo.keyLayout.<kind>" (each a map from panel to key
    /// identifiers) and their change time under "lumo.keyLayout.updatedAt" (seconds since
    /// 1970, a double). The keypad writes them and posts "lumo.keyLayoutChanged"; the document
    /// store reads them into the document and writes back layouts that arrive from elsewhere.
    KeyLayouts keyLayouts() const;
    std::optional<Timestamp> keyLayoutsUpdatedAt() const;
    /// Replaces every "lumo.keyLayout.<kind>" key and the change time. Posts nothing.
    void setKeyLayouts(const KeyLayouts& layouts, std::optional<Timestamp> updatedAt);

    /// Preferences that views keep for themselves in the same store ("lumo.showKeypad",
    /// "lumo.showGraph", "lumo.keypadPanel"); the view supplies the default.
    QVariant viewPreference(const QString& key, const QVariant& fallback) const;
    void setViewPreference(const QString& key, const QVariant& value);

signals:
    void appearanceChanged(lumo::AppearanceSetting value);
    void keypadSizeChanged(lumo::KeypadSizeSetting value);
    void textSizeChanged(lumo::TextSizeSetting value);
    void maxFractionDigitsChanged(int digits);
    void angleChanged(lumo::AngleSetting value);
    void sheetListStyleChanged(lumo::SheetListStyle value);
    void showsNamedValuesChanged(bool shows);
    void syntaxColorsChanged();
    void keypadSideChanged(lumo::KeypadSide value);
    void groupsDigitsChanged(bool groups);
    void hapticFeedbackChanged(bool enabled);
    void languageChanged(lumo::AppLanguage language);
    void acceptedTermsVersionChanged(int version);
    void cloudFolderChanged(const QString& folder);
    /// setViewPreference() stored a different value, so every view of that preference follows.
    void viewPreferenceChanged(const QString& key, const QVariant& value);

private:
    void load();
    void pushIntoEngine() const;
    void post(const char* name);
    static constexpr std::nullptr_t noSignal = nullptr;
    template <typename Value, typename Signal>
    void write(Value& field, Value value, const char* key, const QVariant& stored, Signal changed,
               const char* notification = nullptr);

    QSettings& m_store;
    QPointer<NotificationCenter> m_notifications;

    AppearanceSetting m_appearance = AppearanceSetting::dark;
    KeypadSizeSetting m_keypadSize = KeypadSizeSetting::large;
    TextSizeSetting m_textSize = TextSizeSetting::standard;
    double m_resultColumnWidth = defaultResultColumnWidth;
    int m_maxFractionDigits = defaultMaxFractionDigits;
    AngleSetting m_angle = AngleSetting::radians;
    SheetListStyle m_sheetListStyle = SheetListStyle::both;
    bool m_showsNamedValues = true;
    QMap<QString, QString> m_syntaxColors;
    KeypadSide m_keypadSide = KeypadSide::right;
    bool m_groupsDigits = true;
    bool m_hapticFeedback = true;
    AppLanguage m_language = AppLanguage::system;
    int m_acceptedTermsVersion = 0;
    QString m_cloudFolder;
};

} // namespace lumo
