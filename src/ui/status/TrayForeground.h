#pragma once

#include <QColor>
#include <QDBusVariant>
#include <QObject>

// The colour of the neutral triangle and of the count: the colour of the panel that holds the
// tray, not the application's text colour (a light application theme on a dark panel would
// draw black on black). In order: the colours an XEmbed tray declares; else, for an XEmbed tray
// that declares none, the opposite of the bar seen beside the icon; else the opposite of the
// bar's colour where the desktop states it (Plasma, GNOME Shell); else the desktop's
// colour-scheme preference from the portal; else light, since most panels are dark.
class TrayForeground : public QObject {
    Q_OBJECT
public:
    static const QColor light;
    static const QColor dark;

    explicit TrayForeground(QObject* parent = nullptr);

    QColor color() const { return color_; }

    // An XEmbed icon is at `icon` on screen: its bar can be looked at.
    void followBarAround(const QRect& icon);

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void onSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    static QColor forScheme(uint scheme);
    static QColor forBar(const QColor& bar);
    static QColor current();

    void set(const QColor& color);

    QColor color_;
    bool barSeen_ = false; // the bar itself tells, the desktop's preference no longer does
};
