#include "ui/settings/SettingsWindow.h"
#include "core/common/Language.h"
#include "core/monitor/PreferenceKeys.h"
#include "core/update/UpdateService.h"
#include "support/FakeDesktop.h"
#include "support/FakeVercelAccount.h"
#include "support/LoopbackHttpServer.h"
#include "support/QtPrinters.h"
#include "support/WaitUntil.h"
#include "ui/settings/AboutSettings.h"
#include "ui/settings/ColorWell.h"
#include "ui/settings/ColorsSection.h"
#include "ui/settings/FormSection.h"
#include "ui/settings/GeneralSettings.h"
#include "ui/settings/ProjectPicker.h"
#include "ui/settings/SettingsView.h"
#include "ui/settings/SymbolRow.h"
#include "ui/settings/UpdatesSection.h"
#include "ui/settings/VercelSettings.h"
#include "ui/status/ColorPreview.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/StatusPalette.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QCoro/QCoroTask>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

// An updater that records what Settings asks of it; the test sets what a check found.
class FakeUpdateService final : public UpdateService {
public:
    QList<bool> automaticChoices;
    int checks = 0;
    bool checking = false;
    QString result;
    std::optional<QUrl> page;

    void setAutomaticallyChecksForUpdates(bool enabled) override {
        automaticChoices.append(enabled);
    }
    void checkForUpdates() override {
        ++checks;
        checking = true;
    }
    bool isChecking() const override { return checking; }
    QString resultText() const override { return result; }
    std::optional<QUrl> downloadPage() const override { return page; }
    void finish(const QString& text, std::optional<QUrl> download) {
        checking = false;
        result = text;
        page = std::move(download);
        Q_EMIT resultChanged();
    }
};

// The Settings window on an AppState talking to a fake Vercel account on 127.0.0.1, with an
// in-memory keyring, a manual clock, the palette and the colour preview, in an English desktop.
class SettingsWindowTest : public ::testing::Test, protected FakeDesktop {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    AppState state{services(server.baseUrl())};
    StatusPalette palette{*prefs, "#FF0074"};
    LiveActivityController live{palette, clock};
    ColorPreview preview{state, live};
    FakeUpdateService updater;
    SettingsWindow window{state, palette, &preview, &updater};
    SettingsView& view = *window.view();

    void SetUp() override { Language::overrideSystemLanguages({"en-US"}); }
    void TearDown() override { Language::clearSystemLanguagesOverride(); }

    VercelSettings& vercel() const { return *view.vercel(); }
    GeneralSettings& general() const { return *view.general(); }
    bool shown(QWidget* widget) const { return widget->isVisibleTo(&vercel()); }

    void addProjects(int count) {
        for (int i = 0; i < count; ++i)
            account.addProject({}, QStringLiteral("prj_%1").arg(i),
                               QStringLiteral("site-%1").arg(i, 2, 10, QLatin1Char('0')));
    }

    // Stores a token as the Vercel tab would and waits for the first listing.
    void connectAccount() {
        QCoro::waitFor(state.saveToken("tok_secret_123"));
        ASSERT_TRUE(waitUntil([&] { return !state.isRefreshing(); }));
    }

    static void choose(QComboBox* combo, const QString& label) {
        const int index = combo->findText(label);
        ASSERT_GE(index, 0) << label.toStdString();
        combo->setCurrentIndex(index);
        Q_EMIT combo->activated(index);
    }

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
};

