#pragma once

#include <QByteArray>
#include <QString>

// A session bus listening in a test's temporary folder, without service directories: a name
// nobody owns stays unowned instead of activating the machine's own keyring or notifier.
inline QByteArray privateBusConfig(const QString& socketDir) {
    return QStringLiteral(
               "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
               "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
               "<busconfig><type>session</type><listen>unix:dir=%1</listen>"
               "<auth>EXTERNAL</auth><policy context=\"default\">"
               "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
               "<allow own=\"*\"/></policy></busconfig>\n")
        .arg(socketDir)
        .toUtf8();
}
