#include "app/QuillonApp.h"

#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/demo/DemoDirector.h"
#include "core/monitor/StatusJson.h"
#include "demo/DemoHotKeyBinding.h"
#include "ui/common/ActionConfirmationWindow.h"
#include "ui/panel/PanelPlacement.h"
#include "ui/panel/PanelView.h"
#include "ui/panel/PopupShield.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/status/TrayEdge.h"
#include "ui/status/UsableArea.h"
#include "ui/status/WaylandSession.h"
#include "ui/status/X11StartupNotification.h"

#include <QApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QScreen>
#include <algorithm>

namespace {

void openUrl(const QUrl& url) {
    QDesktopServices::openUrl(url);
}

} // namespace

QuillonApp::QuillonApp(const QUrl& apiBase, const QString& executable, QObject* parent)
    : QObject(parent), services_(executable, clipboard_, &openUrl),
      state_(services_.services(apiBase)), palette_(Preferences::standard()),
      live_(palette_, services_.clock), preview_(state_, live_), tray_(state_, palette_) {
    live_.setUrlOpener(&openUrl);
    live_.setAnchorSource([this] { return trayAnchor(); });
    live_.observe(state_);
    buildMenu();
    // Queued: the menu is rebuilt after the action that changed things has finished.
    for (auto signal : {&AppState::preferencesChanged, &AppState::connectionChanged})
        connect(&state_, signal, this, &QuillonApp::buildMenu, Qt::QueuedConnection);
    connect(&state_.notificationPause(), &NotificationPause::changed, this, &QuillonApp::buildMenu,
            Qt::QueuedConnection);
    connect(&updater_, &UpdateService::resultChanged, this, &QuillonApp::buildMenu,
            Qt::QueuedConnection);
    tray_.setContextMenu(menu_);
    connect(&preferencesWatch_, &PreferenceFileWatch::changed, this, [this] {
        state_.reloadPreferences();
        palette_.reload();
        if (!state_.isDemo())
            updater_.start(Preferences::standard());
    });
    connect(&tray_, &TrayIcon::clicked, this, &QuillonApp::openPanel);
    // The notification and the capsule take no keyboard: a window of its own asks first.
    connect(&state_, &AppState::redeployRequested, this, [this](const ProjectSnapshot& snapshot) {
        ActionConfirmationWindow::ask(state_, DeploymentAction::redeploy, snapshot,
                                      services_.notifications.takeActivationToken());
    });
    connect(&live_, &LiveActivityController::cancelRequested, this,
            [this](const ProjectSnapshot& snapshot) {
                ActionConfirmationWindow::ask(state_, DeploymentAction::cancel, snapshot);
            });
    connect(&tray_, &TrayIcon::menuRequested, this, &QuillonApp::openMenu);
}

QuillonApp::~QuillonApp() = default;

void QuillonApp::start(bool demo, std::optional<int> demoScene) {
    state_.start(demo);
    // Demo mode makes no network request, so no update check either (and no network stack).
    if (!demo)
        updater_.start(Preferences::standard());
    hotKeys_ = bindDemoHotKeys(state_);
    if (demo && demoScene && state_.demo())
        state_.demo()->runScene(*demoScene);
    // Last, so that everything the icon leads to already answers once it is on screen.
    tray_.show();
}

void QuillonApp::buildMenu() {
    menu_.clear();
    QAction* refresh = menu_.addAction(Language::text("Refresh now", "Actualiser maintenant"));
    refresh->setEnabled(state_.connection().isConnected() && !state_.isDemo());
    connect(refresh, &QAction::triggered, &state_, [this] { state_.refresh(); });
    QAction* open = menu_.addAction(Language::text("Open panel", "Ouvrir le panneau"));
    connect(open, &QAction::triggered, this, [this] { openPanel(menuAnchor()); });
    NotificationPause& pause = state_.notificationPause();
    if (pause.isPaused()) {
        QAction* resume =
            menu_.addAction(Language::text("Resume notifications (", "Reprendre les "
                                                                     "notifications (") +
                            pause.pausedUntilText() + QLatin1Char(')'));
        connect(resume, &QAction::triggered, &pause, &NotificationPause::resume);
    } else {
        QAction* hold = menu_.addAction(Language::text("Pause notifications for 1 hour",
                                                       "Suspendre les notifications 1 heure"));
        connect(hold, &QAction::triggered, &pause,
                [&pause] { pause.pause(std::chrono::minutes(60)); });
    }
    menu_.addSeparator();
    QAction* settings = menu_.addAction(Language::text("Settings…", "Réglages…"));
    connect(settings, &QAction::triggered, this, &QuillonApp::showSettings);
    QAction* test = menu_.addAction(Language::text("Test colours", "Tester les couleurs"));
    test->setEnabled(!preview_.isPreviewingColors());
    connect(test, &QAction::triggered, &preview_, &ColorPreview::previewColors);
    connect(&preview_, &ColorPreview::previewingChanged, test,
            [test](bool previewing) { test->setEnabled(!previewing); });
    if (const std::optional<QUrl> page = updater_.downloadPage()) {
        QAction* update =
            menu_.addAction(Language::text("Update available…", "Mise à jour disponible…"));
        connect(update, &QAction::triggered, this, [page] { openUrl(*page); });
    }
    menu_.addSeparator();
    QAction* quit = menu_.addAction(Language::text("Quit", "Quitter"));
    connect(quit, &QAction::triggered, qApp, &QCoreApplication::quit);
}

