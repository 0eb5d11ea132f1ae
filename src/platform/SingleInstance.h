#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <chrono>
#include <functional>

// One Quillon per session: the running instance owns the session-bus name com.fernhollow.Quillon
// and answers at /com/fernhollow/Quillon (interface com.fernhollow.Quillon). A second launch
// finds the name taken and asks the running one to bring its Settings window forward instead
// of adding a second tray icon. Without a session bus nothing is enforced. The methods of the
// bus object are this class's scriptable slots, so a new method is one more slot.
class SingleInstance : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.fernhollow.Quillon")
public:
    static const QString serviceName; // "com.fernhollow.Quillon"
    static const QString objectPath;  // "/com/fernhollow/Quillon"
    // No D-Bus call may freeze a start-up: the bus or the other instance may hang.
    static constexpr std::chrono::milliseconds callTimeout{2000};

    enum class Claim {
        owned,      // this process is the one instance and serves the bus object
        forwarded,  // another instance runs and brought its Settings window forward
        unanswered, // another instance owns the name but did not answer; see problem()
        noBus,      // no usable session bus: run without the guarantee
    };

    explicit SingleInstance(QDBusConnection bus = QDBusConnection::sessionBus(),
                            QObject* parent = nullptr);
    ~SingleInstance() override;

    Claim claim();
    // What Status answers: the running application's picture as one line of JSON.
    void setStatusSource(std::function<QString()> source) { statusSource_ = std::move(source); }
    QString problem() const { return problem_; }

public Q_SLOTS:
    // Called over the bus by a second launch.
    Q_SCRIPTABLE void ShowSettings();
    // Lets a status bar follow Quillon without polling Vercel a second time.
    Q_SCRIPTABLE QString Status();

Q_SIGNALS:
    void showSettingsRequested();

private:
    Claim askOwnerToShowSettings();

    QDBusConnection bus_;
    bool registered_ = false;
    QString problem_;
    std::function<QString()> statusSource_;
};
