// FreedesktopNotifier against a real notification server: dunst on a private display and bus.
#include "platform/FreedesktopNotifier.h"
#include "PlainNotificationServer.h"
#include "support/EventLoopLatency.h"
#include "support/QtPrinters.h"
#include "support/WaitUntil.h"
#include "support/desktop/DunstControl.h"
#include "support/desktop/PrivateDesktop.h"

#include <QDBusMessage>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUuid>
#include <gtest/gtest.h>

namespace {

const QUrl dashboard(QStringLiteral("https://vercel.com/acme/api/dpl_8Fq2"));

FailureNotification failure(const QString& id, std::optional<QUrl> url) {
    return {id, QStringLiteral("api: deployment failed"),
            QStringLiteral("Branch main · Handle checkout webhook · 16 s"), std::move(url)};
}

class FreedesktopNotifierTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (auto start : {&PrivateDesktop::startDisplay, &PrivateDesktop::startBus}) {
            const std::optional<QString> failure = (desktop.*start)();
            ASSERT_FALSE(failure) << failure->toStdString();
        }
        // The notifier has a connection of its own, as the application has.
        QDBusConnection bus = QDBusConnection::connectToBus(desktop.busAddress(), connectionName);
        ASSERT_TRUE(bus.isConnected());
        notifier = std::make_unique<FreedesktopNotifier>(
            bus, [this](const QUrl& url) { opened.append(url); });
    }

    void TearDown() override {
        notifier.reset();
        QDBusConnection::disconnectFromBus(connectionName);
    }

    void startDunst(const QByteArray& globalSettings = {}) {
        const std::optional<QString> failure = desktop.startDunstWith(globalSettings);
        ASSERT_FALSE(failure) << failure->toStdString();
    }

    // Posts and answers the id the server gave, or 0 when it gave none in time.
    uint post(const FailureNotification& notification) {
        QSignalSpy posted(notifier.get(), &FreedesktopNotifier::posted);
        notifier->post(notification);
        if (!waitUntil([&] { return posted.count() == 1; }))
            return 0;
        return posted.first().first().toUInt();
    }

    DunstControl dunst() const { return DunstControl(desktop.connection()); }

    PrivateDesktop desktop;
    const QString connectionName = QUuid::createUuid().toString();
    std::unique_ptr<FreedesktopNotifier> notifier;
    QList<QUrl> opened;
};

} // namespace

TEST_F(FreedesktopNotifierTest, AFailureArrivesAndItsDefaultActionOpensItsLinkIfAny) {
    startDunst();
    // dunst answers actions in order, so a click on the first one would be seen before the next.
    ASSERT_NE(post(failure(QStringLiteral("dpl_demo"), std::nullopt)), 0u);
    ASSERT_TRUE(waitUntil([&] { return dunst().displayed() == 1; }));
    ASSERT_TRUE(dunst().invokeAction(0));
    ASSERT_TRUE(dunst().closeAll());

    const uint id = post(failure(QStringLiteral("dpl_8Fq2"), dashboard));
    ASSERT_NE(id, 0u);
    ASSERT_TRUE(waitUntil([&] { return dunst().displayed() == 1; }));
    ASSERT_TRUE(dunst().invokeAction(0));
    ASSERT_TRUE(waitUntil([&] { return !opened.isEmpty(); }));
    EXPECT_EQ(opened, QList<QUrl>{dashboard});

    // Closed by the user: the link is forgotten, and dunst's history holds what was shown.
    ASSERT_TRUE(dunst().closeAll());
    EXPECT_TRUE(waitUntil([&] { return notifier->pendingCount() == 0; }));
    const QList<QVariantMap> history = dunst().history();
    ASSERT_EQ(history.size(), 2);
    const QVariantMap shown = history[0].value("id").toUInt() == id ? history[0] : history[1];
    EXPECT_EQ(shown.value("id").toUInt(), id);
    EXPECT_EQ(shown.value("summary").toString(), "api: deployment failed");
    EXPECT_EQ(shown.value("body").toString(), "Branch main · Handle checkout webhook · 16 s");
    EXPECT_EQ(shown.value("appname").toString(), "Quillon");
}

