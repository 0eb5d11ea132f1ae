#pragma once

#include <QPointer>
#include <QWidget>

// On a Wayland session the panel, shown through XWayland, hears nothing of clicks on the
// compositor's own surfaces (the desktop, the shell and its bars) and gets no keyboard: XWayland
// sees input only over X windows, and compositors give the keyboard to managed windows only.
// While the panel is open this invisible managed window lies under it, over the usable area:
// clicks beside the panel land on it, where the panel's grab takes them for clicks outside; it
// holds the keyboard, so Escape reaches the panel; and when it loses the keyboard (a click on
// the shell, its bar or another window) the panel closes, as a menu does.
class PanelShield : public QWidget {
    Q_OBJECT
public:
    explicit PanelShield(QWidget& panel);

    // Covers `area` and asks for the keyboard. `activationToken`, when the host gave one with the
    // click, lets the compositor hand the keyboard over to a window that the user did not click.
    void cover(const QRect& area, const QString& activationToken);

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QWidget> panel_;
    bool heldKeyboard_ = false; // since it was shown
};
