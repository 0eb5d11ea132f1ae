#pragma once

#include "support/desktop/PrivateDesktop.h"

#include <QColor>
#include <QDBusConnection>
#include <QImage>
#include <QProcess>
#include <QRect>
#include <functional>
#include <optional>

// XFCE's own panel on a private display and bus, dark as XFCE ships it, along the top or the
// bottom of the screen with a single plugin, the tray (XEmbed and StatusNotifierItem host), and
// the real `quillon` in demo mode on it.
class XfceDesktop {
public:
    enum class Edge { top, bottom };
    static constexpr int startTimeoutMs = 20000;

    ~XfceDesktop();

    // Answers what went wrong, if anything did. With `workArea`, the part of the screen the bar
    // leaves free is published, as a window manager would. With `appFirst`, the app starts
    // before the panel, as it may when both start with the session.
    std::optional<QString> start(Edge edge, bool workArea, bool appFirst);
    std::optional<QString> startApp();
    // Asks the app to quit as a logout would; whether it ended cleanly (under the sanitizers,
    // without a report).
    bool quitApp();

    // The tray's area in the panel, once the panel is laid out.
    std::optional<QRect> tray() const;
    // The D-Bus service of the item the panel's host took in, once there is one.
    std::optional<QString> registeredItem() const;
    QDBusConnection bus() const { return desktop_.connection(); }
    // Calls `method` (x, y) on the item from a program named waybar, as that bar does.
    bool callAsWaybar(const QString& item, const QString& method, int x, int y) const;
    QImage screenshot() const;
    bool xdotool(const QStringList& arguments) const { return desktop_.xdotool(arguments); }
    QProcessEnvironment environment() const { return desktop_.environment(); }

private:
    // What a window manager would publish, so the app knows which part of the screen is free.
    std::optional<QString> publishWorkArea(const QRect& panel);

    PrivateDesktop desktop_;
    QProcess xfconfd_;
    QProcess panel_;
    QProcess app_;
};

// The whole screen of an X display (":3") as it shows now; null when it cannot be read.
QImage grabScreen(const QString& display);
// How many pixels of `area` in `screen` pass `test`.
int countPixels(const QImage& screen, const QRect& area, const std::function<bool(QColor)>& test);
