#include "ui/status/TrayIcon.h"

#include "core/monitor/AppState.h"
#include "core/monitor/StatusLines.h"
#include "ui/status/StatusPalette.h"
#include "ui/status/ToneIcon.h"
#include "ui/status/X11WindowPosition.h"

#include <QApplication>
#include <QCursor>
#include <QPalette>
#include <QWidget>

TrayIcon::TrayIcon(AppState& state, StatusPalette& palette, QObject* parent)
    : QObject(parent), state_(state), palette_(palette) {
    connect(&state_, &AppState::changed, this, &TrayIcon::refresh);
    connect(&palette_, &StatusPalette::changed, this, &TrayIcon::refresh);
    connect(&tray_, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger)
                    Q_EMIT clicked(QCursor::pos());
            });
    // The application object is told when the desktop's colours change.
    qApp->installEventFilter(this);
    refresh();
}

std::optional<QRect> TrayIcon::geometry() const {
    const QRect rect = tray_.geometry();
    if (rect.isEmpty())
        return std::nullopt; // a StatusNotifierItem host tells nothing
    // An XEmbed tray moves the icon's window itself: ask X where it went.
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        if (qstrcmp(widget->metaObject()->className(), "QSystemTrayIconSys") != 0)
            continue;
        if (const std::optional<QPoint> position = x11ScreenPosition(widget->winId()))
            return QRect(*position, rect.size());
    }
    return rect;
}

void TrayIcon::refresh() {
    const Tone tone = state_.overallTone();
    const int count = state_.todayCount();
    const QColor text = panelText();
    const QString key =
        palette_.signature() + text.name() + toneName(tone) + ToneIcon::countText(count);
    if (key != shownKey_) {
        tray_.setIcon(cache_.icon(tone, count, palette_, text));
        shownKey_ = key;
    }
    const QString summary = state_.statusSummary();
    if (tray_.toolTip() != summary)
        tray_.setToolTip(summary);
}

bool TrayIcon::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        refresh();
    return QObject::eventFilter(watched, event);
}

QColor TrayIcon::panelText() {
    return QApplication::palette().color(QPalette::WindowText);
}
