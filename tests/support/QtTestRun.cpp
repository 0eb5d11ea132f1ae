#include "support/QtTestRun.h"

#include "core/common/Language.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

int runQtTests(int& argc, char** argv) {
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    Language::overrideSystemLanguages({QStringLiteral("en-US")});
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
