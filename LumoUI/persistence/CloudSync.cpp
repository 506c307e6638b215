#include "LumoUI/persistence/CloudSync.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include "LumoUI/persistence/DocumentFile.h"

namespace lumo {

CloudSync::CloudSync(const QString& folder, QObject* parent)
    : QObject(parent), m_directory(QDir(folder).filePath(QStringLiteral("Documents"))),
      m_fileURL(QDir(m_directory).filePath(QLatin1String(documentFile::fileName))) {
    QDir().mkpath(m_directory);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &CloudSync::onChanged);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &CloudSync::onChanged);
    watch();
    QTimer::singleShot(0, this, &CloudSync::remoteChanged);
}

QStringList CloudSync::conflictCopies() const {
    return documentFile::conflictCopies(m_directory);
}

void CloudSync::onChanged() {
    watch();
    emit remoteChanged();
}

void CloudSync::watch() {
    // An atomic replace gives the file a new identity and drops its watch, so the path is
    // added again after every change; the folder's watch sees files appear and vanish.
    if (!m_watcher.directories().contains(m_directory) && QFileInfo::exists(m_directory))
        m_watcher.addPath(m_directory);
    if (!m_watcher.files().contains(m_fileURL) && QFileInfo::exists(m_fileURL))
        m_watcher.addPath(m_fileURL);
}

} // namespace lumo
