// gtest entry point for the views: like the core's, with a widget application so windows, icons
// and fonts exist (offscreen).
#include "core/common/Language.h"

#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Offscreen unless told otherwise, also when CTest lists the tests without a display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    Language::overrideSystemLanguages({QStringLiteral("en-US")});
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
