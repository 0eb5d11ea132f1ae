// Inputs found by the fuzz targets (fuzz/) that reach the engine.
#include "core/monitor/EngineFixture.h"

TEST_F(EngineFixture, TokenExpiryBeyondAnyDateStaysAValidDate) {
    account.token.insert("expiresAt", 1e300);
    const TokenExpiry expiry = connected().tokenExpiry();
    ASSERT_EQ(expiry,
              TokenExpiry::at(QDateTime::fromMSecsSinceEpoch(8'640'000'000'000'000, Qt::UTC)));
}
