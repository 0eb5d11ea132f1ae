// quillon-cli get [KEY] and set KEY VALUE: the preferences of Settings › General from a terminal,
// checked as the application reads them. A running tray picks the change up at once.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/monitor/PreferenceCatalog.h"

namespace {

CliCommand getCommand();
CliCommand setCommand();

const PreferenceCatalog::Entry* knownEntry(const QString& command, const QString& key) {
    const PreferenceCatalog::Entry* entry = PreferenceCatalog::find(key);
    if (!entry)
        cliErr() << "quillon-cli " << command << ": "
                 << Language::text("unknown preference '%1' ('quillon-cli get' lists them).",
                                   "préférence inconnue '%1' ('quillon-cli get' les liste).")
                        .arg(key)
                 << '\n';
    return entry;
}

QCoro::Task<int> runGet(QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(getCommand());
        co_return 0;
    }
    const Preferences& preferences = Preferences::standard();
    if (args.isEmpty()) {
        for (const PreferenceCatalog::Entry& entry : PreferenceCatalog::entries()) {
            const QString value = PreferenceCatalog::valueText(preferences, entry);
            cliOut() << entry.key;
            if (!value.isEmpty())
                cliOut() << ' ' << QString(value).replace(QLatin1Char('\n'), QStringLiteral(", "));
            cliOut() << '\n';
        }
        co_return 0;
    }
    if (args.size() != 1) {
        cliErr() << "quillon-cli get: unexpected argument '" << args[1] << "'\n";
        co_return kExitUsage;
    }
    const PreferenceCatalog::Entry* entry = knownEntry(QStringLiteral("get"), args.first());
    if (!entry)
        co_return kExitUsage;
    const QString value = PreferenceCatalog::valueText(preferences, *entry);
    if (!value.isEmpty())
        cliOut() << value << '\n';
    co_return 0;
}

QCoro::Task<int> runSet(QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(setCommand());
        co_return 0;
    }
    if (args.size() != 2) {
        cliErr() << "quillon-cli set: "
                 << Language::text("name one preference and its value (see 'quillon-cli get').",
                                   "nommez une préférence et sa valeur (voir 'quillon-cli get').")
                 << '\n';
        co_return kExitUsage;
    }
    const PreferenceCatalog::Entry* entry = knownEntry(QStringLiteral("set"), args.first());
    if (!entry)
        co_return kExitUsage;
    if (const std::optional<QString> problem =
            PreferenceCatalog::set(Preferences::standard(), *entry, args[1])) {
        cliErr() << "quillon-cli set: " << *problem << '\n';
        co_return kExitUsage;
    }
    co_return 0;
}

CliCommand getCommand() {
    return {QStringLiteral("get"), QStringLiteral("get [KEY]"),
            QStringLiteral("print a preference (without KEY: every preference and its value)"),
            runGet};
}

CliCommand setCommand() {
    return {QStringLiteral("set"), QStringLiteral("set KEY VALUE"),
            QStringLiteral("change a preference: true/false switches such as notifyOnlyMine, "
                           "refreshInterval in seconds, appLanguage, colours as #RRGGBB"),
            runSet};
}

const CliCommand::Registration getRegistration(getCommand());
const CliCommand::Registration setRegistration(setCommand());

} // namespace
