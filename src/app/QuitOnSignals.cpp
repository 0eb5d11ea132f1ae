#include "app/QuitOnSignals.h"

#include <QCoreApplication>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int sockets[2] = {-1, -1}; // [0] written by the handler, [1] read by the event loop
} // namespace

QuitOnSignals::QuitOnSignals(std::initializer_list<int> signals, QObject* parent)
    : QObject(parent) {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(sockets[1], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [] {
        char byte = 0;
        [[maybe_unused]] const ssize_t n = ::read(sockets[1], &byte, 1);
        QCoreApplication::quit();
    });
    struct sigaction action {};
    action.sa_handler = &QuitOnSignals::handle;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : signals)
        ::sigaction(signal, &action, nullptr);
}

QuitOnSignals::~QuitOnSignals() {
    notifier_.reset();
    for (int& fd : sockets) {
        if (fd >= 0)
            ::close(fd);
        fd = -1;
    }
}

void QuitOnSignals::handle(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(sockets[0], &byte, 1);
}
