#include "ui/status/DBusMenuExporter.h"

#include "ui/status/SniClickPosition.h"

#include <QAction>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QEvent>
#include <QMenu>
#include <QTimer>

const QString DBusMenuExporter::path = QStringLiteral("/MenuBar");

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout) {
    argument.beginStructure();
    argument << layout.id << layout.properties;
    argument.beginArray(qMetaTypeId<QDBusVariant>());
    for (const DBusMenuLayout& child : layout.children)
        argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout) {
    argument.beginStructure();
    argument >> layout.id >> layout.properties;
    argument.beginArray();
    layout.children.clear();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        layout.children.append(qdbus_cast<DBusMenuLayout>(child.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuItem& item) {
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuItem& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event) {
    argument.beginStructure();
    argument << event.id << event.eventId << event.data << event.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event) {
    argument.beginStructure();
    argument >> event.id >> event.eventId >> event.data >> event.timestamp;
    argument.endStructure();
    return argument;
}

DBusMenuExporter::DBusMenuExporter(QMenu& menu, QObject* parent)
    : QObject(parent), menu_(&menu), watched_(&menu) {
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuItem>();
    qDBusRegisterMetaType<DBusMenuItems>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<DBusMenuEvents>();
    qDBusRegisterMetaType<QList<int>>();
    menu.installEventFilter(this);
}

// Entry n (from 1) is the menu's action n - 1; 0 is the menu itself.
QVariantMap DBusMenuExporter::properties(int id) const {
    if (id == 0)
        return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
    const QList<QAction*> actions = menu_ ? menu_->actions() : QList<QAction*>();
    if (id < 1 || id > actions.size())
        return {};
    const QAction* action = actions.at(id - 1);
    if (action->isSeparator())
        return {{QStringLiteral("type"), QStringLiteral("separator")}};
    // An underscore marks a mnemonic there; "&" does here.
    QString label = action->text();
    label.replace(QLatin1Char('_'), QStringLiteral("__")).replace(QLatin1Char('&'), u'_');
    QVariantMap properties{{QStringLiteral("label"), label}};
    if (!action->isEnabled())
        properties.insert(QStringLiteral("enabled"), false);
    if (!action->isVisible())
        properties.insert(QStringLiteral("visible"), false);
    return properties;
}

uint DBusMenuExporter::GetLayout(int parentId, int recursionDepth, const QStringList&,
                                 DBusMenuLayout& layout) {
    layout = {parentId, properties(parentId), {}};
    const bool toGnomeShell =
        calledFromDBus() &&
        SniClickPosition::isGnomeShell(SniClickPosition::programOf(message().service()));
    if (parentId == 0 && recursionDepth != 0 && menu_ && !toGnomeShell) {
        for (int id = 1; id <= menu_->actions().size(); ++id)
            layout.children.append({id, properties(id), {}});
    }
    return revision_;
}

DBusMenuItems DBusMenuExporter::GetGroupProperties(const QList<int>& ids, const QStringList&) {
    DBusMenuItems items;
    for (const int id : ids)
        items.append({id, properties(id)});
    return items;
}

QDBusVariant DBusMenuExporter::GetProperty(int id, const QString& name) {
    return QDBusVariant(properties(id).value(name));
}

void DBusMenuExporter::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
    if (eventId == QLatin1String("clicked"))
        trigger(id);
}

QList<int> DBusMenuExporter::EventGroup(const DBusMenuEvents& events) {
    QList<int> errors;
    for (const DBusMenuEvent& event : events) {
        if (event.eventId == QLatin1String("clicked") && !trigger(event.id))
            errors.append(event.id);
    }
    return errors;
}

bool DBusMenuExporter::AboutToShow(int) {
    return false; // the layout is always current
}

QList<int> DBusMenuExporter::AboutToShowGroup(const QList<int>&, QList<int>& idErrors) {
    idErrors.clear();
    return {};
}

bool DBusMenuExporter::trigger(int id) {
    const QList<QAction*> actions = menu_ ? menu_->actions() : QList<QAction*>();
    if (id < 1 || id > actions.size())
        return false;
    // After the host's call has been answered: an action may rebuild the menu or open a window.
    QPointer<QAction> action = actions.at(id - 1);
    QTimer::singleShot(0, this, [action] {
        if (action && action->isEnabled())
            action->trigger();
    });
    return true;
}

bool DBusMenuExporter::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (watched == watched_ && !changePending_ &&
        (type == QEvent::ActionAdded || type == QEvent::ActionRemoved ||
         type == QEvent::ActionChanged)) {
        // A rebuild adds and removes every entry: hosts hear of it once.
        changePending_ = true;
        QTimer::singleShot(0, this, [this] {
            changePending_ = false;
            Q_EMIT LayoutUpdated(++revision_, 0);
        });
    }
    return QObject::eventFilter(watched, event);
}
