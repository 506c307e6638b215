#include "LumoUI/persistence/DocumentFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace lumo::documentFile {

std::optional<QByteArray> read(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

QString writeAtomically(const QString& path, const QByteArray& bytes) {
    // A failure here is not fatal by itself: opening the file below reports the real cause.
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    // Buffered, a write that the disk cuts short while commit() flushes goes unnoticed and the
    // truncated file replaces the good one. Unbuffered, write() says how much reached the file.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return path + QStringLiteral(": ") + file.errorString();
    if (file.write(bytes) != bytes.size()) {
        const QString error = path + QStringLiteral(": ") + file.errorString();
        file.cancelWriting();
        return error;
    }
    if (!file.commit())
        return path + QStringLiteral(": ") + file.errorString();
    return {};
}

QString moveAside(const QString& path, const QDateTime& when) {
    const QDir directory = QFileInfo(path).absoluteDir();
    const QString stem =
        QStringLiteral("document.unreadable-") + when.toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = directory.filePath(stem + QStringLiteral(".json"));
    for (int counter = 2; QFileInfo::exists(target); ++counter)
        target = directory.filePath(stem + QStringLiteral("-%1.json").arg(counter));
    return QFile::rename(path, target) ? target : QString();
}

bool isConflictCopyName(const QString& fileName) {
    if (!fileName.startsWith(QLatin1String("document")) || !fileName.endsWith(QLatin1String(".json")))
        return false;
    if (fileName == QLatin1String(documentFile::fileName) ||
        fileName.startsWith(QLatin1String("document.unreadable-")))
        return false;
    // What follows "document" must start a decoration, not another word ("documents.json").
    const QChar next = fileName.at(int(qstrlen("document")));
    return next == u' ' || next == u'.' || next == u'-' || next == u'_';
}

QStringList conflictCopies(const QString& directory) {
    QStringList copies;
    const QDir dir(directory);
    for (const QString& name : dir.entryList({QStringLiteral("document*.json")}, QDir::Files, QDir::Name)) {
        if (isConflictCopyName(name))
            copies.append(dir.filePath(name));
    }
    return copies;
}

} // namespace lumo::documentFile
