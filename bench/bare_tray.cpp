// The smallest Qt Widgets tray application: the yardstick for Quillon's idle memory and CPU in
// scripts/measure-idle. One icon drawn once, a tooltip, a menu with Quit, nothing else.
#include <QApplication>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QPixmap pixmap(22, 22);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::cyan, 2));
    painter.drawPolygon(QPolygonF({{11, 3}, {19, 17}, {3, 17}}));
    painter.end();
    QSystemTrayIcon tray{QIcon(pixmap)};
    tray.setToolTip(QStringLiteral("bare tray"));
    QMenu menu;
    QObject::connect(menu.addAction(QStringLiteral("Quit")), &QAction::triggered, &app,
                     &QCoreApplication::quit);
    tray.setContextMenu(&menu);
    tray.show();
    return app.exec();
}
