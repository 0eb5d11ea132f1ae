#pragma once

#include "core/monitor/ActionState.h"
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
class Clock;
class Cancellation;
class InlineConfirmation;
class LetterBleed;
class MiniPrism;
class QMenu;
class ProgressLine;
class RowAction;
class StatusPalette;

// One monitored project in the panel's list: emblem, name, PREVIEW badge, age, a line about the
// latest deployment, the build's progress and the actions that fit it: "Copy for AI", "View log"
// and "Redeploy" after a failure, "Redeploy" and "View log" once canceled, "Cancel" while it runs,
// and "Copy URL" of a live deployment while the pointer is over the row. Redeploy and cancel ask
// first, inside the row. A click anywhere else opens the deployment in the dashboard; the context
// menu offers the same actions and mutes the project, and a muted project carries a crossed-out
// bell after its name.
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
    // Puts the live deployment's address on the clipboard, and says "Copied" for 2 seconds.
    void copyURL();
    // Opens the question of a redeploy or a cancel in the row; nothing is sent before confirm().
    void ask(DeploymentAction action);
    void confirm();
    void keep();

    // What is shown, for tests and the panel.
    bool isFresh() const;
    QString ageText() const;
    QString descriptionText() const;
    bool hasBadge() const;
    // The project's mute while it lasts; "Muted until 16:00" is the row's tooltip meanwhile.
    const std::optional<ProjectMute>& mute() const { return mute_; }
    QRectF muteMarkFrame() const;
    // What the context menu offers: the row's actions, then the mute choices.
    void fillContextMenu(QMenu& menu);
    QColor nameColor() const;
    QColor ageColor() const;
    QColor descriptionColor() const;
    double emblemOpacity() const;
    bool isCopied() const { return copied_; }
    bool isURLCopied() const { return urlCopied_; }
    // The action whose question is open in the row, if any.
    std::optional<DeploymentAction> asking() const { return asking_; }
    // Why the project's last action failed, while the row says so; empty otherwise.
    QString problemText() const;
    bool isHovering() const { return hovering_; }
    QRectF nameFrame() const { return nameFrame_; }
    QString shownName() const;
    RowAction* copyAction() const { return copy_; }
    RowAction* logAction() const { return log_; }
    RowAction* redeployAction() const { return redeploy_; }
    RowAction* cancelAction() const { return cancel_; }
    RowAction* copyURLAction() const { return copyURL_; }
    InlineConfirmation* confirmation() const { return confirmation_; }
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
    // At the row's width, or at `width` when given.
    Metrics metrics(std::optional<int> width = std::nullopt) const;
    QDateTime now() const;
    DeployStatus status() const;
    QColor statusColor() const;
    void applySnapshot();
    void applyCopied();
    void applyActions();
    // The capsules of the action line, in their order; empty when the row has none.
    QList<RowAction*> actionLine() const;
    bool isRunning(DeploymentAction action) const;
    double problemHeight(const Metrics& m) const;
    void layoutChildren();
    void setPointer(QPointF pointer, bool hovering);
    static QCoro::Task<> confirmCopy(QPointer<ProjectRow> self, AppState& state,
                                     ProjectSnapshot snap, std::shared_ptr<Cancellation> token);
    static QCoro::Task<> confirmURLCopy(QPointer<ProjectRow> self, Clock& clock,
                                        std::shared_ptr<Cancellation> token);

    AppState& state_;
    StatusPalette& palette_;
    ProjectSnapshot snap_;
    bool accent_ = false;
    std::optional<ProjectMute> mute_;
    bool hovering_ = false;
    QPointF pointer_;
    QRectF nameFrame_;
    bool copied_ = false;
    bool urlCopied_ = false;
    std::optional<DeploymentAction> asking_;
    std::optional<ActionState> action_;
    bool pressed_ = false;
    LinkOpener opener_;
    MiniPrism* emblem_;
    LetterBleed* bleed_;
    ProgressLine* progressLine_;
    RowAction* copy_;
    RowAction* log_;
    RowAction* redeploy_;
    RowAction* cancel_;
    RowAction* copyURL_;
    InlineConfirmation* confirmation_;
    QTimer redrawTimer_;
    // Wakes the confirmations' sleeps when the row goes away.
    std::shared_ptr<Cancellation> alive_;
};
