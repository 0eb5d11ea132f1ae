#pragma once

#include <QColor>
#include <QTimer>
#include <QWidget>

// A small spinner: the "spinner" symbol turning a step at a time, only while it is shown.
class Spinner : public QWidget {
    Q_OBJECT
public:
    Spinner(QColor color, int size, QWidget* parent = nullptr);

    bool isSpinning() const { return timer_.isActive(); }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QColor color_;
    double angle_ = 0;
    QTimer timer_;
};
