#include "app/QuillonApp.h"

#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/demo/DemoDirector.h"
#include "demo/DemoHotKeyBinding.h"
#include "ui/panel/PanelView.h"

#include <QApplication>
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
    QAction* test = menu_.addAction(Language::text("Test colours", "Tester les couleurs"));
    connect(test, &QAction::triggered, &preview_, &ColorPreview::previewColors);
    connect(&preview_, &ColorPreview::previewingChanged, test,
            [test](bool previewing) { test->setEnabled(!previewing); });
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
    if (!panel_) {
        panel_ = std::make_unique<PanelView>(state_, palette_);
        panel_->setWindowFlags(Qt::Popup | Qt::FramelessWindowHint);
        connect(panel_.get(), &PanelView::contentResized, this, &QuillonApp::placePanel);
    }
    const std::optional<QRect> rect = tray_.geometry();
    panelAnchor_ = rect ? QPoint(rect->center().x(), rect->bottom()) : position;
    panel_->redraw();
    placePanel();
    panel_->show();
    panel_->activateWindow();
}

void QuillonApp::placePanel() {
    if (!panel_)
        return;
    constexpr int margin = 6;
    const QSize size(PanelView::panelWidth, panel_->fittingHeight());
    panel_->resize(size);
    QRect frame(QPoint(panelAnchor_.x() - size.width() / 2, panelAnchor_.y() + margin), size);
    QScreen* screen = QGuiApplication::screenAt(panelAnchor_);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (screen) {
        const QRect area = screen->availableGeometry();
        // A tray at the bottom of the screen opens the panel above the icon.
        if (frame.bottom() > area.bottom() - margin)
            frame.moveBottom(panelAnchor_.y() - margin);
        frame.moveTop(std::max(frame.top(), area.top() + margin));
        frame.moveLeft(std::max(frame.left(), area.left() + margin));
        frame.moveLeft(std::min(frame.left(), area.right() + 1 - margin - frame.width()));
    }
    panel_->move(frame.topLeft());
}