// Posting only sends: a missing server, or one that does not answer, never holds the loop up
// (a blocking call would wait for the reply's timeout, seconds).
TEST_F(FreedesktopNotifierTest, NoServerOrASilentOneNeverBlocksPosting) {
    QSignalSpy posted(notifier.get(), &FreedesktopNotifier::posted);
    {
        EventLoopLatency latency;
        notifier->post(failure(QStringLiteral("dpl_lost"), dashboard));
        waitUntil([] { return false; }, 300); // the bus answers that nobody serves the name
        EXPECT_LE(latency.worst().count(), 200);
    }
    startDunst();
    desktop.pauseDunst();
    EventLoopLatency latency;
    notifier->post(failure(QStringLiteral("dpl_8Fq2"), dashboard));
    waitUntil([] { return false; }, 300);
    EXPECT_LE(latency.worst().count(), 200);
    desktop.resumeDunst();
    ASSERT_TRUE(waitUntil([&] { return posted.count() == 1; }));
    // The first notification was dropped, not kept and delivered late.
    EXPECT_EQ(dunst().displayed(), 1);
    EXPECT_EQ(notifier->pendingCount(), 1);
}

TEST_F(FreedesktopNotifierTest, ButtonsOpenTheDeploymentAskForTheReportOrARedeploy) {
    // dunst shows buttons in its context menu, through its dmenu command: this one records the
    // menu and picks the entry named in the choice file.
    QTemporaryDir dir;
    const QString menu = dir.filePath(QStringLiteral("menu.txt"));
    const QString choice = dir.filePath(QStringLiteral("choice.txt"));
    const QString pick = dir.filePath(QStringLiteral("pick.sh"));
    const auto choose = [&](const QByteArray& entry) {
        QFile file(choice);
        return file.open(QIODevice::WriteOnly) && file.write(entry) == entry.size();
    };
    QFile script(pick);
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write(QStringLiteral("#!/bin/sh\ncat > '%1'\ngrep \"$(cat '%2')\" '%1' | head -n 1\n")
                     .arg(menu, choice)
                     .toUtf8());
    script.close();
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    startDunst("    dmenu = " + pick.toUtf8());
    QStringList asked;
    QStringList redeploys;
    notifier->setReportHandler([&asked](const QString& id) { asked.append(id); });
    notifier->setRedeployHandler([&redeploys](const QString& id) { redeploys.append(id); });

    FailureNotification withButtons = failure(QStringLiteral("dpl_8Fq2"), dashboard);
    withButtons.offersReport = true;
    withButtons.offersRedeploy = true;
    ASSERT_TRUE(choose("Copy for AI"));
    ASSERT_NE(post(withButtons), 0u);
    ASSERT_TRUE(waitUntil([&] { return dunst().displayed() == 1; }));
    ASSERT_TRUE(dunst().openContextMenu());
    ASSERT_TRUE(waitUntil([&] { return !asked.isEmpty(); }));
    EXPECT_EQ(asked, QStringList{"dpl_8Fq2"});
    QFile offered(menu);
    ASSERT_TRUE(offered.open(QIODevice::ReadOnly));
    const QString lines = QString::fromUtf8(offered.readAll());
    EXPECT_TRUE(lines.contains("Open deployment")) << lines.toStdString();
    EXPECT_TRUE(lines.contains("Copy for AI"));
    EXPECT_TRUE(lines.contains("Redeploy"));

    ASSERT_TRUE(dunst().closeAll());
    ASSERT_TRUE(choose("Redeploy"));
    withButtons.identifier = QStringLiteral("dpl_9Kz1");
    ASSERT_NE(post(withButtons), 0u);
    ASSERT_TRUE(waitUntil([&] { return dunst().displayed() == 1; }));
    ASSERT_TRUE(dunst().openContextMenu());
    ASSERT_TRUE(waitUntil([&] { return !redeploys.isEmpty(); }));
    EXPECT_EQ(redeploys, QStringList{"dpl_9Kz1"});
    EXPECT_EQ(asked.size(), 1);
    EXPECT_TRUE(opened.isEmpty());
}

