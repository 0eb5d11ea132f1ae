#pragma once

#include <QDBusArgument>
#include <QDBusContext>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariantMap>

class QMenu;

// One entry of an exported menu with its children, as com.canonical.dbusmenu lays it out.
struct DBusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<DBusMenuLayout> children;
};
struct DBusMenuItem {
    int id = 0;
    QVariantMap properties;
};
using DBusMenuItems = QList<DBusMenuItem>;
struct DBusMenuEvent {
    int id = 0;
    QString eventId;
    QDBusVariant data;
    uint timestamp = 0;
};
using DBusMenuEvents = QList<DBusMenuEvent>;

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuItem& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuItem& item);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event);

Q_DECLARE_METATYPE(DBusMenuLayout)
Q_DECLARE_METATYPE(DBusMenuItem)
Q_DECLARE_METATYPE(DBusMenuEvent)

// The tray's menu served on the session bus, for StatusNotifierItem hosts that draw the menu
// themselves (XFCE and waybar show no menu otherwise). A flat menu of the QMenu's actions:
// labels, separators and disabled entries; a click triggers the action. Hosts are told of every
// change, so a menu rebuilt while open shows its new entries. GNOME Shell is shown an empty
// menu: its AppIndicator extension opens a menu that has entries on a left click, instead of
// activating the item.
class DBusMenuExporter : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    static const QString path;

    explicit DBusMenuExporter(QMenu& menu, QObject* parent = nullptr);

    uint version() const { return 3; }
    QString textDirection() const { return QStringLiteral("ltr"); }
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                   DBusMenuLayout& layout);
    DBusMenuItems GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const DBusMenuEvents& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    Q_SCRIPTABLE void ItemsPropertiesUpdated(const DBusMenuItems& updated,
                                             const DBusMenuItems& removed);
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);
    Q_SCRIPTABLE void ItemActivationRequested(int id, uint timestamp);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QVariantMap properties(int id) const;
    bool trigger(int id);

    QPointer<QMenu> menu_;
    // Compared as a plain object: the menu reports its actions' removal while it is destroyed,
    // when it is no longer a QMenu.
    const QObject* watched_;
    uint revision_ = 1;
    bool changePending_ = false;
};
