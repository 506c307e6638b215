#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QStringList>

namespace lumo {

/// The document's copy in a folder that the user's sync client keeps in step across devices:
/// "<folder>/Documents/document.json". Announces every change to that file, including the
/// conflict copies that sync clients put beside it, through remoteChanged().
class CloudSync : public QObject {
    Q_OBJECT

public:
    /// Creates "<folder>/Documents" when missing and starts watching it. remoteChanged() is
    /// also emitted once from the event loop, so a copy that arrived while the application
    /// was closed is merged at start.
    explicit CloudSync(const QString& folder, QObject* parent = nullptr);

    /// The cloud copy of the document.
    QString fileURL() const { return m_fileURL; }
    /// The folder holding the cloud copy and its conflict copies.
    QString directory() const { return m_directory; }
    QStringList conflictCopies() const;

signals:
    /// The cloud copy or its folder changed, possibly through our own write.
    void remoteChanged();

private:
    void onChanged();
    void watch();

    QString m_directory;
    QString m_fileURL;
    QFileSystemWatcher m_watcher;
};

} // namespace lumo
