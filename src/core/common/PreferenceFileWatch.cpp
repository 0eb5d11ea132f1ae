#include "core/common/PreferenceFileWatch.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

PreferenceFileWatch::PreferenceFileWatch(const QString& filePath, QObject* parent)
    : QObject(parent), file_(filePath) {
    const QString folder = QFileInfo(file_).absolutePath();
    QDir().mkpath(folder); // a folder that does not exist yet cannot be watched
    watcher_.addPath(folder);
    if (QFileInfo::exists(file_))
        watcher_.addPath(file_);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &PreferenceFileWatch::noticed);
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, &PreferenceFileWatch::noticed);
}

void PreferenceFileWatch::noticed() {
    // A replaced file drops out of the watch; the new one is taken up again.
    if (QFileInfo::exists(file_) && !watcher_.files().contains(file_))
        watcher_.addPath(file_);
    if (queued_)
        return;
    queued_ = true;
    QTimer::singleShot(0, this, [this] {
        queued_ = false;
        Q_EMIT changed();
    });
}
