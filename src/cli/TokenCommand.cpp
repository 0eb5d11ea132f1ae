// quillon-cli token: stores, shows and removes the access token in the keyring. The token comes
// from standard input only, so it never appears in an argument list, and it is never printed.
#include "cli/CliCommand.h"
#include "core/common/Language.h"
#include "core/keychain/KeychainStore.h"
#include "services/LibsecretBackend.h"

#include <QFile>
#include <termios.h>
#include <unistd.h>

namespace {

const char* const kUsage = "token set|status|remove";

void printUsage(QTextStream& out) {
    out << "Usage: quillon-cli " << kUsage << "\n\n"
        << "  set     reads the token from standard input and stores it in the keyring\n"
           "  status  tells where the stored token is kept (exit 1 when none is stored)\n"
           "  remove  removes the stored token\n";
    out.flush();
}

int usageError(const QString& message) {
    cliErr() << "quillon-cli: " << message << " (see token --help)\n";
    cliErr().flush();
    return 2;
}

// At a terminal the token is typed without echo, so it does not stay on the screen.
QString readHiddenLine(QFile& input) {
    cliErr() << Language::text("Paste the access token, then press Enter: ",
                               "Collez le jeton d'accès, puis appuyez sur Entrée : ");
    cliErr().flush();
    termios saved{};
    const bool hide = tcgetattr(STDIN_FILENO, &saved) == 0;
    if (hide) {
        termios silent = saved;
        silent.c_lflag &= ~tcflag_t(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    const QByteArray line = input.readLine();
    if (hide)
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    cliErr() << '\n';
    cliErr().flush();
    return QString::fromUtf8(line);
}

QString readToken() {
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return {};
    if (isatty(STDIN_FILENO))
        return readHiddenLine(input).trimmed();
    return QString::fromUtf8(input.readAll()).trimmed();
}

void printMode(KeychainMode mode) {
    cliOut() << rawValue(mode) << ": " << storageDescription(mode) << '\n';
}

int setToken(KeychainStore& store) {
    const QString token = readToken();
    if (token.isEmpty())
        return usageError(
            Language::text("no token on standard input", "aucun jeton sur l'entrée standard"));
    const Expected<KeychainMode, KeychainError> stored = store.storeToken(token);
    if (!stored) {
        cliErr() << "quillon-cli: " << stored.error().errorDescription() << '\n';
        return 1;
    }
    printMode(*stored);
    return 0;
}

int showStatus(KeychainStore& store) {
    const std::optional<KeychainStore::StoredToken> stored = store.loadToken();
    if (!stored) {
        cliOut() << Language::text("No token is stored.", "Aucun jeton n'est enregistré.") << '\n';
        return 1;
    }
    printMode(stored->mode);
    return 0;
}

int removeToken(KeychainStore& store) {
    if (const std::optional<KeychainError> kept = store.deleteToken()) {
        cliErr() << kept->errorDescription() << ' '
                 << Language::text("The token kept there will not be used again.",
                                   "Le jeton qui y est conservé ne sera plus utilisé.")
                 << '\n';
        return 1;
    }
    cliOut() << Language::text("Token removed.", "Jeton supprimé.") << '\n';
    return 0;
}

int runToken(const QStringList& args) {
    if (args.size() == 1 && (args[0] == u"--help" || args[0] == u"-h")) {
        printUsage(cliOut());
        return 0;
    }
    if (args.isEmpty())
        return usageError(QStringLiteral("token needs set, status or remove"));
    // Extra arguments are refused without being echoed: they may well be the token itself.
    if (args.size() > 1)
        return usageError(QStringLiteral("token takes one of set, status or remove and nothing "
                                         "more; the token is read from standard input"));
    LibsecretBackend backend;
    KeychainStore store(backend);
    if (args[0] == u"set")
        return setToken(store);
    if (args[0] == u"status")
        return showStatus(store);
    if (args[0] == u"remove")
        return removeToken(store);
    return usageError(QStringLiteral("unknown token command"));
}

const CliCommand::Registration registration{CliCommand{
    QStringLiteral("token"),
    QString::fromLatin1(kUsage),
    QStringLiteral("store, show or remove the access token in the keyring"),
    [](QStringList args) -> QCoro::Task<int> { co_return runToken(args); },
}};

} // namespace
