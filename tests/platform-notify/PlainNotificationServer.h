#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

// A notification server that shows no buttons unless told: it reports only "body" among its
// capabilities by default and records the actions each Notify call asked for.
class PlainNotificationServer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QList<QStringList> requestedActions;
    QStringList capabilities{QStringLiteral("body")};

public Q_SLOTS:
    QStringList GetCapabilities() { return capabilities; }
    uint Notify(const QString&, uint, const QString&, const QString&, const QString&,
                const QStringList& actions, const QVariantMap&, int) {
        requestedActions.append(actions);
        return uint(requestedActions.size());
    }
    void CloseNotification(uint) {}
    QString GetServerInformation(QString& vendor, QString& version, QString& protocolVersion) {
        vendor = QStringLiteral("test");
        version = QStringLiteral("1");
        protocolVersion = QStringLiteral("1.2");
        return QStringLiteral("plain");
    }
};
