#include "LumoCalc/app/LaunchOptions.h"

#include "LumoCalc/text/Bilingual.h"

namespace lumo {

LaunchOptions LaunchOptions::parse(const QStringList& arguments) {
    LaunchOptions options;
    const auto fail = [&options](QString error) {
        options.action = Action::fail;
        options.error = std::move(error);
        return options;
    };
    const QLatin1String screenshot("--screenshot");
    const QLatin1String appearance("--appearance");
    // The value of "--name VALUE" or "--name=VALUE"; empty when it is missing.
    const auto valueOf = [&arguments](qsizetype& index, QLatin1String name) -> std::optional<QString> {
        const QString& argument = arguments[index];
        if (argument == name)
            return index + 1 < arguments.size() ? arguments[++index] : QString();
        if (argument.startsWith(name + QLatin1Char('=')))
            return argument.mid(name.size() + 1);
        return std::nullopt;
    };
    // The first argument is the program.
    for (qsizetype index = 1; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            options.action = Action::help;
            return options;
        }
        if (argument == QLatin1String("--version") || argument == QLatin1String("-v")) {
            options.action = Action::version;
            return options;
        }
        if (const std::optional<QString> file = valueOf(index, screenshot)) {
            if (file->isEmpty())
                return fail(pickText("--screenshot には保存先の PNG ファイルを指定してください",
                                     "--screenshot needs the PNG file to write"));
            options.screenshotFile = *file;
        } else if (const std::optional<QString> mode = valueOf(index, appearance)) {
            for (AppearanceSetting candidate :
                 {AppearanceSetting::automatic, AppearanceSetting::light, AppearanceSetting::dark}) {
                if (*mode == rawValue(candidate))
                    options.appearance = candidate;
            }
            if (!options.appearance)
                return fail(pickText("--appearance には auto、light、dark のどれかを指定してください",
                                     "--appearance takes auto, light or dark"));
        } else if (argument.startsWith(QLatin1String("--"))) {
            return fail(pickText("知らないオプションです: ", "Unknown option: ") + argument);
        }
    }
    if (options.appearance && options.screenshotFile.isEmpty())
        return fail(
            pickText("--appearance は --screenshot と一緒に使います", "--appearance goes with --screenshot"));
    return options;
}

QString LaunchOptions::usage() {
    return pickText("使い方: lumo-calc [オプション]\n"
                    "打つとその場で答えが出る計算用のメモ帳 Lumo を開きます。\n"
                    "\n"
                    "  -lumoFixture         見本の書類をメモリー上で開きます（保存しません）\n"
                    "  -lumoStarter         はじめての書類をメモリー上で開きます（保存しません）\n"
                    "  --screenshot FILE    最初の計算のあとのメインウインドウを PNG に保存して終わります\n"
                    "  --appearance MODE    スクリーンショットを auto、light、dark のどれかの外観で撮ります\n"
                    "  -h, --help           この説明を表示します\n"
                    "  -v, --version        版を表示します\n",
                    "Usage: lumo-calc [options]\n"
                    "Opens Lumo, the calculation notepad that answers every line as you type.\n"
                    "\n"
                    "  -lumoFixture         open the sample document in memory (nothing is saved)\n"
                    "  -lumoStarter         open the starter document in memory (nothing is saved)\n"
                    "  --screenshot FILE    save the main window, once evaluated, as a PNG and exit\n"
                    "  --appearance MODE    take the screenshot in the auto, light or dark appearance\n"
                    "  -h, --help           show this help\n"
                    "  -v, --version        show the version\n");
}

bool hasDisplay() {
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace lumo
