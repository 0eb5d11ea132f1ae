#include "SettingsFixture.h"

#include "core/monitor/PreferenceKeys.h"
#include "ui/settings/ColorWell.h"
#include "ui/settings/ColorsSection.h"
#include "ui/settings/FormSection.h"
#include "ui/settings/GeneralSettings.h"
#include "ui/settings/SymbolRow.h"
#include "ui/settings/UpdatesSection.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>

using namespace std::chrono_literals;

namespace {

class GeneralSettingsTest : public SettingsFixture {
protected:
    FakeUpdateService updater;
    GeneralSettings view{state, palette, &preview, &updater};

    static void choose(QComboBox* combo, const QString& label) {
        const int index = combo->findText(label);
        ASSERT_GE(index, 0) << label.toStdString();
        combo->setCurrentIndex(index);
        Q_EMIT combo->activated(index);
    }
};

TEST_F(GeneralSettingsTest, EachControlWritesItsPreference) {
    choose(view.intervalPicker(), "2 min");
    EXPECT_EQ(state.refreshInterval(), 120);
    EXPECT_EQ(prefs->integer(PreferenceKeys::refreshInterval), 120);
    choose(view.languagePicker(), "English");
    EXPECT_EQ(prefs->string(PreferenceKeys::appLanguage), "en");
    choose(view.languagePicker(), "Automatic (system)");
    EXPECT_EQ(prefs->string(PreferenceKeys::appLanguage), "auto");

    view.heroToggle()->click();
    view.liveActivityToggle()->click();
    view.notifyToggle()->click();
    view.productionOnlyToggle()->click();
    EXPECT_FALSE(view.slowBuildToggle()->isChecked()); // off until asked for
    view.slowBuildToggle()->click();
    EXPECT_EQ(prefs->boolean(PreferenceKeys::slowBuildWarning), true);
    EXPECT_EQ(prefs->boolean(PreferenceKeys::heroMonochrome), false);
    EXPECT_EQ(prefs->boolean(PreferenceKeys::liveActivity), false);
    EXPECT_EQ(prefs->boolean(PreferenceKeys::notifyOnFailure), false);
    EXPECT_EQ(prefs->boolean(PreferenceKeys::countProductionOnly), true);

    view.loginToggle()->click();
    EXPECT_TRUE(loginItem.enabled);
    EXPECT_TRUE(view.loginToggle()->isChecked());

    // Values changed elsewhere show at once.
    state.setHeroMonochrome(true);
    state.setRefreshInterval(15);
    EXPECT_TRUE(view.heroToggle()->isChecked());
    EXPECT_EQ(view.intervalPicker()->currentText(), "15 s");
}

TEST_F(GeneralSettingsTest, RefusedOpenAtLoginSnapsBackAndShowsTheError) {
    EXPECT_FALSE(view.errorSection()->isVisibleTo(&view));
    loginItem.refusal = QStringLiteral("Cannot write ~/.config/autostart: permission denied");
    view.loginToggle()->click();
    EXPECT_FALSE(view.loginToggle()->isChecked());
    EXPECT_FALSE(state.launchAtLogin());
    ASSERT_TRUE(view.errorSection()->isVisibleTo(&view));
    EXPECT_EQ(view.errorRow()->text(), "Cannot write ~/.config/autostart: permission denied");
}

TEST_F(GeneralSettingsTest, ColoursWriteThroughAndResetAndTestFollowTheirState) {
    ColorsSection* colors = view.colors();
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

TEST_F(GeneralSettingsTest, UpdatesGoToTheUpdaterAndItsResultShows) {
    UpdatesSection* updates = view.updates();
    EXPECT_TRUE(updates->automaticToggle()->isChecked());
    updates->automaticToggle()->click();
    EXPECT_EQ(prefs->boolean(UpdatesSection::automaticChecksKey), false);
    EXPECT_EQ(updater.automaticChoices, QList<bool>{false});
    EXPECT_TRUE(updates->versionLabel()->text().startsWith("Version 0."));

    updates->checkButton()->click();
    EXPECT_EQ(updater.checks, 1);
    EXPECT_FALSE(updates->checkButton()->isEnabled()); // while the check runs
    EXPECT_FALSE(updates->resultLabel()->isVisibleTo(updates));
    updater.finish(QStringLiteral("Quillon 0.2.0 is available."),
                   QUrl(QStringLiteral("https://fernhollow.com/quillon/download")));
    EXPECT_TRUE(updates->checkButton()->isEnabled());
    EXPECT_TRUE(updates->resultLabel()->isVisibleTo(updates));
    EXPECT_TRUE(updates->resultLabel()->text().contains("Quillon 0.2.0 is available."));
    EXPECT_TRUE(updates->resultLabel()->text().contains(
        "href=\"https://fernhollow.com/quillon/download\""));
}

TEST_F(GeneralSettingsTest, WithoutAnUpdaterTheChoiceIsOnlyStored) {
    prefs->setBoolean(UpdatesSection::automaticChecksKey, false);
    UpdatesSection updates(*prefs, nullptr);
    EXPECT_FALSE(updates.automaticToggle()->isChecked());
    EXPECT_FALSE(updates.checkButton()->isEnabled());
    updates.automaticToggle()->click();
    EXPECT_EQ(prefs->boolean(UpdatesSection::automaticChecksKey), true);
}

} // namespace
