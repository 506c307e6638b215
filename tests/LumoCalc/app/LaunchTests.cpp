#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QImage>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include "LumoCalc/app/LaunchOptions.h"

namespace lumo {
namespace {

TEST(LaunchOptions, ReadsTheCommandLine) {
    using Action = LaunchOptions::Action;
    struct Case {
        QStringList arguments;
        Action action;
        QString screenshot;
        std::optional<AppearanceSetting> appearance = std::nullopt;
    };
    const Case cases[] = {
        {{}, Action::run, {}},
        {{"-lumoFixture"}, Action::run, {}},
        {{"-platform", "offscreen", "-lumoStarter"}, Action::run, {}},
        {{"--help"}, Action::help, {}},
        {{"-lumoFixture", "-h"}, Action::help, {}},
        {{"--version"}, Action::version, {}},
        {{"-lumoFixture", "--screenshot", "out.png"}, Action::run, "out.png"},
        {{"--screenshot=shot.png"}, Action::run, "shot.png"},
        {{"--screenshot"}, Action::fail, {}},
        {{"--screenshot="}, Action::fail, {}},
        {{"--frobnicate"}, Action::fail, {}},
        {{"--screenshot", "a.png", "--appearance", "light"}, Action::run, "a.png", AppearanceSetting::light},
        {{"--appearance=dark", "--screenshot=b.png"}, Action::run, "b.png", AppearanceSetting::dark},
        {{"--screenshot", "c.png", "--appearance=auto"}, Action::run, "c.png", AppearanceSetting::automatic},
        {{"--screenshot", "d.png", "--appearance", "Dark"}, Action::fail, {}},
        {{"--screenshot", "e.png", "--appearance"}, Action::fail, {}},
        {{"--appearance", "light"}, Action::fail, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const LaunchOptions options = LaunchOptions::parse(QStringList{"lumo-calc"} + c.arguments);
        EXPECT_EQ(options.action, c.action);
        if (c.action != Action::fail) {
            EXPECT_EQ(options.screenshotFile, c.screenshot);
            EXPECT_EQ(options.appearance, c.appearance);
        }
        EXPECT_EQ(options.error.isEmpty(), c.action != Action::fail);
    }
}

struct ProcessRun {
    int exitCode = -1;
    QString output;
};

ProcessRun runLumoCalc(const QStringList& arguments) {
    // QProcess wants an application object for its notifiers.
    static int argc = 1;
    static char name[] = "LaunchTests";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* application =
        QCoreApplication::instance() ? nullptr : new QCoreApplication(argc, argv);
    (void)application;
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // As on a machine without a screen: the program must pick the offscreen platform itself.
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    QTemporaryDir home;
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    // In the sanitizer build, allocations Qt and the font libraries keep until exit are not leaks.
    environment.insert(QStringLiteral("LSAN_OPTIONS"),
                       QStringLiteral("suppressions=" LUMO_TEST_DATA_DIR "/LumoCalc/lsan.supp"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(LUMO_CALC_EXECUTABLE), arguments);
    if (!process.waitForFinished(60000))
        return {};
    return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput())};
}

TEST(LumoCalcCommand, ScreenshotWritesThePictureOfTheWindow) {
    struct Case {
        const char* appearance;
        bool dark;
    };
    // A fresh installation starts dark.
    for (const Case& c : {Case{nullptr, true}, Case{"light", false}}) {
        SCOPED_TRACE(c.appearance ? c.appearance : "as set");
        QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("window.png"));
        QStringList arguments{QStringLiteral("-lumoFixture"), QStringLiteral("--screenshot"), file};
        if (c.appearance)
            arguments << QStringLiteral("--appearance") << QString::fromLatin1(c.appearance);
        const ProcessRun run = runLumoCalc(arguments);
        ASSERT_EQ(run.exitCode, 0);
        const QImage picture(file);
        ASSERT_FALSE(picture.isNull());
        EXPECT_GE(picture.width(), 600);
        EXPECT_GE(picture.height(), 400);
        // A window with text and answers, not a blank surface.
        QSet<QRgb> colours;
        for (int y = 0; y < picture.height(); y += 7) {
            for (int x = 0; x < picture.width(); x += 7)
                colours.insert(picture.pixel(x, y));
        }
        EXPECT_GT(colours.size(), 8);
        // The sheet's paper, below the last line.
        const QColor paper = picture.pixelColor(picture.width() / 3, picture.height() - 20);
        EXPECT_EQ(paper.lightness() < 128, c.dark) << paper.name().toStdString();
    }
}

TEST(LumoCalcCommand, HelpAndVersionAnswerWithoutAWindow) {
    for (const char* option : {"--help", "--version"}) {
        SCOPED_TRACE(option);
        const ProcessRun run = runLumoCalc({QString::fromLatin1(option)});
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_TRUE(run.output.contains(QStringLiteral("lumo-calc"))) << run.output.toStdString();
    }
    EXPECT_EQ(runLumoCalc({QStringLiteral("--no-such-option")}).exitCode, 2);
}

} // namespace
} // namespace lumo
