#include <QApplication>
#include <QDir>
#include <QIcon>

#include <cstdio>

#include "LumoCalc/app/Application.h"
#include "LumoCalc/app/LaunchOptions.h"
#include "LumoKit/base/HeapPolicy.h"

namespace {

QStringList argumentsOf(int argc, char** argv) {
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    return arguments;
}

void print(std::FILE* stream, const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

} // namespace

int main(int argc, char** argv) {
    const lumo::LaunchOptions launch = lumo::LaunchOptions::parse(argumentsOf(argc, argv));
    switch (launch.action) {
    case lumo::LaunchOptions::Action::help:
        print(stdout, lumo::LaunchOptions::usage());
        return 0;
    case lumo::LaunchOptions::Action::version:
        print(stdout, QStringLiteral("lumo-calc %1\n").arg(QStringLiteral(LUMO_VERSION)));
        return 0;
    case lumo::LaunchOptions::Action::fail:
        print(stderr, QStringLiteral("lumo-calc: %1\n").arg(launch.error));
        return 2;
    case lumo::LaunchOptions::Action::run:
        break;
    }

    lumo::keepHeapBetweenRuns();
    // A picture can be taken on a machine without a screen.
    if (!launch.screenshotFile.isEmpty() && !lumo::hasDisplay() &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication::setApplicationName(QStringLiteral("Lumo"));
    QApplication::setOrganizationName(QStringLiteral("Lumo"));
    QApplication::setApplicationVersion(QStringLiteral(LUMO_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("io.github.lumo.Lumo"));
    QApplication application(argc, argv);
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icons/io.github.lumo.Lumo-%1.png").arg(size), QSize(size, size));
    QApplication::setWindowIcon(icon);

    lumo::Application lumoApplication({application.arguments(), {}, {}});
    if (!launch.screenshotFile.isEmpty()) {
        const QString file = QDir::current().absoluteFilePath(launch.screenshotFile);
        if (!lumoApplication.renderScreenshot(file, launch.appearance)) {
            print(stderr, QStringLiteral("lumo-calc: could not write %1\n").arg(file));
            return 1;
        }
        return 0;
    }
    lumoApplication.start();
    return application.exec();
}
