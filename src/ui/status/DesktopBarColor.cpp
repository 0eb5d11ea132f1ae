#include "ui/status/DesktopBarColor.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTextStream>

namespace {

// A value of a KConfig file: `key` in the group `[group]`.
std::optional<QString> readKey(const QString& path, const QString& group, const QString& key) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    QTextStream in(&file);
    const QString header = u'[' + group + u']';
    bool inGroup = false;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.startsWith(u'[')) {
            inGroup = line == header;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        // A key may carry flags ("key[$e]=…").
        if (inGroup && equals > 0 && line.left(equals).section(u'[', 0, 0).trimmed() == key)
            return line.mid(equals + 1).trimmed();
    }
    return std::nullopt;
}

// The first value in the cascade of KConfig files `name` found in `dirs`, the user's first.
std::optional<QString> readCascade(const QStringList& dirs, const QString& name,
                                   const QString& group, const QString& key) {
    for (const QString& dir : dirs) {
        if (std::optional<QString> value = readKey(QDir(dir).filePath(name), group, key))
            return value;
    }
    return std::nullopt;
}

std::optional<QColor> parseRgb(const std::optional<QString>& text) {
    if (!text)
        return std::nullopt;
    const QStringList parts = text->split(u',');
    if (parts.size() < 3)
        return std::nullopt;
    int rgb[3];
    for (int i = 0; i < 3; ++i) {
        bool ok = false;
        rgb[i] = parts.at(i).trimmed().toInt(&ok);
        if (!ok || rgb[i] < 0 || rgb[i] > 255)
            return std::nullopt;
    }
    return QColor(rgb[0], rgb[1], rgb[2]);
}

std::optional<QString> findData(const QStringList& dataDirs, const QString& relative) {
    for (const QString& dir : dataDirs) {
        const QString path = QDir(dir).filePath(relative);
        if (QFile::exists(path))
            return path;
    }
    return std::nullopt;
}

std::optional<QColor> plasmaPanel(const QStringList& configDirs, const QStringList& dataDirs) {
    const QString window = QStringLiteral("Colors:Window");
    const QString background = QStringLiteral("BackgroundNormal");
    // A Plasma style with colours of its own (breeze-dark, as Breeze Twilight sets it).
    const QString style = readCascade(configDirs, QStringLiteral("plasmarc"),
                                      QStringLiteral("Theme"), QStringLiteral("name"))
                              .value_or(QStringLiteral("default"));
    if (const auto colors =
            findData(dataDirs, QStringLiteral("plasma/desktoptheme/%1/colors").arg(style)))
        return parseRgb(readKey(*colors, window, background));
    // Otherwise the colour scheme's, written out in kdeglobals or named there.
    if (const auto color =
            parseRgb(readCascade(configDirs, QStringLiteral("kdeglobals"), window, background)))
        return color;
    const QString scheme = readCascade(configDirs, QStringLiteral("kdeglobals"),
                                       QStringLiteral("General"), QStringLiteral("ColorScheme"))
                               .value_or(QStringLiteral("BreezeLight"));
    if (const auto file = findData(dataDirs, QStringLiteral("color-schemes/%1.colors").arg(scheme)))
        return parseRgb(readKey(*file, window, background));
    return QColor(239, 240, 241); // Breeze Light, KDE's default
}

} // namespace

namespace DesktopBarColor {

std::optional<QColor> of(const QStringList& desktops, const QStringList& configDirs,
                         const QStringList& dataDirs) {
    if (desktops.contains(QLatin1String("KDE")))
        return plasmaPanel(configDirs, dataDirs);
    if (desktops.contains(QLatin1String("GNOME")) &&
        !desktops.contains(QLatin1String("GNOME-Classic")))
        return QColor(Qt::black);
    return std::nullopt;
}

std::optional<QColor> current() {
    return of(qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts),
              QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation),
              QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation));
}

} // namespace DesktopBarColor
