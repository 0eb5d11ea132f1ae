#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <functional>
#include <memory>

class QSocketNotifier;
struct xcb_connection_t;

// The demo's global hot keys: Control+Alt+Super with 1, 2, 3, 4, 5 and 0 of the main keyboard,
// grabbed on the X11 root window whatever the NumLock and CapsLock state. Each press hands its
// digit to the handler on the thread that owns this object. Without an X11 display (a terminal
// session, plain Wayland) nothing is registered and nothing fails.
class DemoHotKeys final : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(int digit)>;

    explicit DemoHotKeys(Handler handler, QObject* parent = nullptr);
    ~DemoHotKeys() override;

    // The digits, in the order they are registered.
    static const QList<int>& digits();

    // Connects to $DISPLAY and grabs every digit that no other program owns. Answers the digits
    // that now work; a refused digit simply stays without effect. Registers once.
    QList<int> registerKeys();
    const QList<int>& registered() const { return registered_; }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };

    bool connectToDisplay();
    void grabDigits();
    void readEvents();

    Handler handler_;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    quint32 root_ = 0;
    QSocketNotifier* notifier_ = nullptr;
    QHash<quint8, int> digitOfKeycode_;
    QList<int> registered_;
};
