#pragma once

#include <QList>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QStringList>
#include <optional>

// How long an X tool (xwininfo, xdotool, trayer) may take to start or answer.
inline constexpr int kXToolTimeoutMs = 10000;

// One window of `xwininfo -root -tree` on a private display, with its place on screen, and the
// look-ups the desktop tests make with the X tools.
struct XWindow {
    QString id;
    QString instance; // WM_CLASS, e.g. "quillon" "quillon"
    QString className;
    QRect rect; // absolute: the screen position xwininfo prints after the size
    int depth = 0;
    QStringList ancestorClasses; // WM_CLASS names of every window above it
};

// Runs an X tool to its end; its standard output when it succeeded.
std::optional<QString> runTool(const QString& program, const QStringList& arguments,
                               const QProcessEnvironment& environment);

// Every window below the root, parents before their children.
QList<XWindow> windowTree(const QProcessEnvironment& environment);
bool isViewable(const QString& id, const QProcessEnvironment& environment);
// The app's icon once trayer has embedded it and laid it out inside its panel.
std::optional<XWindow> trayIcon(const QProcessEnvironment& environment);
bool trayerShowsPanel(const QProcessEnvironment& environment);
// The app's top-level windows that are on screen now.
QList<XWindow> shownTopLevels(const QProcessEnvironment& environment);

QString describe(const QRect& rect);
