#include "support/QtTestRun.h"

#include "core/common/BoundedGet.h"
#include "core/common/Language.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

int runQtTests(int& argc, char** argv) {
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    Language::overrideSystemLanguages({QStringLiteral("en-US")});
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    finishPendingRequests(); // a request left waiting by a test would otherwise leak its frames
    return result;
}
