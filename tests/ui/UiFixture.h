#pragma once

#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "support/FakeDesktop.h"
#include "support/FakeServices.h"
#include "support/ManualClock.h"
#include "support/MemorySecretBackend.h"
#include "support/QtPrinters.h"
#include "support/TempPreferences.h"

#include <gtest/gtest.h>

// An AppState on a manual clock with recording desktop services and a private preference store,
// for the views that observe it.
class UiFixture : public ::testing::Test, protected FakeDesktop {
protected:
    AppState state{services()};
};
