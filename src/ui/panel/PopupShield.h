#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>

// On a Wayland session a popup shown through XWayland (the panel, the menu) hears nothing of
// clicks on the compositor's own surfaces (the desktop, the shell and its bars) and gets no
// keyboard: XWayland sees input only over X windows, and compositors give the keyboard to managed
// windows only. While the popup is open this invisible managed window lies under it, over the
// usable area: clicks beside the popup land on it, where the popup's grab takes them for clicks
// outside; it holds the keyboard, so Escape reaches the popup; and when it loses the keyboard (a
// click on the shell, its bar or another window) the popup closes, as a menu does.
class PopupShield : public QWidget {
    Q_OBJECT
public:
    // What a click on the shell's bars does while the popup is open.
    enum class Bars {
        // It reaches the bar, which takes the keyboard from the shield (KWin, wlroots).
        passClicks,
        // It closes the popup and goes no further, as with GNOME Shell's own menus: the shell
        // keeps the keyboard where it was when its bar is clicked, so an invisible window that
        // bypasses the window manager lies over the bars too.
        takeClicks,
    };

    PopupShield(QWidget& popup, Bars bars);
    ~PopupShield() override;

    // Covers `area` (and, where the bars' clicks are taken, the rest of `screen`) and asks for
    // the keyboard. `activationToken`, when the host gave one with the click, lets the compositor
    // hand the keyboard over to a window that the user did not click.
    void cover(const QRect& screen, const QRect& area, const QString& activationToken);

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QWidget> popup_;
    std::unique_ptr<QWidget> bars_; // over the whole screen, under the popup, when taking clicks
    bool heldKeyboard_ = false;     // since it was shown
};
