#include "ui/status/ToneIconCache.h"

#include "core/monitor/StatusLines.h"
#include "ui/status/StatusPalette.h"
#include "ui/status/ToneIcon.h"

QIcon ToneIconCache::icon(Tone tone, int todayCount, const StatusPalette& palette,
                          const QColor& panelText) {
    const QString colorsKey = palette.signature() + panelText.name();
    if (colorsKey != colorsKey_) {
        icons_.clear();
        colorsKey_ = colorsKey;
    }
    const QString count = ToneIcon::countText(todayCount);
    const QString key = toneName(tone) + u'/' + count;
    if (const auto found = icons_.constFind(key); found != icons_.constEnd())
        return *found;
    const ToneIconLook look{palette.toneColor(tone).value_or(panelText), tone == Tone::error, count,
                            panelText};
    QIcon drawn = ToneIcon::icon(look);
    ++drawCount_;
    icons_.insert(key, drawn);
    return drawn;
}
