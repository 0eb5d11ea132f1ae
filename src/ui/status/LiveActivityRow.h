#pragma once

#include "core/vercel/ProjectSnapshot.h"

#include <QDateTime>
#include <QFont>
#include <QWidget>

class MiniPrism;
class ProgressLine;
class StatusPalette;

// One project in the Live Activity capsule, 380 × 62: the status emblem, the name (with the
// count of projects left out, on the first row), a subtitle, the trailing status or running
// time, and a progress line while the deployment runs. The whole row is one button; its context
// menu (right click or the menu key) is the controller's.
class LiveActivityRow : public QWidget {
    Q_OBJECT
public:
    static constexpr int rowWidth = 380;
    static constexpr int rowHeight = 62;
    static constexpr double padding = 18;
    static constexpr double emblemScale = 1.15;

    LiveActivityRow(const StatusPalette& palette, QWidget* parent = nullptr);

    void setSnapshot(const ProjectSnapshot& snapshot, int overflow, const QDateTime& now,
                     bool french);
    // The row clock: advances the running time and the progress.
    void setNow(const QDateTime& now);
    const ProjectSnapshot& snapshot() const { return snapshot_; }

    // What is drawn, for tests.
    QString nameText() const;
    QString overflowText() const;
    QString subtitleText() const { return subtitle_; }
    QString trailingText() const { return trailing_; }
    MiniPrism* emblem() const { return emblem_; }
    ProgressLine* progressLine() const { return line_; }

    static QFont nameFont();
    static QFont overflowFont();
    static QFont subtitleFont();
    static QFont trailingFont();

Q_SIGNALS:
    void tapped();
    void menuRequested(const QPoint& globalPosition);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Layout;
    Layout layout() const;
    void placeChildren();

    const StatusPalette& palette_;
    ProjectSnapshot snapshot_;
    int overflow_ = 0;
    bool french_ = false;
    QString subtitle_;
    QString trailing_;
    MiniPrism* emblem_;
    ProgressLine* line_;
};
