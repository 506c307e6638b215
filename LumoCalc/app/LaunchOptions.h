#pragma once

#include <QString>
#include <QStringList>

#include <optional>

#include "LumoUI/settings/AppSettings.h"

namespace lumo {

/// What the command line asks of lumo-calc. The in-memory documents ("-lumoFixture",
/// "-lumoStarter") are left in the arguments for the document store to read; options the
/// toolkit understands ("-platform offscreen", "-style") pass through untouched.
struct LaunchOptions {
    enum class Action { run, help, version, fail };

    Action action = Action::run;
    /// Render the main window into this PNG and exit, instead of running.
    QString screenshotFile;
    /// With a screenshot: the appearance to draw it in, whatever the settings say.
    std::optional<AppearanceSetting> appearance;
    /// For `fail`: what was wrong.
    QString error;

    static LaunchOptions parse(const QStringList& arguments);
    /// The --help text in the interface language.
    static QString usage();
};

/// Whether a window system can be reached; without one, screenshots use the offscreen platform.
bool hasDisplay();

} // namespace lumo
