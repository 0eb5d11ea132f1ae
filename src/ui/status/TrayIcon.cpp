#include "ui/status/TrayIcon.h"

#include "core/monitor/AppState.h"
#include "core/monitor/StatusLines.h"
#include "ui/status/StatusPalette.h"
#include "ui/status/ToneIcon.h"
#include "ui/status/X11WindowPosition.h"

#include <QApplication>
#include <QCursor>
#include <QTimer>
#include <QWidget>

TrayIcon::TrayIcon(AppState& state, StatusPalette& palette, QObject* parent)
    : QObject(parent), state_(state), palette_(palette) {
    connect(&state_, &AppState::changed, this, &TrayIcon::refresh);
    connect(&palette_, &StatusPalette::changed, this, &TrayIcon::refresh);
    connect(&foreground_, &TrayForeground::changed, this, &TrayIcon::refresh);
    connect(&tray_, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger)
                    Q_EMIT clicked(QCursor::pos());
            });
    connect(&sni_, &StatusNotifierItem::activated, this, &TrayIcon::clicked);
    connect(&sni_, &StatusNotifierItem::contextMenuRequested, this, &TrayIcon::menuRequested);
    refresh();
}

void TrayIcon::show() {
    if (StatusNotifierItem::hostRuns() && sni_.publish()) {
        refresh(); // the host may draw the count itself
        return;
    }
    tray_.show();
    lookAtBarLater(barLooks);
    sni_.awaitHost([this] {
        if (sni_.publish()) {
            tray_.hide();
            refresh();
        }
    });
}

// The tray embeds the icon a moment after it is shown; look at the bar once it has.
void TrayIcon::lookAtBarLater(int attempts) {
    QTimer::singleShot(barLookPause, this, [this, attempts] {
        if (const std::optional<QRect> icon = geometry())
            foreground_.followBarAround(*icon);
        else if (attempts > 1)
            lookAtBarLater(attempts - 1);
    });
}

void TrayIcon::setContextMenu(QMenu& menu) {
    tray_.setContextMenu(&menu);
    sni_.setMenu(menu);
}

std::optional<QRect> TrayIcon::geometry() const {
    const QRect rect = tray_.geometry();
    if (rect.isEmpty())
        return std::nullopt; // not shown, or on a StatusNotifierItem host
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
    const QColor text = foreground_.color();
    // A host that draws the item's label shows the count beside the triangle, in its own text.
    const bool countBeside = sni_.isPublished() && sni_.hostShowsLabel();
    const int drawnCount = countBeside ? 0 : count;
    const QString key =
        palette_.signature() + text.name() + toneName(tone) + ToneIcon::countText(drawnCount);
    if (key != shownKey_) {
        icon_ = cache_.icon(tone, drawnCount, palette_, text);
        tray_.setIcon(icon_);
        sni_.setIcon(icon_);
        shownKey_ = key;
    }
    sni_.setLabel(countBeside ? ToneIcon::countText(count) : QString());
    const QString summary = state_.statusSummary();
    if (toolTip_ != summary) {
        toolTip_ = summary;
        tray_.setToolTip(summary);
        sni_.setToolTip(summary);
    }
}
