#include "ui/panel/PopupShield.h"

#include "ui/status/X11Connection.h"

#include <QEvent>

namespace {

void setX11Property(WId window, const char* name, const char* type, int format, const void* data,
                    uint32_t length) {
    xcb_connection_t* connection = x11Connection();
    if (!connection)
        return;
    const xcb_atom_t property = x11Atom(connection, name);
    const xcb_atom_t kind = x11Atom(connection, type);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window),
                        property, kind, uint8_t(format), length, data);
    xcb_flush(connection);
}

} // namespace

PopupShield::PopupShield(QWidget& popup, Bars bars)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      popup_(&popup) {
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowTitle(QStringLiteral("Quillon"));
    if (bars == Bars::takeClicks) {
        bars_ = std::make_unique<QWidget>(nullptr, Qt::Window | Qt::FramelessWindowHint |
                                                       Qt::X11BypassWindowManagerHint |
                                                       Qt::WindowStaysOnTopHint);
        bars_->setAttribute(Qt::WA_TranslucentBackground);
        bars_->setAttribute(Qt::WA_ShowWithoutActivating);
    }
    popup.installEventFilter(this);
}

PopupShield::~PopupShield() = default;

void PopupShield::cover(const QRect& screen, const QRect& area, const QString& activationToken) {
    if (bars_) {
        bars_->setGeometry(screen);
        bars_->show();
    }
    setGeometry(area);
    const WId window = winId();
    // Neither in the taskbar nor in the window switcher.
    xcb_connection_t* connection = x11Connection();
    if (connection) {
        const xcb_atom_t states[] = {x11Atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
                                     x11Atom(connection, "_NET_WM_STATE_SKIP_PAGER"),
                                     x11Atom(connection, "_NET_WM_STATE_ABOVE")};
        setX11Property(window, "_NET_WM_STATE", "ATOM", 32, states, 3);
        if (!activationToken.isEmpty()) {
            const QByteArray id = activationToken.toUtf8();
            setX11Property(window, "_NET_STARTUP_ID", "UTF8_STRING", 8, id.constData(),
                           uint32_t(id.size()));
        }
    }
    heldKeyboard_ = false;
    showNormal();
    raise();
    activateWindow();
}

void PopupShield::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isVisible())
        return;
    if (isActiveWindow()) {
        heldKeyboard_ = true;
    } else if (heldKeyboard_ && popup_) {
        popup_->hide();
    }
}

bool PopupShield::eventFilter(QObject* watched, QEvent* event) {
    if (watched == popup_ && event->type() == QEvent::Hide) {
        hide();
        if (bars_)
            bars_->hide();
    }
    return QWidget::eventFilter(watched, event);
}
