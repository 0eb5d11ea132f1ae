#include "app/QuillonApp.h"

#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/demo/DemoDirector.h"
#include "core/monitor/StatusJson.h"
#include "demo/DemoHotKeyBinding.h"
#include "ui/panel/PanelPlacement.h"
#include "ui/panel/PanelView.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/status/TrayEdge.h"
#include "ui/status/UsableArea.h"

#include <QApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QScreen>

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
    connect(&tray_, &TrayIcon::menuRequested, this, [this](QPoint position) {
        lastClick_ = position;
        menu_.popup(position);
    });
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
    // A StatusNotifierItem host tells nothing before the first click: the top right corner,
    // where most trays sit, rather than a wait for a geometry that never comes.
    if (tray_.servesStatusNotifier())
        return clickedBar(primaryCorner());
    return std::nullopt;
}

QPoint QuillonApp::primaryCorner() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return {};
    // Where nothing is known to be reserved for a bar (a Wayland bar seen through XWayland), one
    // of the usual thickness is taken to be there, so that nothing placed from the corner covers
    // it.
    constexpr double usualBarDepth = 16;
    const QRect available = usableAreaAt(std::nullopt).value_or(screen->geometry());
    const double depth = available == screen->geometry() ? usualBarDepth : 0;
    return rightEndClick(available, depth, TrayEdge::top).toPoint();
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
    lastClick_ = position;
    if (!panel_) {
        panel_ = std::make_unique<PanelView>(state_, palette_);
        panel_->setWindowFlags(Qt::Popup | Qt::FramelessWindowHint);
        connect(panel_.get(), &PanelView::contentResized, this, &QuillonApp::placePanel);
        connect(panel_.get(), &PanelView::quillonOpenSettings, this, &QuillonApp::showSettings);
    }
    const QRectF bar = clickedBar(position);
    panelIcon_ = tray_.geometry().value_or(
        QRect(bar.topLeft().toPoint(),
              QSize(std::max(1, qRound(bar.width())), std::max(1, qRound(bar.height())))));
    panel_->redraw();
    placePanel();
    panel_->show();
    panel_->activateWindow();
}

void QuillonApp::placePanel() {
    if (!panel_)
        return;
    const QSize size(PanelView::panelWidth, panel_->fittingHeight());
    panel_->resize(size);
    panel_->move(
        PanelPlacement::frame(panelIcon_, size, usableAreaAt(panelIcon_.center())).topLeft());
}
