// gtest entry point for the views: like the core's, with a widget application so windows, icons
// and fonts exist (offscreen unless told otherwise, also when CTest lists the tests without a
// display).
#include "support/QtTestRun.h"

#include <QApplication>

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return runQtTests(argc, argv);
}
