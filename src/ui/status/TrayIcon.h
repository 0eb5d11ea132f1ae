#pragma once

#include "ui/status/ToneIconCache.h"

#include <QObject>
#include <QPoint>
#include <QSystemTrayIcon>

class AppState;
class StatusPalette;

// The tray item: the triangle of the overall tone with today's count, and the status summary
// as its tooltip. It redraws when the engine or the palette announces a change, and when the
// desktop's colours change (neutral tones take the panel's text colour); it never polls.
class TrayIcon : public QObject {
    Q_OBJECT
public:
    TrayIcon(AppState& state, StatusPalette& palette, QObject* parent = nullptr);

    QSystemTrayIcon& systemTrayIcon() { return tray_; }
    const ToneIconCache& cache() const { return cache_; }
    // The tray's own rectangle on screen, when the tray tells it.
    std::optional<QRect> geometry() const;

    // Reads the state and the palette again; does nothing visible when neither changed.
    void refresh();

Q_SIGNALS:
    // A left click, at the pointer's position on screen.
    void clicked(QPoint position);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static QColor panelText();

    AppState& state_;
    StatusPalette& palette_;
    QSystemTrayIcon tray_;
    ToneIconCache cache_;
    QString shownKey_;
};
