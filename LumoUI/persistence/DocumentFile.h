#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

namespace lumo {

/// File operations of the document store: whole-file reads, atomic writes, moving an
/// unreadable file out of the way and finding the conflict copies that sync clients leave.
namespace documentFile {

/// The name of the document file, locally and in the cloud folder.
inline constexpr auto fileName = "document.json";

/// The file's bytes; nothing when it does not exist or cannot be read.
std::optional<QByteArray> read(const QString& path);

/// Writes through a temporary file that replaces `path` only once it is complete, creating
/// missing parent folders. Returns an empty string on success, otherwise what went wrong.
QString writeAtomically(const QString& path, const QByteArray& bytes);

/// Renames `path` to "document.unreadable-<yyyyMMdd-HHmmss>.json" beside it (with a counter
/// when that name is taken). Returns the new path, or an empty string when the rename failed.
QString moveAside(const QString& path, const QDateTime& when);

/// Whether a file name is a sync client's copy of "document.json": "document (conflicted copy
/// …).json", "document.sync-conflict-….json", "document (1).json", "document-HOST.json" and
/// the like. The document itself and files moved aside as unreadable are not.
bool isConflictCopyName(const QString& fileName);

/// Full paths of the conflict copies in `directory`, sorted by name.
QStringList conflictCopies(const QString& directory);

} // namespace documentFile
} // namespace lumo
