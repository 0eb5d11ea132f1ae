#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <gtest/gtest.h>

// A folder as `quillon-cli wait` finds it: files written into it and git run in it, with a
// committer of its own so no user configuration is needed.
namespace gitFolder {

// Runs git in `folder`; fails the test when git does.
inline void git(const QString& folder, const QStringList& args) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral("git"),
                  QStringList{"-c", "user.name=t", "-c", "user.email=t@t"} + args);
    ASSERT_TRUE(process.waitForFinished()) << args.join(' ').toStdString();
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
}

// The commit checked out in `folder`.
inline QString head(const QString& folder) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral("git"), {"rev-parse", "HEAD"});
    process.waitForFinished();
    return QString::fromLatin1(process.readAllStandardOutput()).trimmed();
}

// Writes `content` to `path`, making its folders.
inline void write(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace gitFolder
