#pragma once

#include "core/monitor/Clock.h"
#include "core/vercel/ProjectRef.h"
#include "core/vercel/ProjectSnapshot.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>

// Plays six fake projects and their deployments on timers, without any network, so the whole
// application can be shown without an account. Main thread only.
class DemoDirector : public QObject {
    Q_OBJECT
public:
    struct Project {
        QString name;
        double median; // seconds
    };

    explicit DemoDirector(Clock& clock, QObject* parent = nullptr);
    ~DemoDirector() override;

    static const QList<Project>& projects();
    // The demo account's user: it starts every fake deployment, so "only my deployments" keeps
    // the demo speaking.
    static QString userId();

    // QUILLON_DEMO_SPEED: every wait of the demo is divided by this factor, so a recording or an
    // end-to-end run need not sit through real build times. 1 when unset or not a positive number.
    static double speedFromEnvironment();

    // Called after every change of the fake data.
    std::function<void()> onChange;

    // Seeds the history. The desktop's hot keys are registered by whoever owns the window system.
    void start();

    // The scenes bound to the digit keys: 1 deploy my-saas, 2 api fails, 3 three projects,
    // 4 api fixed, 5 toggle autoplay, 0 reset the history. Other keys do nothing.
    void runScene(int key);
    void seedHistory();
    void toggleAutoplay();
    bool isAutoplaying() const { return autoplay_ != nullptr; }

    // Builds the project's latest deployment again, as Vercel would: a new deployment of the same
    // commit and target, queued, then building, then live. Absent when the project has none.
    std::optional<VercelDeployment> redeploy(const QString& project);
    // Stops the project's queued or running deployment, which turns canceled; false when none
    // runs.
    bool cancel(const QString& project);

    int todayCount() const { return todayCount_; }
    QList<ProjectSnapshot> snapshots() const;
    QList<ProjectRef> projectRefs() const;
    std::optional<VercelDeployment> latest(const QString& project) const;

    // The fake build log of a project's failed build: a TypeScript error in the checkout webhook.
    static QStringList buildLog(const QString& project);
    // "%016llx" of a seeded 64-bit FNV-1a hash of the message, then a fixed tail (36 characters).
    static QString fakeSHA(const QString& message);

private:
    struct Play {
        QString project;
        QString message;
        QString branch;
        bool production = true;
        double buildSeconds = 0;
        bool fails = false;
        double delaySeconds = 0;
    };
    void play(const Play& play);
    QCoro::Task<> runPlay(Play play, std::shared_ptr<Cancellation> token);
    QCoro::Task<> runAutoplay(std::shared_ptr<Cancellation> token);
    VercelDeployment newDeployment(const Play& play) const;
    double medianOf(const QString& project) const;
    void changed();
    std::chrono::milliseconds scaled(double seconds) const;

    Clock& clock_;
    const double speed_ = speedFromEnvironment();
    int todayCount_ = 0;
    QHash<QString, VercelDeployment> latest_;
    QHash<QString, std::shared_ptr<Cancellation>> tasks_;
    std::shared_ptr<Cancellation> autoplay_;
};
