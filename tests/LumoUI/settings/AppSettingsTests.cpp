#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>

#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/ValueFormatter.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"

using namespace lumo;

namespace {

class IniStore {
public:
    IniStore() : m_path(m_dir.filePath("settings.ini")) {}

    // Writes the INI text as a sync client or an older version could have left it, so every
    // value arrives the way the INI backend hands it back (mostly as text).
    void writeRaw(const QByteArray& lines) {
        QFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[General]\n" + lines + "\n");
    }

    std::unique_ptr<QSettings> open() const {
        return std::make_unique<QSettings>(m_path, QSettings::IniFormat);
    }

private:
    QTemporaryDir m_dir;
    QString m_path;
};

using Reader = QString (*)(const AppSettings&);
const Reader appearance = [](const AppSettings& s) { return rawValue(s.appearance()); };
const Reader keypadSize = [](const AppSettings& s) { return rawValue(s.keypadSize()); };
const Reader textSize = [](const AppSettings& s) { return rawValue(s.textSize()); };
const Reader width = [](const AppSettings& s) { return QString::number(s.resultColumnWidth()); };
const Reader digits = [](const AppSettings& s) { return QString::number(s.maxFractionDigits()); };
const Reader angle = [](const AppSettings& s) { return rawValue(s.angle()); };
const Reader listStyle = [](const AppSettings& s) { return rawValue(s.sheetListStyle()); };
const Reader side = [](const AppSettings& s) { return rawValue(s.keypadSide()); };
const Reader flags = [](const AppSettings& s) {
    return QString("%1%2%3")
        .arg(int(s.showsNamedValues()))
        .arg(int(s.groupsDigits()))
        .arg(int(s.hapticFeedback()));
};
const Reader language = [](const AppSettings& s) {
    return QString::fromLatin1(rawValue(s.language()).data());
};
const Reader terms = [](const AppSettings& s) { return QString::number(s.acceptedTermsVersion()); };
const Reader colorCount = [](const AppSettings& s) { return QString::number(s.syntaxColors().size()); };

struct DecodingCase {
    QByteArray line; // empty: the key is missing
    Reader read;
    QString expected;
};

} // namespace

TEST(AppSettings, DecodesEveryKeyWithItsDefaults) {
    const DecodingCase cases[] = {
        {"", appearance, "dark"},
        {"lumo.appearance=auto", appearance, "auto"},
        {"lumo.appearance=Light", appearance, "dark"},
        {"", keypadSize, "large"},
        {"lumo.keypadSize=small", keypadSize, "small"},
        {"lumo.keypadSize=huge", keypadSize, "large"},
        {"", textSize, "standard"},
        {"lumo.textSize=xlarge", textSize, "xlarge"},
        {"lumo.textSize=tiny", textSize, "standard"},
        {"", width, "180"},
        {"lumo.resultColumnWidth=50", width, "84"},
        {"lumo.resultColumnWidth=84.5", width, "84.5"},
        {"lumo.resultColumnWidth=600", width, "560"},
        {"lumo.resultColumnWidth=wide", width, "180"},
        {"", digits, "10"},
        {"lumo.maxFractionDigits=4", digits, "4"},
        {"lumo.maxFractionDigits=4.5", digits, "10"},
        {"lumo.maxFractionDigits=many", digits, "10"},
        {"", angle, "radians"},
        {"lumo.angle=degrees", angle, "degrees"},
        {"lumo.angle=Degrees", angle, "radians"},
        {"", listStyle, "both"},
        {"lumo.sheetListStyle=tabs", listStyle, "tabs"},
        {"lumo.sheetListStyle=list", listStyle, "both"},
        {"", flags, "111"},
        {"lumo.showsNamedValues=false\nlumo.groupsDigits=false\nlumo.hapticFeedback=false", flags, "000"},
        {"lumo.showsNamedValues=no", flags, "111"},
        {"", side, "right"},
        {"lumo.keypadSide=left", side, "left"},
        {"lumo.keypadSide=LEFT", side, "right"},
        {"", language, "system"},
        {"lumo.language=japanese", language, "japanese"},
        {"lumo.language=French", language, "system"},
        {"", terms, "0"},
        {"lumo.acceptedTermsVersion=1", terms, "1"},
        {"lumo.syntaxColors=#FF0000", colorCount, "0"},
    };
    for (const DecodingCase& c : cases) {
        IniStore ini;
        ini.writeRaw(c.line);
        auto store = ini.open();
        AppSettings settings(*store, nullptr);
        EXPECT_EQ(c.read(settings), c.expected) << c.line.constData();
    }
}

