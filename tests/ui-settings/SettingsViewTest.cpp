#include "SettingsFixture.h"

#include "core/common/AppVersion.h"
#include "ui/settings/AboutSettings.h"
#include "ui/settings/GeneralSettings.h"
#include "ui/settings/SettingsView.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/settings/VercelSettings.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>

namespace {

class SettingsViewTest : public SettingsFixture {
protected:
    FakeUpdateService updater;
    SettingsWindow window{state, palette, &preview, &updater};
    SettingsView& view = *window.view();

    QStringList tabTitles() const {
        QStringList titles;
        for (int i = 0; i < view.count(); ++i)
            titles << view.tabText(i);
        return titles;
    }

    // Shows a tab once the window has fitted its height to it.
    void showTab(SettingsView::Tab tab) {
        if (!window.isVisible())
            window.show();
        view.setTab(tab);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        EXPECT_TRUE(waitUntil([&] { return window.height() == view.sizeHint().height(); }));
    }

    // Saves the window, when asked for screenshots, under QUILLON_SHOTS_DIR.
    void shoot(SettingsView::Tab tab, const QString& name) {
        showTab(tab);
        const QPixmap shot = window.grab();
        EXPECT_FALSE(shot.isNull());
        const QString dir = qEnvironmentVariable("QUILLON_SHOTS_DIR");
        if (dir.isEmpty())
            return;
        QDir().mkpath(dir);
        EXPECT_TRUE(shot.save(dir + "/" + name + ".png"));
    }
};

TEST_F(SettingsViewTest, OpensOnTheVercelTabWhicheverWayItIsReached) {
    EXPECT_EQ(tabTitles(), (QStringList{"Vercel", "General", "About"}));
    EXPECT_EQ(window.windowTitle(), "Quillon Settings");
    EXPECT_EQ(window.width(), 460);
    window.present();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(view.tab(), SettingsView::Tab::vercel);
    view.setTab(SettingsView::Tab::about);
    window.present(); // asked again from the panel or the tray menu
    EXPECT_EQ(view.tab(), SettingsView::Tab::vercel);
    view.setTab(SettingsView::Tab::general);
    window.close();
    EXPECT_EQ(view.tab(), SettingsView::Tab::vercel);
    view.setTab(SettingsView::Tab::general);
    window.show();
    EXPECT_EQ(view.tab(), SettingsView::Tab::vercel);
}

TEST_F(SettingsViewTest, ALanguageChangeRebuildsEveryText) {
    view.setTab(SettingsView::Tab::general);
    state.setLanguage(QStringLiteral("fr"));
    ASSERT_TRUE(waitUntil([&] { return view.tabText(1) == "Général"; }));
    EXPECT_EQ(tabTitles(), (QStringList{"Vercel", "Général", "À propos"}));
    EXPECT_EQ(window.windowTitle(), "Réglages de Quillon");
    EXPECT_EQ(view.tab(), SettingsView::Tab::general);
    EXPECT_EQ(view.vercel()->submitButton()->text(), "Connecter");
    EXPECT_EQ(view.general()->languagePicker()->currentText(), "Français");
    EXPECT_TRUE(view.about()->linksLabel()->text().contains("Confidentialité"));
}

TEST_F(SettingsViewTest, AboutShowsTheVersionAndTheMakersLinks) {
    AboutSettings* about = view.about();
    EXPECT_EQ(about->titleLabel()->text(), "Quillon");
    EXPECT_EQ(about->versionLabel()->text(), "Version " + AppVersion::text());
    EXPECT_FALSE(about->taglineLabel()->text().isEmpty());
    const QString links = about->linksLabel()->text();
    for (const char* part : {"https://fernhollow.com\"", "https://fernhollow.com/quillon/privacy",
                             "mailto:support@fernhollow.com", ">Privacy<", ">Support<"})
        EXPECT_TRUE(links.contains(QLatin1String(part))) << part;
}

TEST_F(SettingsViewTest, RendersEveryTabInBothLanguages) {
    shoot(SettingsView::Tab::vercel, "settings-vercel-notoken");
    shoot(SettingsView::Tab::about, "settings-about");
    addProjects(5);
    account.token.insert("expiresAt", 1'798'761'600'000.0);
    const int withoutToken = window.height();
    connectAccount();
    showTab(SettingsView::Tab::vercel);
    EXPECT_GT(window.height(), withoutToken); // the window grows with the project list
    loginItem.refusal = QStringLiteral("Cannot write the autostart entry: permission denied");
    state.setLaunchAtLogin(true);
    shoot(SettingsView::Tab::vercel, "settings-vercel");
    shoot(SettingsView::Tab::general, "settings-general");
    state.setLanguage(QStringLiteral("fr"));
    ASSERT_TRUE(waitUntil([&] { return view.tabText(2) == "À propos"; }));
    shoot(SettingsView::Tab::vercel, "settings-vercel-fr");
    shoot(SettingsView::Tab::general, "settings-general-fr");
    shoot(SettingsView::Tab::about, "settings-about-fr");
}

} // namespace
