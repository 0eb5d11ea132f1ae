// gtest entry point with a Qt application object, so tests can run an event loop, wait for
// coroutines (QCoro::waitFor) and talk to loopback servers.
#include "support/QtTestRun.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    return runQtTests(argc, argv);
}
