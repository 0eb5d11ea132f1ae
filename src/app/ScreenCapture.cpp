#include "app/ScreenCapture.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <cstdio>

namespace ScreenCapture {

void saveAfter(const QString& path, std::chrono::milliseconds delay) {
    QTimer::singleShot(delay, qApp, [path] {
        QScreen* screen = QGuiApplication::primaryScreen();
        const bool saved = screen && screen->grabWindow(0).save(path, "PNG");
        if (!saved)
            std::fprintf(stderr, "quillon: could not save a screenshot to %s\n", qPrintable(path));
        QCoreApplication::exit(saved ? 0 : 1);
    });
}

} // namespace ScreenCapture
