#pragma once

#include "core/monitor/ProjectMute.h"
#include "core/vercel/ProjectSnapshot.h"

#include <QColor>
#include <QCoro/QCoroTask>
#include <QPointF>
#include <QPointer>
#include <QRectF>
#include <QTimer>
#include <QUrl>
#include <QWidget>
#include <functional>
#include <memory>

class AppState;
class Cancellation;
class LetterBleed;
class MiniPrism;
class QMenu;
class ProgressLine;
class RowAction;
class StatusPalette;

// One monitored project in the panel's list: emblem, name, PREVIEW badge, age, a line about the
// latest deployment, the build's progress and, after a failure, "Copy for AI" and "View log".
// A click anywhere opens the deployment in the dashboard; the context menu mutes the project, and a
// muted project carries a crossed-out bell after its name.
class ProjectRow : public QWidget {
    Q_OBJECT
public:
    static constexpr double paddingX = 14;
    static constexpr double paddingY = 9;
    static constexpr double emblemSpacing = 11;
    static constexpr double staleEmblemOpacity = 0.35;
    static constexpr int inProgressRedrawMs = 1000;
    static constexpr int idleRedrawMs = 30000;
    static constexpr std::chrono::milliseconds copiedDuration{2000};

    // Text on the dark panel, from most to least prominent.
    static QColor primaryText();
    static QColor secondaryText();
    static QColor tertiaryText();
    static QColor quaternaryText();

    using LinkOpener = std::function<void(const QUrl&)>;

    ProjectRow(AppState& state, StatusPalette& palette, QWidget* parent = nullptr);
    ~ProjectRow() override;

    void setSnapshot(const ProjectSnapshot& snap, bool accent);
    const ProjectSnapshot& snapshot() const { return snap_; }
    // Replaces the default browser call (QDesktopServices::openUrl).
    void setLinkOpener(LinkOpener opener) { opener_ = std::move(opener); }

    // The redraw that refreshes every time-dependent value.
    void redraw();
    // Opens the dashboard link, when one can be formed.
    void openDashboard();
    void copyForAI();

    // What is shown, for tests and the panel.
    bool isFresh() const;
    QString ageText() const;
    QString descriptionText() const;
    bool hasBadge() const;
    // The project's mute while it lasts; "Muted until 16:00" is the row's tooltip meanwhile.
    const std::optional<ProjectMute>& mute() const { return mute_; }
    QRectF muteMarkFrame() const;
    // What the context menu offers: the mute choices.
    void fillContextMenu(QMenu& menu);
    QColor nameColor() const;
    QColor ageColor() const;
    QColor descriptionColor() const;
    double emblemOpacity() const;
    bool isCopied() const { return copied_; }
    bool isHovering() const { return hovering_; }
    QRectF nameFrame() const { return nameFrame_; }
    QString shownName() const;
    RowAction* copyAction() const { return copy_; }
    RowAction* logAction() const { return log_; }
    ProgressLine* progressLine() const { return progressLine_; }
    MiniPrism* emblem() const { return emblem_; }
    LetterBleed* letterBleed() const { return bleed_; }
    bool isRedrawing() const { return redrawTimer_.isActive(); }
    int redrawInterval() const { return redrawTimer_.interval(); }

    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    struct Metrics;
    Metrics metrics() const;
    QDateTime now() const;
    DeployStatus status() const;
    QColor statusColor() const;
    void applySnapshot();
    void applyCopied();
    void layoutChildren();
    void setPointer(QPointF pointer, bool hovering);
    static QCoro::Task<> confirmCopy(QPointer<ProjectRow> self, AppState& state,
                                     ProjectSnapshot snap, std::shared_ptr<Cancellation> token);

    AppState& state_;
    StatusPalette& palette_;
    ProjectSnapshot snap_;
    bool accent_ = false;
    std::optional<ProjectMute> mute_;
    bool hovering_ = false;
    QPointF pointer_;
    QRectF nameFrame_;
    bool copied_ = false;
    bool pressed_ = false;
    LinkOpener opener_;
    MiniPrism* emblem_;
    LetterBleed* bleed_;
    ProgressLine* progressLine_;
    RowAction* copy_;
    RowAction* log_;
    QTimer redrawTimer_;
    // Wakes the confirmations' sleeps when the row goes away.
    std::shared_ptr<Cancellation> alive_;
};
