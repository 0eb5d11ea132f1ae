#pragma once

#include "ui/status/StatusNotifierItem.h"
#include "ui/status/ToneIconCache.h"
#include "ui/status/TrayForeground.h"

#include <QObject>
#include <QPoint>
#include <QSystemTrayIcon>

class AppState;
class StatusPalette;

// The tray item: the triangle of the overall tone with today's count, and the status summary
// as its tooltip. Where a StatusNotifierItem host runs, the item is served on the bus by
// Quillon itself, so that a click tells where it landed; otherwise it is an XEmbed icon. It
// redraws when the engine, the palette or the panel's colour announces a change; it never polls.
class TrayIcon : public QObject {
    Q_OBJECT
public:
    TrayIcon(AppState& state, StatusPalette& palette, QObject* parent = nullptr);

    // Puts the item in the tray.
    void show();
    // The right-click menu, on either kind of tray; set before show().
    void setContextMenu(QMenu& menu);

    QSystemTrayIcon& systemTrayIcon() { return tray_; }
    const ToneIconCache& cache() const { return cache_; }
    const QIcon& icon() const { return icon_; }
    const QString& toolTip() const { return toolTip_; }
    bool servesStatusNotifier() const { return sni_.isPublished(); }
    // The Wayland activation token the host sent with the last click, once.
    QString takeActivationToken() { return sni_.takeActivationToken(); }
    // The icon's own rectangle on screen, when the tray tells it.
    std::optional<QRect> geometry() const;

    // Reads the state and the palette again; does nothing visible when neither changed.
    void refresh();

Q_SIGNALS:
    // A left click, where it landed on screen.
    void clicked(QPoint position);
    // A StatusNotifierItem host asks for the menu at this position.
    void menuRequested(QPoint position);

private:
    static constexpr int barLooks = 10;
    static constexpr std::chrono::milliseconds barLookPause{500};
    void lookAtBarLater(int attempts);

    AppState& state_;
    StatusPalette& palette_;
    QSystemTrayIcon tray_;
    StatusNotifierItem sni_;
    TrayForeground foreground_;
    ToneIconCache cache_;
    QString shownKey_;
    QIcon icon_;
    QString toolTip_;
};
