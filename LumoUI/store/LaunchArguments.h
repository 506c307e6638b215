#pragma once

#include <QString>
#include <QStringList>

#include "LumoUI/store/StoreOptions.h"

namespace lumo {

class AppSettings;

/// The application's store options: the launch arguments choose the source ("-lumoFixture",
/// "-lumoStarter"), the local file lives in the user's data folder under "Lumo", and the cloud
/// folder is LUMO_CLOUD_DIR when set, otherwise the "lumo.cloudFolder" setting.
DocumentStoreOptions storeOptionsForLaunch(const QStringList& arguments, const AppSettings* settings);

/// The folder kept in step by a sync client: LUMO_CLOUD_DIR when set, otherwise the
/// "lumo.cloudFolder" setting; empty when there is none.
QString cloudFolderForLaunch(const AppSettings* settings);

/// "Lumo" in the user's data folder; empty when the system has no such folder.
QString defaultStorageDirectory();

} // namespace lumo
