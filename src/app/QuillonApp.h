#pragma once

#include "app/GuiClipboard.h"
#include "core/common/PreferenceFileWatch.h"
#include "core/common/Preferences.h"
#include "core/monitor/AppState.h"
#include "demo/DemoHotKeys.h"
#include "platform/LinuxServices.h"
#include "ui/status/ColorPreview.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/StatusPalette.h"
#include "ui/status/TrayIcon.h"

#include "core/update/AppcastUpdater.h"
#include "core/update/UpdateAnnouncer.h"

#include <QMenu>
#include <QObject>
#include <memory>
#include <optional>

class PanelView;
class SettingsWindow;
class UpdateService;

// The tray application wired together: the Linux services, the one AppState, the palette, the
// tray icon and the Live Activity. It holds no behaviour of its own beyond the wiring.
class QuillonApp : public QObject {
    Q_OBJECT
public:
    QuillonApp(const QUrl& apiBase, const QString& executable, QObject* parent = nullptr);
    ~QuillonApp() override;

    // Demo mode plays fake projects (and `demoScene` once, when given); otherwise the stored
    // token, if any, is checked and the polling starts. The tray icon appears last.
    void start(bool demo, std::optional<int> demoScene);

    // The engine's picture as one line of JSON, as `quillon-cli watch --json` prints it.
    QString statusJson() const;
    // Whether a tray shows the icon: an XEmbed tray, or a host that took Quillon's own item.
    bool hasTray() const;

public Q_SLOTS:
    // Opens the Settings window on the Vercel tab and brings it to the front.
    void showSettings();

private:
    // The tray's right-click menu, in the current language.
    void buildMenu();
    void openPanel(const QPoint& position);
    // Keeps the open panel next to the tray icon, inside the screen with a margin.
    void placePanel();
    std::optional<QRectF> trayAnchor() const;
    // The stretch of tray bar a click on a StatusNotifierItem stands for.
    static QRectF clickedBar(const QPoint& click);
    // A click on a tray in the top right corner of the primary screen, where most trays sit.
    static QPoint primaryCorner();
    // Where "Open panel" from the menu opens the panel.
    QPoint menuAnchor() const;

    GuiClipboard clipboard_;
    LinuxServices services_;
    AppState state_;
    StatusPalette palette_;
    LiveActivityController live_;
    ColorPreview preview_;
    TrayIcon tray_;
    QMenu menu_;
    std::unique_ptr<PanelView> panel_;
    std::unique_ptr<SettingsWindow> settings_; // created on first use
    AppcastUpdater updater_;
    UpdateAnnouncer announcer_{updater_, services_.notifications, Preferences::standard()};
    // What quillon-cli writes (set, mute, unmute) takes effect here at once.
    PreferenceFileWatch preferencesWatch_{Preferences::standard().filePath()};
    std::unique_ptr<DemoHotKeys> hotKeys_; // demo mode only
    // Where the tray icon was last clicked: the anchor when the tray does not tell its geometry.
    std::optional<QPoint> lastClick_;
    QRect panelIcon_; // the icon, or the click on it, that the open panel belongs to
};
