// The tray loads HTTP and the keyring from the services module on first use: nothing of it is
// mapped before, the real module answers after, and a missing module is an error the user can
// read rather than a crash.
#include "platform/ServiceModule.h"
#include "core/keychain/KeychainStore.h"
#include "core/vercel/VercelAPI.h"
#include "platform/ModuleSecretBackend.h"
#include "support/FrenchDesktop.h"
#include "support/LoopbackHttpServer.h"

#include <QCoro/QCoroTask>
#include <QFile>
#include <gtest/gtest.h>

namespace {

bool moduleMapped() {
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/quillon-services.so");
}

RequestResult<QByteArray> fetchUser(const VercelAPI& api) {
    std::optional<RequestResult<QByteArray>> result;
    QCoro::waitFor(
        [&]() -> QCoro::Task<> { result = co_await api.fetch(QStringLiteral("/v2/user"), {}); }());
    return *result;
}

// The rest of the suite runs on the linked services.
struct LinkedAfterwards {
    ~LinkedAfterwards() { ServiceModule::useLinked(linkedServiceTable()); }
};

} // namespace

TEST(ServiceModule, IsLoadedByTheFirstRequestAndAMissingOneIsAReadableError) {
    LinkedAfterwards restore;
    LoopbackHttpServer server;
    server.route("/v2/user", [](const auto&) { return LoopbackHttpServer::Response::json("{}"); });
    const VercelAPI api(QStringLiteral("tok"), server.baseUrl());
    {
        FrenchDesktop french;
        ServiceModule::loadFrom({QStringLiteral("/nonexistent")});
        const auto missing = fetchUser(api);
        ASSERT_FALSE(missing);
        EXPECT_TRUE(missing.error().message().contains("n'a pas pu être chargé"))
            << missing.error().message().toStdString();
        ModuleSecretBackend secrets;
        KeychainStore store(secrets);
        const auto read = store.readToken();
        ASSERT_FALSE(read);
        EXPECT_TRUE(read.error().errorDescription().contains("module réseau et trousseau"))
            << read.error().errorDescription().toStdString();
    }
    EXPECT_FALSE(moduleMapped());

    ServiceModule::loadFrom(
        {QStringLiteral("/nonexistent"), QStringLiteral(QUILLON_MODULE_BUILD_DIR)});
    EXPECT_FALSE(moduleMapped()); // not before it is needed
    const auto answered = fetchUser(api);
    ASSERT_TRUE(answered) << answered.error().message().toStdString();
    EXPECT_EQ(answered.value(), "{}");
    EXPECT_TRUE(moduleMapped());
}
