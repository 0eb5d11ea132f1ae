#pragma once

#include "core/monitor/ConnectionState.h"

#include <QColor>
#include <QHash>
#include <QIcon>
#include <QString>

class StatusPalette;

// The tray icons drawn so far, per tone and count text. The cache remembers the palette
// signature and the panel's text colour it was filled with and empties itself when either
// changes, so an icon is drawn at most once per tone, count and set of colours.
class ToneIconCache {
public:
    // `panelText`: the desktop panel's text colour, for neutral tones and the count.
    QIcon icon(Tone tone, int todayCount, const StatusPalette& palette, const QColor& panelText);

    int size() const { return static_cast<int>(icons_.size()); }
    // How many icons were drawn in all (tests count redraws with it).
    int drawCount() const { return drawCount_; }

private:
    QString colorsKey_;
    QHash<QString, QIcon> icons_;
    int drawCount_ = 0;
};
