#include "support/QtPrinters.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;
};

// The application's environment: a private configuration, no display unless given.
QProcessEnvironment environment(const QTemporaryDir& home,
                                const QList<std::pair<QString, QString>>& extra = {}) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name :
         {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QUILLON_API_BASE", "QUILLON_DEMO"})
        env.remove(QString::fromLatin1(name));
    env.insert("XDG_CONFIG_HOME", home.filePath("config"));
    for (const auto& [name, value] : extra)
        env.insert(name, value);
    return env;
}

Outcome run(const QStringList& arguments, const QProcessEnvironment& env) {
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(QUILLON_APP_PATH), arguments);
    EXPECT_TRUE(process.waitForFinished(30000));
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

TEST(QuillonExecutable, AnswersHelpAndVersionWithoutADisplay) {
    QTemporaryDir home;
    const Outcome version = run({"--version"}, environment(home));
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out, QStringLiteral("quillon %1\n").arg(QUILLON_VERSION));
    const Outcome help = run({"-platform", "xcb", "--help"}, environment(home));
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.startsWith("Usage: quillon")) << help.out.toStdString();
    EXPECT_TRUE(help.err.isEmpty());
}

TEST(QuillonExecutable, RefusesAnUnusableApiBaseAndUnknownOptions) {
    QTemporaryDir home;
    const Outcome base = run({}, environment(home, {{"QUILLON_API_BASE", "http://example.com"}}));
    EXPECT_EQ(base.exitCode, 2);
    EXPECT_TRUE(base.err.startsWith("quillon: QUILLON_API_BASE")) << base.err.toStdString();

    const Outcome unknown = run({"--bogus"}, environment(home, {{"QT_QPA_PLATFORM", "offscreen"}}));
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_TRUE(unknown.err.contains("unknown option '--bogus'")) << unknown.err.toStdString();
}

TEST(QuillonExecutable, SavesAScreenshotOnRequest) {
    QTemporaryDir home;
    const QString path = home.filePath("screen.png");
    const Outcome shot = run({"--screenshot", path, "--screenshot-delay", "0"},
                             environment(home, {{"QT_QPA_PLATFORM", "offscreen"}}));
    EXPECT_EQ(shot.exitCode, 0) << shot.err.toStdString();
    QFile png(path);
    ASSERT_TRUE(png.open(QIODevice::ReadOnly));
    EXPECT_EQ(png.read(8), QByteArray("\x89PNG\r\n\x1a\n", 8));

    const Outcome refused =
        run({"--screenshot", home.filePath("missing/dir/x.png"), "--screenshot-delay", "0"},
            environment(home, {{"QT_QPA_PLATFORM", "offscreen"}}));
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains("could not save a screenshot")) << refused.err.toStdString();
}
