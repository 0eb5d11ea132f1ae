// quillon-soak-server: a loopback Vercel account for scripts/soak. Prints its base address on
// standard output, then plays SoakScenario until it is stopped.
#include "soak/SoakScenario.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillon-soak-server"));
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args == QStringList{QStringLiteral("--help")}) {
        std::puts("Usage: quillon-soak-server\n\n"
                  "Serves a fake Vercel account on 127.0.0.1 that plays builds, a failure, a 500\n"
                  "and a request that never answers, in a loop. Prints the address to give\n"
                  "quillon-cli in QUILLON_API_BASE, then runs until it is stopped.");
        return 0;
    }
    if (args == QStringList{QStringLiteral("--version")}) {
        std::puts("quillon-soak-server " QUILLON_VERSION);
        return 0;
    }
    if (!args.isEmpty()) {
        std::fprintf(stderr, "quillon-soak-server: takes no arguments (see --help)\n");
        return 2;
    }
    LoopbackHttpServer server;
    SoakScenario scenario(server);
    std::printf("%s\n", qPrintable(server.baseUrl().toString()));
    std::fflush(stdout);
    return app.exec();
}
