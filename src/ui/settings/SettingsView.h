#pragma once

#include <QPointer>
#include <QTabWidget>

class AboutSettings;
class AppState;
class ColorPreview;
class GeneralSettings;
class StatusPalette;
class UpdateService;
class VercelSettings;

// The root of the Settings window: the tabs Vercel, General and About. Every text is built in
// the interface language; a change of language rebuilds the tabs. It opens on the Vercel tab.
class SettingsView : public QTabWidget {
    Q_OBJECT
public:
    enum class Tab { vercel, general, about };
    static constexpr int viewWidth = 460;
    static constexpr int maxHeight = 680;

    // `preview` and `updater` may be absent: Test and "Check now" are then disabled.
    SettingsView(AppState& state, StatusPalette& palette, ColorPreview* preview,
                 UpdateService* updater, QWidget* parent = nullptr);

    Tab tab() const { return static_cast<Tab>(currentIndex()); }
    void setTab(Tab tab) { setCurrentIndex(static_cast<int>(tab)); }

    VercelSettings* vercel() const { return vercel_; }
    GeneralSettings* general() const { return general_; }
    AboutSettings* about() const { return about_; }

    // 460 wide; as tall as the current tab's content, up to maxHeight (the rest scrolls).
    QSize sizeHint() const override;

Q_SIGNALS:
    // The wanted size may have changed: another tab or a rebuild.
    void contentChanged();

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build();
    void rebuildIfLanguageChanged();

    AppState& state_;
    StatusPalette& palette_;
    QPointer<ColorPreview> preview_;
    QPointer<UpdateService> updater_;
    bool builtFrench_ = false;
    bool rebuildQueued_ = false;
    bool fitQueued_ = false;
    VercelSettings* vercel_ = nullptr;
    GeneralSettings* general_ = nullptr;
    AboutSettings* about_ = nullptr;
};
