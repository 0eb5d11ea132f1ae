// gtest entry point for the views: like the core's, with a widget application so windows, icons
// and fonts exist (offscreen unless told otherwise, also when CTest lists the tests without a
// display).
#include "core/common/BoundedGet.h"
#include "core/common/Language.h"

#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    Language::overrideSystemLanguages({QStringLiteral("en-US")});
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    finishPendingRequests(); // a request left waiting by a test would otherwise leak its frames
    return result;
}
