#pragma once

#include "core/monitor/ConnectionState.h"
#include "core/vercel/ProjectSnapshot.h"

#include <QColor>
#include <QList>
#include <QPointer>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>
#include <optional>

class AppState;
class PrismHero;
class ProjectRow;
class QLabel;
class QScrollArea;
class QToolButton;
class QVBoxLayout;
class StatusPalette;

// The content of the drop-down window under the tray icon: a header with the emblem, the status
// line and a refresh button; a body that follows the connection (a spinner, an empty-state card
// or the monitored projects); a footer with Settings, the age of the last refresh and Quit. It
// only reads AppState and calls its operations.
class PanelView : public QWidget {
    Q_OBJECT
public:
    static constexpr int panelWidth = 320;
    static constexpr int maxGrowingRows = 9;
    static constexpr int scrollHeight = 450;
    static constexpr int footerTickMs = 10000;

    enum class Body { failed, checking, noToken, loading, noProjects, list };

    PanelView(AppState& state, StatusPalette& palette, QWidget* parent = nullptr);
    ~PanelView() override;

    // Which body a state shows.
    static Body bodyFor(const Connection& connection, bool hasSnapshots, bool hasLoadedOnce);
    // The most recently deployed READY project; on equal times the earlier one wins.
    static std::optional<QString> accentProjectId(const QList<ProjectSnapshot>& snapshots);
    // Colour of the status dot for a tone.
    static QColor dotColor(Tone tone, const StatusPalette& palette);

    // What is shown, for tests and the window.
    Body body() const { return body_; }
    std::optional<QString> accentId() const { return accentId_; }
    QList<ProjectRow*> rows() const { return rows_; }
    bool isScrolling() const { return scroll_ != nullptr; }
    QScrollArea* scrollArea() const { return scroll_; }
    QToolButton* refreshButton() const { return refresh_; }
    QToolButton* settingsButton() const { return settings_; }
    QToolButton* quitButton() const { return quit_; }
    QString statusText() const;
    QString lastRefreshText() const;
    // What keeps part of the account from being watched, one line each; empty when nothing does.
    QString noticesText() const;
    QString bodyTitle() const;
    QString bodyMessage() const;
    QWidget* bodyButton() const { return bodyButton_; }
    PrismHero* hero() const { return hero_; }

    // Redraws everything from the state.
    void redraw();
    // Re-evaluates the age of the last refresh.
    void updateFooter();
    // Height at the fixed width, so the window follows the content.
    int fittingHeight() const;

Q_SIGNALS:
    // Every Settings entry point of the panel; the Settings window listens for it.
    void quillonOpenSettings();
    // Emitted after the panel changed its height, so the window can follow.
    void contentResized();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void buildHeader(QVBoxLayout* root);
    void buildFooter(QVBoxLayout* root);
    void rebuildBody();
    void updateRows();
    void updateHeader();
    void updateNotices();
    void updateRefreshSpin();
    // Follows the content's height: a row that asks a question or tells a problem grows.
    void fitHeight();
    void setRefreshAngle(double angle);
    void openSettings();
    QWidget* makeCard(const QString& symbol, const QString& title, const QString& message,
                      const QString& button);
    QWidget* makeSpinner(const QString& label);
    QWidget* makeList();

    AppState& state_;
    StatusPalette& palette_;
    Body body_ = Body::noToken;
    std::optional<QString> accentId_;
    QStringList rowIds_;
    QString builtLanguageKey_;
    QString builtDetail_;
    QVBoxLayout* bodyHolder_ = nullptr;
    QPointer<QWidget> bodyWidget_;
    QList<ProjectRow*> rows_;
    QScrollArea* scroll_ = nullptr;
    QLabel* cardTitle_ = nullptr;
    QLabel* cardMessage_ = nullptr;
    QWidget* bodyButton_ = nullptr;
    PrismHero* hero_ = nullptr;
    QLabel* status_ = nullptr;
    QLabel* notices_ = nullptr;
    QStringList shownNotices_;
    QToolButton* refresh_ = nullptr;
    QToolButton* settings_ = nullptr;
    QToolButton* quit_ = nullptr;
    QLabel* lastRefresh_ = nullptr;
    QTimer footerTimer_;
    QTimer spinTimer_;
    QVariantAnimation spinSettle_;
    double spinAngle_ = 0;
};
