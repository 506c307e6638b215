#include "LumoUI/store/LaunchArguments.h"

#include <QDir>
#include <QStandardPaths>

#include "LumoUI/settings/AppSettings.h"

namespace lumo {

DocumentStoreOptions storeOptionsForLaunch(const QStringList& arguments, const AppSettings* settings) {
    DocumentStoreOptions options;
    if (arguments.contains(QLatin1String("-lumoFixture"))) {
        options.source = StoreSource::sample;
        return options;
    }
    if (arguments.contains(QLatin1String("-lumoStarter"))) {
        options.source = StoreSource::starter;
        return options;
    }
    options.storageDirectory = defaultStorageDirectory();
    options.cloudFolder = cloudFolderForLaunch(settings);
    return options;
}

QString cloudFolderForLaunch(const AppSettings* settings) {
    if (qEnvironmentVariableIsSet("LUMO_CLOUD_DIR"))
        return qEnvironmentVariable("LUMO_CLOUD_DIR");
    return settings ? settings->cloudFolder() : QString();
}

QString defaultStorageDirectory() {
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return base.isEmpty() ? QString() : QDir(base).filePath(QStringLiteral("Lumo"));
}

} // namespace lumo
