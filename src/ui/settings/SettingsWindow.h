#pragma once

#include <QWidget>

class AppState;
class ColorPreview;
class SettingsView;
class StatusPalette;
class UpdateService;

// The top-level Settings window around SettingsView, titled in the interface language. Its
// height follows the tab shown; it always opens on the Vercel tab.
class SettingsWindow : public QWidget {
    Q_OBJECT
public:
    SettingsWindow(AppState& state, StatusPalette& palette, ColorPreview* preview,
                   UpdateService* updater, QWidget* parent = nullptr);

    SettingsView* view() const { return view_; }

    // Shows the window on the Vercel tab and brings it to the front.
    void present();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void updateTitle();
    void fitContent();

    SettingsView* view_ = nullptr;
};
