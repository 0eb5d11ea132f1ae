#pragma once

#include "core/monitor/Clock.h"
#include "core/monitor/ConnectionState.h"
#include "core/vercel/ProjectSnapshot.h"

#include <QObject>
#include <memory>

class AppState;
class LiveActivityController;

// A scripted fake deployment that shows the three status colours in the tray icon and in the
// Live Activity capsule for 12 seconds, without any network traffic or notification: queued,
// building, live, failed, then back to the real state.
class ColorPreview : public QObject {
    Q_OBJECT
public:
    struct Step {
        ProjectSnapshot snapshot;
        Tone tone;
        std::chrono::milliseconds hold;
    };

    ColorPreview(AppState& state, LiveActivityController& controller, QObject* parent = nullptr);
    ~ColorPreview() override;

    // Starts a run; a run already going stops changing anything and leaves the stage to this one.
    void previewColors();
    bool isPreviewingColors() const { return previewing_; }

    // The four steps of a run starting at `start`, in the interface language.
    static QList<Step> steps(const QDateTime& start);

Q_SIGNALS:
    void previewingChanged(bool previewing);

private:
    void setPreviewing(bool previewing);
    static QCoro::Task<> run(QPointer<ColorPreview> self, QList<Step> steps,
                             std::shared_ptr<Cancellation> token);

    AppState& state_;
    LiveActivityController& controller_;
    std::shared_ptr<Cancellation> task_;
    bool previewing_ = false;
};
