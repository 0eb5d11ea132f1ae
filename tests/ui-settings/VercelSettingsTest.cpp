#include "SettingsFixture.h"

#include "ui/settings/ProjectPicker.h"
#include "ui/settings/SymbolRow.h"
#include "ui/settings/VercelSettings.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

namespace {

class VercelSettingsTest : public SettingsFixture {
protected:
    VercelSettings view{state, palette};

    bool shown(QWidget* widget) const { return widget->isVisibleTo(&view); }
};

TEST_F(VercelSettingsTest, PastingATokenConnectsAndTurnsTheTabIntoReplace) {
    addProjects(2);
    EXPECT_EQ(view.submitButton()->text(), "Connect");
    EXPECT_EQ(view.statusRow()->text(), "No token saved");
    EXPECT_FALSE(shown(view.picker()));
    EXPECT_FALSE(shown(view.removalSection()));
    EXPECT_FALSE(shown(view.storageRow()));
    EXPECT_FALSE(view.submitButton()->isEnabled());

    QTest::keyClicks(view.tokenField(), QStringLiteral("  tok_secret_123 "));
    EXPECT_TRUE(view.submitButton()->isEnabled());
    EXPECT_EQ(view.tokenField()->echoMode(), QLineEdit::Password);
    view.revealButton()->click();
    EXPECT_EQ(view.tokenField()->echoMode(), QLineEdit::Normal);

    QTest::keyClick(view.tokenField(), Qt::Key_Return);
    EXPECT_TRUE(view.tokenField()->text().isEmpty()); // cleared before the check answers
    EXPECT_FALSE(view.submitButton()->isEnabled());
    EXPECT_EQ(view.statusRow()->text(), "Checking…");
    EXPECT_TRUE(view.statusRow()->isSpinning());

    ASSERT_TRUE(
        waitUntil([&] { return state.connection().isConnected() && !state.isRefreshing(); }));
    EXPECT_EQ(secrets.items[KeychainMode::synced], "tok_secret_123");
    EXPECT_EQ(view.submitButton()->text(), "Replace");
    EXPECT_EQ(view.statusRow()->text(), "Connected as ada");
    EXPECT_EQ(view.statusRow()->symbol(), "checkmark.circle.fill");
    EXPECT_TRUE(shown(view.picker()));
    EXPECT_TRUE(shown(view.removalSection()));
    EXPECT_EQ(view.storageRow()->text(), "Kept in your login keyring: it stays there after "
                                         "reinstalling Quillon. A copy is also kept in memory "
                                         "for this session.");
    EXPECT_TRUE(view.footer()->text().contains("https://vercel.com/account/settings/tokens"));
}

TEST_F(VercelSettingsTest, ReturnOnABlankFieldOnlyClearsIt) {
    QTest::keyClicks(view.tokenField(), QStringLiteral("   "));
    EXPECT_FALSE(view.submitButton()->isEnabled());
    QTest::keyClick(view.tokenField(), Qt::Key_Return);
    EXPECT_TRUE(view.tokenField()->text().isEmpty());
    EXPECT_EQ(state.connection(), Connection::noToken());
    EXPECT_TRUE(secrets.items.empty());
    EXPECT_EQ(account.requestCount("/v2/user"), 0);
}

TEST_F(VercelSettingsTest, ExpiryRowFollowsWhatVercelSaysOfTheToken) {
    const QLocale system;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    account.token.insert("expiresAt", 1'798'804'800'000.0); // Friday 2027-01-01 12:00 UTC
    connectAccount();
    ASSERT_TRUE(shown(view.expiryRow()));
    EXPECT_EQ(view.expiryRow()->symbol(), "exclamationmark.triangle.fill");
    // The long date of the user's locale, without the weekday.
    EXPECT_TRUE(view.expiryRow()->text().startsWith(
        "Warning: Vercel will disable this token on 1 January 2027. "))
        << view.expiryRow()->text().toStdString();
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    const TokenExpiry expiry =
        TokenExpiry::at(QDateTime::fromMSecsSinceEpoch(1'798'804'800'000, Qt::UTC));
    EXPECT_TRUE(VercelSettings::expiryText(expiry).contains(" on January 1, 2027. "));
    QLocale::setDefault(system);

    account.token.insert("expiresAt", QJsonValue());
    QCoro::waitFor(state.connect(QStringLiteral("tok_secret_123")));
    EXPECT_EQ(view.expiryRow()->symbol(), "infinity");
    EXPECT_TRUE(view.expiryRow()->text().startsWith("Token has no expiration"));

    account.failures.insert("/v5/user/tokens/current",
                            LoopbackHttpServer::Response::vercelError(404, "nf", "x"));
    QCoro::waitFor(state.connect(QStringLiteral("tok_secret_123")));
    EXPECT_TRUE(state.connection().isConnected());
    EXPECT_FALSE(shown(view.expiryRow()));
}

TEST_F(VercelSettingsTest, SessionOnlyTokenCanBeRemovedAfterConfirmation) {
    secrets.failingWrites[KeychainMode::synced] = -25308;
    connectAccount();
    EXPECT_EQ(view.storageRow()->symbol(), "lock.fill");
    EXPECT_EQ(view.storageRow()->text(), "Kept in memory for this session only. Your login "
                                         "keyring was not accessible.");
    EXPECT_EQ(view.removeButton()->text(), "Remove token from this computer");

    view.removeButton()->click();
    QMessageBox* question = view.removalQuestion();
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->text(), "Remove the token?");
    EXPECT_EQ(question->informativeText(), "The token will be removed from your keyring. You "
                                           "will need to paste it again.");
    QAbstractButton* remove = nullptr;
    for (QAbstractButton* button : question->buttons())
        if (question->buttonRole(button) == QMessageBox::DestructiveRole)
            remove = button;
    ASSERT_NE(remove, nullptr);
    EXPECT_EQ(remove->text(), "Remove");
    remove->click();

