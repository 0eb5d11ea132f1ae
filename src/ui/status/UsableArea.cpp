#include "ui/status/UsableArea.h"

#include "ui/status/SwayWorkArea.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QScreen>

namespace {

// One click places the panel from several look-ups, and bars seldom change: sway's answer is
// kept for a moment rather than asked for each time.
std::optional<QRect> swayUsableAreaRecently(const QRect& screen) {
    constexpr int keptMs = 2000;
    struct Answer {
        QRect screen;
        std::optional<QRect> area;
        QDeadlineTimer fresh; // expired until the first answer
    };
    static Answer last;
    if (last.screen != screen || last.fresh.hasExpired())
        last = {screen, swayUsableArea(screen), QDeadlineTimer(keptMs)};
    return last.area;
}

} // namespace

std::optional<QRect> usableAreaAt(const std::optional<QPoint>& point) {
    QScreen* screen = point ? QGuiApplication::screenAt(*point) : nullptr;
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return std::nullopt;
    const QRect available = screen->availableGeometry();
    if (available != screen->geometry())
        return available;
    return swayUsableAreaRecently(available).value_or(available);
}
