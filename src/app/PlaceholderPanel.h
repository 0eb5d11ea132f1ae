#pragma once

#include <QLabel>
#include <QPushButton>
#include <QWidget>

class AppState;
class ColorPreview;

// A small stand-in for the drop-down panel: the status summary, the colour preview's Test button
// and Quit.
class PlaceholderPanel : public QWidget {
    Q_OBJECT
public:
    PlaceholderPanel(AppState& state, ColorPreview& preview);

    // Opens just below `anchor` (a point on screen), kept inside that screen.
    void popUpAt(const QPoint& anchor);

private:
    void refresh();

    AppState& state_;
    ColorPreview& preview_;
    QLabel summary_;
    QPushButton test_;
    QPushButton quit_;
};