QString QuillonApp::statusJson() const {
    return QString::fromUtf8(statusJsonLine(state_, state_.clock().now()));
}

void QuillonApp::showSettings() {
    if (!settings_)
        settings_ = std::make_unique<SettingsWindow>(state_, palette_, &preview_, &updater_);
    settings_->present();
}

std::optional<QRectF> QuillonApp::trayAnchor() const {
    if (const std::optional<QRect> rect = tray_.geometry())
        return QRectF(*rect);
    if (lastClick_)
        return clickedBar(*lastClick_);
    // A StatusNotifierItem host tells nothing before the first click: the end of the bar where
    // most trays sit, rather than a wait for a geometry that never comes.
    if (tray_.servesStatusNotifier())
        return clickedBar(primaryCorner());
    return std::nullopt;
}

QPoint QuillonApp::primaryCorner() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return {};
    const QRect whole = screen->geometry();
    return cornerClick(QRectF(whole), QRectF(usableAreaAt(std::nullopt).value_or(whole))).toPoint();
}

bool QuillonApp::hasTray() const {
    return tray_.servesStatusNotifier() || QSystemTrayIcon::isSystemTrayAvailable();
}

// Some hosts open the exported menu on a left click too (waybar) and report no position; on
// XWayland the pointer position is stale once the click landed on the compositor's own bar.
QPoint QuillonApp::menuAnchor() const {
    if (lastClick_)
        return *lastClick_;
    return tray_.servesStatusNotifier() ? primaryCorner() : QCursor::pos();
}

QRectF QuillonApp::clickedBar(const QPoint& click) {
    const std::optional<QRect> area = usableAreaAt(click);
    return area ? barAroundClick(click, *area) : QRectF(click, QSizeF(0, 0));
}

void QuillonApp::openPanel(const QPoint& position) {
    const QString token = tray_.takeActivationToken();
    // A click on the icon of an open panel closes it, as it would a menu; a double click's
    // second half does not.
    constexpr int secondHalfMs = 500;
    if (panel_ && panel_->isVisible()) {
        if (panelShown_.elapsed() > secondHalfMs)
            panel_->hide();
        completeStartup(token, *panel_);
        return;
    }
    lastClick_ = position;
    if (!panel_) {
        panel_ = std::make_unique<PanelView>(state_, palette_);
        panel_->setWindowFlags(Qt::Popup | Qt::FramelessWindowHint);
        connect(panel_.get(), &PanelView::contentResized, this, &QuillonApp::placePanel);
        connect(panel_.get(), &PanelView::quillonOpenSettings, this, &QuillonApp::showSettings);
        panelShield_ = shieldFor(*panel_);
    }
    const QRectF bar = clickedBar(position);
    panelIcon_ = tray_.geometry().value_or(
        QRect(bar.topLeft().toPoint(),
              QSize(std::max(1, qRound(bar.width())), std::max(1, qRound(bar.height())))));
    panel_->redraw();
    placePanel();
    shield(panelShield_.get(), panelIcon_.center(), token);
    panel_->show();
    panel_->raise();
    // Under the shield the panel takes the keys through its grab: made the active window, it
    // would take the keyboard from the shield, which closes it.
    if (!panelShield_)
        panel_->activateWindow();
    completeStartup(token, *panel_);
    panelShown_.start();
}

void QuillonApp::openMenu(const QPoint& position) {
    const QString token = tray_.takeActivationToken();
    lastClick_ = position;
    if (!menuShield_)
        menuShield_ = shieldFor(menu_);
    shield(menuShield_.get(), position, token);
    // At the click, moved off the bar into the usable area: below a top bar, above a bottom one.
    const std::optional<QRect> area = usableAreaAt(position);
    menu_.popup(area ? QPoint(std::clamp(position.x(), area->left(), area->right()),
                              std::clamp(position.y(), area->top(), area->bottom()))
                     : position);
    completeStartup(token, menu_);
}

std::unique_ptr<PopupShield> QuillonApp::shieldFor(QWidget& popup) {
    if (!inWaylandSession())
        return nullptr;
    const bool gnome = qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains(QLatin1String("GNOME"));
    return std::make_unique<PopupShield>(popup, gnome ? PopupShield::Bars::takeClicks
                                                      : PopupShield::Bars::passClicks);
}

void QuillonApp::shield(PopupShield* shield, const QPoint& near, const QString& token) {
    if (!shield)
        return;
    const QScreen* screen = QGuiApplication::screenAt(near);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const QRect whole = screen ? screen->geometry() : QRect(near, QSize(1, 1));
    shield->cover(whole, usableAreaAt(near).value_or(whole), token);
}

void QuillonApp::placePanel() {
    if (!panel_)
        return;
    const QSize size(PanelView::panelWidth, panel_->fittingHeight());
    panel_->resize(size);
    panel_->move(
        PanelPlacement::frame(panelIcon_, size, usableAreaAt(panelIcon_.center())).topLeft());
}
