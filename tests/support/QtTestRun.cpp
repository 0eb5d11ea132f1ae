#include "support/QtTestRun.h"

#include "core/common/Language.h"
#include "platform/ServiceModule.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

int runQtTests(int& argc, char** argv) {
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    Language::overrideSystemLanguages({QStringLiteral("en-US")});
    ServiceModule::useLinked(linkedServiceTable());
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
