#include "app/QuillonApp.h"

#include "app/PlaceholderPanel.h"
#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/demo/DemoDirector.h"
#include "demo/DemoHotKeyBinding.h"

#include <QApplication>
#include <QDesktopServices>

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
    QAction* quit = menu_.addAction(Language::text("Quit", "Quitter"));
    connect(quit, &QAction::triggered, qApp, &QCoreApplication::quit);
    tray_.systemTrayIcon().setContextMenu(&menu_);
    connect(&tray_, &TrayIcon::clicked, this, &QuillonApp::openPanel);
    tray_.systemTrayIcon().show();
}

QuillonApp::~QuillonApp() = default;

void QuillonApp::start(bool demo, std::optional<int> demoScene) {
    state_.start(demo);
    hotKeys_ = bindDemoHotKeys(state_);
    if (demo && demoScene && state_.demo())
        state_.demo()->runScene(*demoScene);
}

std::optional<QRectF> QuillonApp::trayAnchor() const {
    if (const std::optional<QRect> rect = tray_.geometry())
        return QRectF(*rect);
    if (lastClick_)
        return QRectF(*lastClick_, QSizeF(0, 0));
    return std::nullopt;
}

void QuillonApp::openPanel(const QPoint& position) {
    lastClick_ = position;
    if (!panel_)
        panel_ = std::make_unique<PlaceholderPanel>(state_, preview_);
    const std::optional<QRect> rect = tray_.geometry();
    panel_->popUpAt(rect ? QPoint(rect->center().x(), rect->bottom()) : position);
}