TEST_F(FreedesktopNotifierTest, AServerWithoutButtonsGetsOnlyTheClick) {
    PlainNotificationServer server;
    const QString name = QStringLiteral("plain-server");
    QDBusConnection serving = QDBusConnection::connectToBus(desktop.busAddress(), name);
    ASSERT_TRUE(serving.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &server,
                                       QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(serving.registerService(QStringLiteral("org.freedesktop.Notifications")));
    notifier->setReportHandler([](const QString&) {});
    notifier->setRedeployHandler([](const QString&) {});

    FailureNotification withReport = failure(QStringLiteral("dpl_8Fq2"), dashboard);
    withReport.offersReport = true;
    withReport.offersRedeploy = true;
    ASSERT_NE(post(withReport), 0u);

    ASSERT_EQ(server.requestedActions.size(), 1);
    EXPECT_EQ(server.requestedActions[0], QStringList({"default", "Open"}));
    QDBusConnection::disconnectFromBus(name);
}

TEST_F(FreedesktopNotifierTest, AButtonsActivationTokenIsTakenOnceAndOnlyForItsNotification) {
    PlainNotificationServer server;
    server.capabilities << QStringLiteral("actions");
    const QString name = QStringLiteral("token-server");
    QDBusConnection serving = QDBusConnection::connectToBus(desktop.busAddress(), name);
    ASSERT_TRUE(serving.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &server,
                                       QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(serving.registerService(QStringLiteral("org.freedesktop.Notifications")));
    QStringList redeploys;
    notifier->setRedeployHandler(
        [&](const QString& id) { redeploys.append(id + " " + notifier->takeActivationToken()); });
    const auto emitSignal = [&](const QString& member, const QVariantList& arguments) {
        QDBusMessage signal =
            QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                       QStringLiteral("org.freedesktop.Notifications"), member);
        signal.setArguments(arguments);
        return serving.send(signal);
    };

    FailureNotification first = failure(QStringLiteral("dpl_8Fq2"), dashboard);
    first.offersRedeploy = true;
    FailureNotification second = first;
    second.identifier = QStringLiteral("dpl_9Kz1");
    const uint firstID = post(first), secondID = post(second);
    ASSERT_EQ(server.requestedActions.size(), 2);
    ASSERT_TRUE(server.requestedActions[0].contains(QStringLiteral("redeploy")));
    // The server sends the token just before the button's action, for the same notification.
    ASSERT_TRUE(emitSignal(QStringLiteral("ActivationToken"), {firstID, QStringLiteral("tok-1")}));
    ASSERT_TRUE(emitSignal(QStringLiteral("ActionInvoked"), {firstID, QStringLiteral("redeploy")}));
    ASSERT_TRUE(waitUntil([&] { return redeploys.size() == 1; }));
    // Another notification's token is not this one's, and a token serves once.
    ASSERT_TRUE(emitSignal(QStringLiteral("ActivationToken"), {secondID, QStringLiteral("tok-2")}));
    ASSERT_TRUE(emitSignal(QStringLiteral("ActionInvoked"), {firstID, QStringLiteral("redeploy")}));
    ASSERT_TRUE(waitUntil([&] { return redeploys.size() == 2; }));
    ASSERT_TRUE(
        emitSignal(QStringLiteral("ActionInvoked"), {secondID, QStringLiteral("redeploy")}));
    ASSERT_TRUE(waitUntil([&] { return redeploys.size() == 3; }));
    EXPECT_EQ(redeploys, QStringList({"dpl_8Fq2 tok-1", "dpl_8Fq2 ", "dpl_9Kz1 tok-2"}));
    EXPECT_TRUE(notifier->takeActivationToken().isEmpty());
    QDBusConnection::disconnectFromBus(name);
}
