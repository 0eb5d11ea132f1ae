#pragma once

#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>

// A picture of how a widget looked a moment ago, laid over it and faded out, so a change of
// content reads as a transition instead of a jump. It takes no clicks and hides itself when done.
class CrossFade : public QWidget {
    Q_OBJECT
public:
    static constexpr int durationMs = 300;

    explicit CrossFade(QWidget* parent);

    // Lays `before` over the parent at full strength and starts fading it out.
    void start(const QPixmap& before);
    bool isRunning() const { return animation_.state() == QAbstractAnimation::Running; }
    // How strongly the old picture still shows, 1 at the start and 0 at the end.
    double strength() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap before_;
    QVariantAnimation animation_;
};
