#pragma once

#include "core/common/Language.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "core/update/UpdateService.h"
#include "support/FakeDesktop.h"
#include "support/FakeServices.h"
#include "support/FakeVercelAccount.h"
#include "support/LoopbackHttpServer.h"
#include "support/ManualClock.h"
#include "support/MemorySecretBackend.h"
#include "support/QtPrinters.h"
#include "support/TempPreferences.h"
#include "support/WaitUntil.h"
#include "ui/status/ColorPreview.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/StatusPalette.h"

#include <QCoro/QCoroTask>
#include <gtest/gtest.h>

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

// An AppState talking to a fake Vercel account on 127.0.0.1, with an in-memory keyring, a manual
// clock, the palette and the colour preview, in an English desktop.
class SettingsFixture : public ::testing::Test, protected FakeDesktop {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    AppState state{services(server.baseUrl())};
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};
    LiveActivityController live{palette, clock};
    ColorPreview preview{state, live};

    void SetUp() override { Language::overrideSystemLanguages({QStringLiteral("en-US")}); }
    void TearDown() override { Language::clearSystemLanguagesOverride(); }

    void addProjects(int count) {
        for (int i = 0; i < count; ++i)
            account.addProject({}, QStringLiteral("prj_%1").arg(i),
                               QStringLiteral("site-%1").arg(i, 2, 10, QLatin1Char('0')));
    }

    // Stores a token as the Vercel tab would and waits for the first listing.
    void connectAccount() {
        QCoro::waitFor(state.saveToken(QStringLiteral("tok_secret_123")));
        ASSERT_TRUE(waitUntil([&] { return !state.isRefreshing(); }));
    }
};
