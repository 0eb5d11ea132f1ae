// gtest entry point with a Qt application object, so tests can run an event loop, wait for
// coroutines (QCoro::waitFor) and talk to loopback servers. Every test gets its own empty
// preference store so nothing leaks between tests or into the user's config.
#include "core/common/BoundedGet.h"
#include "core/common/Language.h"
#include "core/common/Preferences.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    Language::overrideSystemLanguages({QStringLiteral("en-US")});
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    finishPendingRequests(); // a request left waiting by a test would otherwise leak its frames
    return result;
}