TEST(AppSettings, WrittenValuesReadBackTheSame) {
    IniStore ini;
    {
        auto store = ini.open();
        AppSettings settings(*store, nullptr);
        settings.setAppearance(AppearanceSetting::automatic);
        settings.setResultColumnWidth(1000);
        settings.setSyntaxColors({{"number.dark", "#FFAA00"}, {"quoted.light", "#112233"}});
    }
    auto store = ini.open();
    AppSettings settings(*store, nullptr);
    EXPECT_EQ(store->value("lumo.appearance").toString(), "auto");
    EXPECT_EQ(settings.resultColumnWidth(), 560);
    EXPECT_EQ(settings.syntaxColors(),
              (QMap<QString, QString>{{"number.dark", "#FFAA00"}, {"quoted.light", "#112233"}}));
}

TEST(AppSettings, PushesIntoTheEngineAtCreationAndOnChange) {
    IniStore ini;
    ini.writeRaw("lumo.maxFractionDigits=3\nlumo.angle=degrees\nlumo.language=japanese");
    auto store = ini.open();
    AppSettings settings(*store, nullptr);
    EXPECT_EQ(ValueFormatter::maxFractionDigits(), 3);
    EXPECT_TRUE(AngleMode::degrees());
    EXPECT_EQ(L10n::current(), AppLanguage::japanese);

    settings.setMaxFractionDigits(6);
    settings.setAngle(AngleSetting::radians);
    settings.setLanguage(AppLanguage::english);
    EXPECT_EQ(ValueFormatter::maxFractionDigits(), 6);
    EXPECT_FALSE(AngleMode::degrees());
    EXPECT_EQ(L10n::current(), AppLanguage::english);
    EXPECT_EQ(ini.open()->value("lumo.language").toString(), "english");

    settings.setLanguage(AppLanguage::system);
    settings.setMaxFractionDigits(AppSettings::defaultMaxFractionDigits);
}

TEST(AppSettings, PostsItsNotifications) {
    IniStore ini;
    auto store = ini.open();
    NotificationCenter center;
    AppSettings settings(*store, &center);
    QStringList posted;
    for (const char* name : {notification::languageChanged, notification::keypadSizeChanged,
                             notification::resultWidthChanged, notification::syntaxColorsChanged}) {
        center.observe(name, &center, [&posted, name] { posted.append(name); });
    }
    // Settings without a notification of their own post nothing.
    settings.setAppearance(AppearanceSetting::light);
    settings.setTextSize(TextSizeSetting::small);
    EXPECT_TRUE(posted.isEmpty());

    // The language notification arrives after the engine already speaks the new language.
    std::optional<AppLanguage> languageWhenPosted;
    center.observe(notification::languageChanged, &center, [&] { languageWhenPosted = L10n::current(); });
    settings.setLanguage(AppLanguage::japanese);
    settings.setKeypadSize(KeypadSizeSetting::small);
    settings.setResultColumnWidth(200);
    settings.setSyntaxColors({{"number.light", "#000000"}});
    EXPECT_EQ(posted, QStringList({"lumo.languageChanged", "lumo.keypadSizeChanged",
                                   "lumo.resultWidthChanged", "lumo.syntaxColorsChanged"}));
    EXPECT_EQ(languageWhenPosted, AppLanguage::japanese);
    settings.setLanguage(AppLanguage::system);
}

TEST(AppSettings, KeyLayoutsRoundTripThroughTheirKeys) {
    IniStore ini;
    auto store = ini.open();
    AppSettings settings(*store, nullptr);
    EXPECT_TRUE(settings.keyLayouts().empty());
    EXPECT_FALSE(settings.keyLayoutsUpdatedAt());

    const KeyLayouts layouts{{"functions", {{"main", {"sqrt", "sin"}}}},
                             {"units", {{"length", {"mm", "m"}}}}};
    settings.setKeyLayouts(layouts, Timestamp::fromSeconds(1700000000));
    auto reopened = ini.open();
    EXPECT_TRUE(reopened->contains("lumo.keyLayout.functions"));
    AppSettings again(*reopened, nullptr);
    EXPECT_EQ(again.keyLayouts(), layouts);
    EXPECT_EQ(again.keyLayoutsUpdatedAt(), Timestamp::fromSeconds(1700000000));

    // Replacing drops kinds that are no longer present.
    again.setKeyLayouts({{"units", {{"length", {"m"}}}}}, Timestamp::fromSeconds(1700000100));
    EXPECT_EQ(again.keyLayouts().size(), 1u);
}
