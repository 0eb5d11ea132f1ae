#pragma once

#include <QDBusArgument>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QIcon>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QString>
#include <functional>

// One image of an item's icon as a StatusNotifierItem host reads it: ARGB32 in network order.
struct SniPixmap {
    int width = 0;
    int height = 0;
    QByteArray argb;
};
using SniPixmaps = QList<SniPixmap>;

struct SniToolTip {
    QString iconName;
    SniPixmaps icon;
    QString title;
    QString text;
};

QDBusArgument& operator<<(QDBusArgument& argument, const SniPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, SniPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const SniToolTip& tip);
const QDBusArgument& operator>>(const QDBusArgument& argument, SniToolTip& tip);

Q_DECLARE_METATYPE(SniPixmap)
Q_DECLARE_METATYPE(SniToolTip)

// The tray item served on the session bus to a StatusNotifierItem host (KDE Plasma, GNOME's
// AppIndicator extension, XFCE 4.18, waybar …). Qt serves one too, but drops the position that
// Activate and ContextMenu carry; the panel and the capsule need it, since such a host tells
// nothing else about where the icon is. The context menu is exported for hosts that draw it
// themselves; a host that asks for ContextMenu(x, y) instead gets the application's own menu.
class DBusMenuExporter;
class QMenu;

class StatusNotifierItem : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconName READ emptyName)
    Q_PROPERTY(SniPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(QString OverlayIconName READ emptyName)
    Q_PROPERTY(SniPixmaps OverlayIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionIconName READ emptyName)
    Q_PROPERTY(SniPixmaps AttentionIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionMovieName READ emptyName)
    Q_PROPERTY(SniToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    // Text drawn beside the icon by hosts that draw labels (GNOME's AppIndicator extension).
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide)

public:
    explicit StatusNotifierItem(QObject* parent = nullptr);
    ~StatusNotifierItem() override;

    // Whether a host shows StatusNotifierItems on this session bus now.
    static bool hostRuns();
    // Serves the item and registers it with the watcher; false when either failed.
    bool publish();
    bool isPublished() const { return published_; }
    // Calls `onHost` once, when a host shows up on the bus later: a bar that starts with the
    // session often comes after the applications.
    void awaitHost(std::function<void()> onHost);

    void setIcon(const QIcon& icon);
    void setToolTip(const QString& text);
    // Empty for none. Only hosts that draw labels show it.
    void setLabel(const QString& text);
    // Whether the host that shows the item draws its label beside the icon: then the icon can
    // leave the text out. Known once published.
    bool hostShowsLabel() const { return hostShowsLabel_; }
    // Exported as it is now and after every change; set before publish().
    void setMenu(QMenu& menu);

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const { return QStringLiteral("quillon"); }
    QString title() const { return QStringLiteral("Quillon"); }
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    QString emptyName() const { return {}; }
    SniPixmaps iconPixmap() const { return pixmaps_; }
    SniPixmaps noPixmaps() const { return {}; }
    SniToolTip toolTip() const;
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const;
    QString label() const { return label_; }
    QString labelGuide() const { return QStringLiteral("99+"); } // the widest label

public Q_SLOTS:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);
    // Sent by hosts before Activate: lets a window of ours take the keyboard on Wayland.
    void ProvideXdgActivationToken(const QString& token) { activationToken_ = token; }

public:
    // The token the host gave with its last click, once.
    QString takeActivationToken() { return std::exchange(activationToken_, QString()); }

Q_SIGNALS:
    // Both at the position the host gave, in screen coordinates.
    void activated(QPoint position);
    void contextMenuRequested(QPoint position);

    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewToolTip();
    Q_SCRIPTABLE void NewTitle();
    Q_SCRIPTABLE void NewStatus(const QString& status);
    Q_SCRIPTABLE void XAyatanaNewLabel(const QString& label, const QString& guide);

private Q_SLOTS:
    void checkForHost();

private:
    bool registerWithWatcher();
    // The screen position of a click the calling host reports.
    QPoint clickOnScreen(int x, int y) const;

    DBusMenuExporter* menuExporter_ = nullptr;
    QString service_;
    SniPixmaps pixmaps_;
    QString toolTip_;
    QString label_;
    QString activationToken_;
    bool published_ = false;
    bool hostShowsLabel_ = false;
    std::function<void()> onHost_;
};
