#include "platform/XdgAutostart.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

void writeEntry(const QString& path, const QByteArray& text) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

// The toggle shows what the desktop will do at login, whichever way the desktop switched the
// entry off, and switching it on again undoes that.
TEST(XdgAutostart, FollowsTheWaysDesktopsSwitchAnEntryOff) {
    QTemporaryDir dir;
    XdgAutostart autostart(QStringLiteral("/opt/my apps/quillon"), dir.path());
    EXPECT_FALSE(autostart.isEnabled());
    ASSERT_EQ(autostart.setEnabled(true), std::nullopt);
    EXPECT_TRUE(autostart.isEnabled());

    const QList<std::pair<QByteArray, bool>> entries{
        {"[Desktop Entry]\nExec=quillon\nHidden=true\n", false},
        {"[Desktop Entry]\nExec=quillon\nX-GNOME-Autostart-enabled=false\n", false},
        {"[Desktop Entry]\nExec=quillon\nX-GNOME-Autostart-enabled = false\n", false},
        {"[Desktop Entry]\nExec=quillon\nX-GNOME-Autostart-enabled=true\nHidden=false\n", true},
        {"[Desktop Entry]\nName=Hidden=true\nExec=quillon\n", true},
    };
    for (const auto& [text, enabled] : entries) {
        writeEntry(autostart.entryPath(), text);
        EXPECT_EQ(autostart.isEnabled(), enabled) << text.toStdString();
    }
    ASSERT_EQ(autostart.setEnabled(true), std::nullopt);
    EXPECT_TRUE(autostart.isEnabled());
    QFile written(autostart.entryPath());
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_TRUE(written.readAll().contains("Exec=\"/opt/my apps/quillon\"\n"));

    ASSERT_EQ(autostart.setEnabled(false), std::nullopt);
    EXPECT_FALSE(QFile::exists(autostart.entryPath()));
}

} // namespace