TEST_F(SettingsWindowTest, OpensOnTheVercelTabWhicheverWayItIsReached) {
    EXPECT_EQ(tabTitles(), (QStringList{"Vercel", "General", "About"}));
    EXPECT_EQ(window.windowTitle(), "Quillon Settings");
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

TEST_F(SettingsWindowTest, ALanguageChangeRebuildsEveryText) {
    view.setTab(SettingsView::Tab::general);
    state.setLanguage("fr");
    ASSERT_TRUE(waitUntil([&] { return view.tabText(1) == "Général"; }));
    EXPECT_EQ(tabTitles(), (QStringList{"Vercel", "Général", "À propos"}));
    EXPECT_EQ(window.windowTitle(), "Réglages de Quillon");
    EXPECT_EQ(view.tab(), SettingsView::Tab::general);
    EXPECT_EQ(view.vercel()->submitButton()->text(), "Connecter");
    EXPECT_EQ(view.general()->languagePicker()->currentText(), "Français");
    EXPECT_TRUE(view.about()->linksLabel()->text().contains("Confidentialité"));
}

TEST_F(SettingsWindowTest, TheWindowGrowsWithTheProjectList) {
    showTab(SettingsView::Tab::vercel);
    const int withoutToken = window.height();
    addProjects(5);
    connectAccount();
    showTab(SettingsView::Tab::vercel);
    EXPECT_GT(window.height(), withoutToken);
}

TEST_F(SettingsWindowTest, PastingATokenConnectsAndTurnsTheTabIntoReplace) {
    addProjects(2);
    EXPECT_EQ(vercel().statusRow()->text(), "No token saved");
    EXPECT_FALSE(shown(vercel().picker()));
    EXPECT_FALSE(shown(vercel().removalSection()));

    // Return on a blank field only clears it.
    QTest::keyClicks(vercel().tokenField(), "   ");
    EXPECT_FALSE(vercel().submitButton()->isEnabled());
    QTest::keyClick(vercel().tokenField(), Qt::Key_Return);
    EXPECT_TRUE(vercel().tokenField()->text().isEmpty());
    EXPECT_EQ(account.requestCount("/v2/user"), 0);

    QTest::keyClicks(vercel().tokenField(), "  tok_secret_123 ");
    EXPECT_EQ(vercel().tokenField()->echoMode(), QLineEdit::Password);
    vercel().revealButton()->click();
    EXPECT_EQ(vercel().tokenField()->echoMode(), QLineEdit::Normal);
    QTest::keyClick(vercel().tokenField(), Qt::Key_Return);
    EXPECT_TRUE(vercel().tokenField()->text().isEmpty()); // cleared before the check answers
    EXPECT_EQ(vercel().statusRow()->text(), "Checking…");
    EXPECT_TRUE(vercel().statusRow()->isSpinning());

    ASSERT_TRUE(
        waitUntil([&] { return state.connection().isConnected() && !state.isRefreshing(); }));
    EXPECT_EQ(secrets.items[KeychainMode::synced], "tok_secret_123");
    EXPECT_EQ(vercel().submitButton()->text(), "Replace");
    EXPECT_EQ(vercel().statusRow()->text(), "Connected as ada");
    EXPECT_TRUE(shown(vercel().picker()));
    EXPECT_TRUE(shown(vercel().removalSection()));
    EXPECT_TRUE(vercel().storageRow()->text().startsWith("Kept in your login keyring"));
}

TEST_F(SettingsWindowTest, TheTabSaysWhichTeamVercelKeepsClosed) {
    addProjects(1);
    connectAccount();
    EXPECT_FALSE(shown(vercel().noticesRow()));
    account.addSamlTeam("team_saml", "acme", "Acme Team");
    connectAccount();
    ASSERT_TRUE(shown(vercel().noticesRow()));
    EXPECT_EQ(vercel().noticesRow()->text(),
              "Acme Team requires SAML sign-in: sign in on vercel.com.");
}

TEST_F(SettingsWindowTest, ExpiryRowFollowsWhatVercelSaysOfTheToken) {
    const QLocale system;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    account.token.insert("expiresAt", 1'798'804'800'000.0); // Friday 2027-01-01 12:00 UTC
    connectAccount();
    ASSERT_TRUE(shown(vercel().expiryRow()));
    EXPECT_EQ(vercel().expiryRow()->symbol(), "exclamationmark.triangle.fill");
    // The long date of the user's locale, without the weekday.
    EXPECT_TRUE(vercel().expiryRow()->text().startsWith(
        "Warning: Vercel will disable this token on 1 January 2027. "))
        << vercel().expiryRow()->text().toStdString();
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    const TokenExpiry expiry =
        TokenExpiry::at(QDateTime::fromMSecsSinceEpoch(1'798'804'800'000, Qt::UTC));
    EXPECT_TRUE(VercelSettings::expiryText(expiry).contains(" on January 1, 2027. "));
    QLocale::setDefault(system);

    account.token.insert("expiresAt", QJsonValue());
    QCoro::waitFor(state.connect("tok_secret_123"));
    EXPECT_EQ(vercel().expiryRow()->symbol(), "infinity");
    EXPECT_TRUE(vercel().expiryRow()->text().startsWith("Token has no expiration"));

    account.failures.insert("/v5/user/tokens/current",
                            LoopbackHttpServer::Response::vercelError(404, "nf", "x"));
    QCoro::waitFor(state.connect("tok_secret_123"));
    EXPECT_TRUE(state.connection().isConnected());
    EXPECT_FALSE(shown(vercel().expiryRow()));
}

TEST_F(SettingsWindowTest, SessionOnlyTokenCanBeRemovedAfterConfirmation) {
    secrets.failingWrites[KeychainMode::synced] = -25308;
    connectAccount();
    EXPECT_EQ(vercel().storageRow()->symbol(), "lock.fill");
    EXPECT_TRUE(vercel().storageRow()->text().startsWith("Kept in memory for this session only"));

    vercel().removeButton()->click();
    QMessageBox* question = vercel().removalQuestion();
    ASSERT_NE(question, nullptr);
    QAbstractButton* remove = nullptr;
    for (QAbstractButton* button : question->buttons())
        if (question->buttonRole(button) == QMessageBox::DestructiveRole)
            remove = button;
    ASSERT_NE(remove, nullptr);
    remove->click();

    EXPECT_EQ(state.connection(), Connection::noToken());
    EXPECT_TRUE(secrets.items.empty());
    EXPECT_EQ(vercel().submitButton()->text(), "Connect");
    EXPECT_FALSE(shown(vercel().removalSection()));
    EXPECT_FALSE(shown(vercel().picker()));
}

TEST_F(SettingsWindowTest, PickerCountsTicksAndChoosesAllOrNone) {
    addProjects(12);
    connectAccount();
    ProjectPicker* picker = vercel().picker();
    ASSERT_EQ(picker->checkBoxes().size(), 12);
    EXPECT_EQ(picker->countText(), "12/12"); // every project counts until the user chooses
    EXPECT_EQ(picker->checkBoxes().first()->text(), "site-00");

    for (int i = 3; i < 12; ++i)
        picker->checkBoxes()[i]->click();
    EXPECT_EQ(picker->countText(), "3/12");
    EXPECT_EQ(state.effectiveMonitoredIDs(), (QSet<QString>{"prj_0", "prj_1", "prj_2"}));
    EXPECT_TRUE(picker->checkBoxes()[2]->isChecked());
    EXPECT_FALSE(picker->checkBoxes()[3]->isChecked());

    picker->noneButton()->click();
    EXPECT_EQ(picker->countText(), "0/12");
    EXPECT_FALSE(picker->checkBoxes().first()->isChecked());
    picker->allButton()->click();
    EXPECT_EQ(picker->countText(), "12/12");
    EXPECT_TRUE(picker->checkBoxes().last()->isChecked());
    EXPECT_TRUE(picker->emptyText().isEmpty());

    account.projects.clear();
    picker->reloadButton()->click();
    ASSERT_TRUE(waitUntil([&] { return state.availableProjects().isEmpty(); }));
    EXPECT_TRUE(picker->checkBoxes().isEmpty());
    EXPECT_EQ(picker->emptyText(), "No project found.");
}

// Each project's bell mutes it; how long for shows beside it, whoever muted it.
TEST_F(SettingsWindowTest, EachProjectsBellMutesItAndTheMuteShowsBesideIt) {
    addProjects(3);
    connectAccount();
    ProjectPicker* picker = vercel().picker();
    ASSERT_EQ(picker->muteButtons().size(), 3);
    EXPECT_FALSE(picker->muteLabels()[1]->isVisibleTo(picker));
    QMenu* menu = picker->muteButtons()[1]->menu();
    ASSERT_TRUE(menu);
    Q_EMIT menu->aboutToShow();
    QStringList offered;
    for (QAction* action : menu->actions())
        offered << action->text();
    EXPECT_EQ(offered,
              QStringList({"Mute for 1 hour", "Mute until tomorrow", "Mute until unmuted"}));
    menu->actions()[1]->trigger();
    EXPECT_EQ(state.activeMute("prj_1"),
              (ProjectMute{"site-01", QDateTime(QDate(2026, 11, 24), QTime(0, 0))}));
    ASSERT_TRUE(picker->muteLabels()[1]->isVisibleTo(picker));
    EXPECT_EQ(picker->muteLabels()[1]->text(), "Muted until tomorrow");
    EXPECT_TRUE(picker->checkBoxes()[1]->isChecked()); // still monitored

    state.muteProject("prj_2", "site-02", MuteLength::oneHour); // from the panel, say
    EXPECT_EQ(picker->muteLabels()[2]->text(), "Muted until 16:00");
    Q_EMIT menu->aboutToShow(); // opened again: unmuting comes first
    ASSERT_EQ(menu->actions()[1]->text(), "Unmute");
    menu->actions()[1]->trigger();
    EXPECT_FALSE(state.activeMute("prj_1"));
    EXPECT_FALSE(picker->muteLabels()[1]->isVisibleTo(picker));
}

TEST_F(SettingsWindowTest, EachControlWritesItsPreference) {
    choose(general().intervalPicker(), "2 min");
    EXPECT_EQ(state.refreshInterval(), 120);
    EXPECT_EQ(prefs->integer(PreferenceKeys::refreshInterval), 120);
    choose(general().languagePicker(), "English");
    EXPECT_EQ(prefs->string(PreferenceKeys::appLanguage), "en");
    choose(general().languagePicker(), "Automatic (system)");
    EXPECT_EQ(prefs->string(PreferenceKeys::appLanguage), "auto");

    // Off until asked for.
    for (QCheckBox* quiet :
         {general().slowBuildToggle(), general().notifyProductionToggle(),
          general().onlyMineToggle(), general().botsToggle(), general().fixedToggle()})
        EXPECT_FALSE(quiet->isChecked()) << quiet->text().toStdString();
    const std::pair<QCheckBox*, QString> toggles[] = {
        {general().heroToggle(), PreferenceKeys::heroMonochrome},
        {general().liveActivityToggle(), PreferenceKeys::liveActivity},
        {general().notifyToggle(), PreferenceKeys::notifyOnFailure},
        {general().productionOnlyToggle(), PreferenceKeys::countProductionOnly},
        {general().slowBuildToggle(), PreferenceKeys::slowBuildWarning},
        {general().notifyProductionToggle(), PreferenceKeys::notifyProductionOnly},
        {general().onlyMineToggle(), PreferenceKeys::notifyOnlyMine},
        {general().botsToggle(), PreferenceKeys::ignoreBotBranches},
        {general().fixedToggle(), PreferenceKeys::notifyWhenFixed}};
    for (const auto& [toggle, key] : toggles) {
        const bool was = toggle->isChecked();
        toggle->click();
        EXPECT_EQ(prefs->boolean(key), !was) << key.toStdString();
    }
    general().loginToggle()->click();
    EXPECT_TRUE(loginItem.enabled);
    EXPECT_TRUE(general().loginToggle()->isChecked());

    // Values changed elsewhere show at once.
    state.setHeroMonochrome(true);
    state.setRefreshInterval(15);
    state.setNotifyOnlyMine(false);
    EXPECT_FALSE(general().onlyMineToggle()->isChecked());
    EXPECT_TRUE(general().heroToggle()->isChecked());
    EXPECT_EQ(general().intervalPicker()->currentText(), "15 s");
}

TEST_F(SettingsWindowTest, RefusedOpenAtLoginSnapsBackAndShowsTheError) {
    EXPECT_FALSE(general().errorSection()->isVisibleTo(&general()));
    loginItem.refusal = "Cannot write ~/.config/autostart: permission denied";
    general().loginToggle()->click();
    EXPECT_FALSE(general().loginToggle()->isChecked());
    EXPECT_FALSE(state.launchAtLogin());
    ASSERT_TRUE(general().errorSection()->isVisibleTo(&general()));
    EXPECT_EQ(general().errorRow()->text(), "Cannot write ~/.config/autostart: permission denied");
}

TEST_F(SettingsWindowTest, ColoursWriteThroughAndResetAndTestFollowTheirState) {
    ColorsSection* colors = general().colors();
    EXPECT_FALSE(colors->resetButton()->isEnabled());

    colors->queuedWell()->openDialog();
    ASSERT_NE(colors->queuedWell()->dialog(), nullptr);
    colors->queuedWell()->dialog()->setCurrentColor(QColor(0x11, 0x22, 0x33));
    EXPECT_EQ(StatusPalette::hexString(palette.queued()), "#112233");
    EXPECT_EQ(colors->queuedWell()->color(), QColor(0x11, 0x22, 0x33));
    EXPECT_TRUE(colors->resetButton()->isEnabled());
    colors->queuedWell()->dialog()->reject(); // Cancel puts the opening colour back
    EXPECT_EQ(StatusPalette::hexString(palette.queued()), "#C05BEC");

    palette.setError(Qt::green);
    EXPECT_TRUE(colors->resetButton()->isEnabled());
    colors->resetButton()->click();
    EXPECT_TRUE(palette.isDefault());
    EXPECT_FALSE(colors->resetButton()->isEnabled());
    EXPECT_EQ(colors->errorWell()->color(), QColor("#FF0074"));

    colors->testButton()->click();
    EXPECT_EQ(state.overallTone(), Tone::queued);
    EXPECT_FALSE(colors->testButton()->isEnabled());
    clock.advance(12s);
    EXPECT_TRUE(colors->testButton()->isEnabled());
}

TEST_F(SettingsWindowTest, UpdatesGoToTheUpdaterAndItsResultShows) {
    UpdatesSection* updates = general().updates();
    EXPECT_TRUE(updates->automaticToggle()->isChecked());
    updates->automaticToggle()->click();
    EXPECT_EQ(prefs->boolean(UpdatesSection::automaticChecksKey), false);
    EXPECT_EQ(updater.automaticChoices, QList<bool>{false});

    updates->checkButton()->click();
    EXPECT_EQ(updater.checks, 1);
    EXPECT_FALSE(updates->checkButton()->isEnabled()); // while the check runs
    EXPECT_FALSE(updates->resultLabel()->isVisibleTo(updates));
    updater.finish("Quillon 0.2.0 is available.", QUrl("https://fernhollow.com/quillon/download"));
    EXPECT_TRUE(updates->checkButton()->isEnabled());
    EXPECT_TRUE(updates->resultLabel()->isVisibleTo(updates));
    EXPECT_TRUE(updates->resultLabel()->text().contains("Quillon 0.2.0 is available."));
    EXPECT_TRUE(updates->resultLabel()->text().contains(
        "href=\"https://fernhollow.com/quillon/download\""));
}

TEST_F(SettingsWindowTest, WithoutAnUpdaterTheChoiceIsOnlyStored) {
    prefs->setBoolean(UpdatesSection::automaticChecksKey, false);
    UpdatesSection updates(*prefs, nullptr);
    EXPECT_FALSE(updates.automaticToggle()->isChecked());
    EXPECT_FALSE(updates.checkButton()->isEnabled());
    updates.automaticToggle()->click();
    EXPECT_EQ(prefs->boolean(UpdatesSection::automaticChecksKey), true);
}

} // namespace
