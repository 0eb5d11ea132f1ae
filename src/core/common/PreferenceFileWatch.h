#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

// Tells when the preference file changed on disk, so a running tray follows what another process
// (quillon-cli set, mute, unmute) wrote. The folder is watched too: a write replaces the file
// with a new one rather than changing it in place. Our own writes are reported as well; readers
// compare what they read with what they hold.
class PreferenceFileWatch : public QObject {
    Q_OBJECT
public:
    explicit PreferenceFileWatch(const QString& filePath, QObject* parent = nullptr);

Q_SIGNALS:
    // Once per burst of changes, from the event loop.
    void changed();

private:
    void noticed();

    QString file_;
    QFileSystemWatcher watcher_;
    bool queued_ = false;
};