    EXPECT_EQ(state.connection(), Connection::noToken());
    EXPECT_TRUE(secrets.items.empty());
    EXPECT_EQ(view.submitButton()->text(), "Connect");
    EXPECT_FALSE(shown(view.removalSection()));
    EXPECT_FALSE(shown(view.picker()));
}

TEST_F(VercelSettingsTest, PickerCountsTicksAndChoosesAllOrNone) {
    addProjects(12);
    connectAccount();
    ProjectPicker* picker = view.picker();
    ASSERT_EQ(picker->checkBoxes().size(), 12);
    EXPECT_EQ(picker->countText(), "12/12"); // every project counts until the user chooses
    EXPECT_EQ(picker->checkBoxes().first()->text(), "site-00");
    EXPECT_EQ(picker->reloadButton()->toolTip(), "Reload list");

    for (int i = 3; i < 12; ++i)
        picker->checkBoxes()[i]->click();
    EXPECT_EQ(picker->countText(), "3/12");
    EXPECT_EQ(state.effectiveMonitoredIDs(), (QSet<QString>{"prj_0", "prj_1", "prj_2"}));
    EXPECT_TRUE(picker->checkBoxes()[2]->isChecked());
    EXPECT_FALSE(picker->checkBoxes()[3]->isChecked());

    picker->noneButton()->click();
    EXPECT_EQ(picker->countText(), "0/12");
    for (QCheckBox* box : picker->checkBoxes())
        EXPECT_FALSE(box->isChecked());
    picker->allButton()->click();
    EXPECT_EQ(picker->countText(), "12/12");
    for (QCheckBox* box : picker->checkBoxes())
        EXPECT_TRUE(box->isChecked());
    EXPECT_TRUE(picker->emptyText().isEmpty());

    account.projects.clear();
    picker->reloadButton()->click();
    ASSERT_TRUE(waitUntil([&] { return state.availableProjects().isEmpty(); }));
    EXPECT_TRUE(picker->checkBoxes().isEmpty());
    EXPECT_EQ(picker->emptyText(), "No project found.");
}

} // namespace
