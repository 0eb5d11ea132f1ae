#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <optional>

// The software updater as the Settings window sees it: turn automatic checks on or off, check
// now, and read what the last check found. The application creates one and hands it to the
// views; without one, the views only store the preference.
class UpdateService : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // Called with the user's choice whenever it changes (and once at start).
    virtual void setAutomaticallyChecksForUpdates(bool enabled) = 0;
    // Starts a check at once; the result arrives through resultChanged().
    virtual void checkForUpdates() = 0;
    virtual bool isChecking() const = 0;
    // What the last check found, in the user's language; empty before the first check.
    virtual QString resultText() const = 0;
    // The download page of a newer version, when the last check found one.
    virtual std::optional<QUrl> downloadPage() const = 0;
    // That newer version ("1.2.0"), when the last check found one.
    virtual std::optional<QString> newerVersion() const { return std::nullopt; }

Q_SIGNALS:
    void resultChanged();
};
