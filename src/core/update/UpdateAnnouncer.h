#pragma once

#include <QObject>

class NotificationService;
class Preferences;
class UpdateService;

// Tells the user once per version that a newer Quillon is out: a notification whose click opens
// the download page, whichever check found it (the daily one or "Check now"). The last version
// told is kept in the preferences, so a restart does not tell it again.
class UpdateAnnouncer : public QObject {
    Q_OBJECT
public:
    static const QString announcedKey; // "announcedUpdateVersion"

    UpdateAnnouncer(UpdateService& updater, NotificationService& notifications,
                    Preferences& preferences, QObject* parent = nullptr);

private:
    void announce();

    UpdateService& updater_;
    NotificationService& notifications_;
    Preferences& preferences_;
};
