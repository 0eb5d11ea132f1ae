#include "platform/XdgAutostart.h"

#include "core/common/Language.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTextStream>

namespace {

QString defaultDirectory() {
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(QStringLiteral("autostart"));
}

// Desktop entries quote Exec arguments that hold spaces or quotes.
QString quotedExec(const QString& path) {
    if (!path.contains(QLatin1Char(' ')) && !path.contains(QLatin1Char('"')))
        return path;
    QString escaped = path;
    escaped.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

} // namespace

XdgAutostart::XdgAutostart(QString executable, QString directory)
    : executable_(std::move(executable)),
      directory_(directory.isEmpty() ? defaultDirectory() : std::move(directory)) {}

QString XdgAutostart::entryPath() const {
    return QDir(directory_).filePath(QStringLiteral("com.fernhollow.quillon.desktop"));
}

bool XdgAutostart::isEnabled() const {
    QFile file(entryPath());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    // A desktop's own settings switch the entry off with Hidden=true (the XDG rule) or, on GNOME,
    // Cinnamon and XFCE, with X-GNOME-Autostart-enabled=false.
    QTextStream in(&file);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals < 0)
            continue;
        const QString key = line.left(equals).trimmed();
        const QString value = line.mid(equals + 1).trimmed();
        if ((key == QLatin1String("Hidden") && value == QLatin1String("true")) ||
            (key == QLatin1String("X-GNOME-Autostart-enabled") && value == QLatin1String("false")))
            return false;
    }
    return true;
}

std::optional<QString> XdgAutostart::setEnabled(bool enabled) {
    if (!enabled) {
        QFile file(entryPath());
        if (file.exists() && !file.remove())
            return Language::text("Could not remove the login entry: ",
                                  "Impossible de retirer l'entrée de connexion : ") +
                   file.errorString();
        return std::nullopt;
    }
    if (!QDir().mkpath(directory_))
        return Language::text("Could not create the folder ", "Impossible de créer le dossier ") +
               directory_;
    QSaveFile file(entryPath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return Language::text("Could not write the login entry: ",
                              "Impossible d'écrire l'entrée de connexion : ") +
               file.errorString();
    QTextStream out(&file);
    out << "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Quillon\n"
           "Comment=Vercel deployments in the tray\n"
           "Exec="
        << quotedExec(executable_)
        << "\n"
           "Icon=quillon\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
    out.flush();
    if (!file.commit())
        return Language::text("Could not write the login entry: ",
                              "Impossible d'écrire l'entrée de connexion : ") +
               file.errorString();
    return std::nullopt;
}
