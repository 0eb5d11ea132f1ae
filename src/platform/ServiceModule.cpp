#include "platform/ServiceModule.h"

#include "core/common/Language.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>
#include <memory>
#include <optional>

namespace {

// Every request fails with the reason the module is missing.
class MissingTransport final : public HttpTransport {
public:
    explicit MissingTransport(QString reason) : reason_(std::move(reason)) {}
    QCoro::Task<HttpReply> send(HttpRequest request) override {
        HttpReply reply;
        reply.url = request.url;
        reply.failure = NetworkFailure::unknownNetwork;
        reply.failureText = reason_;
        co_return reply;
    }

private:
    QString reason_;
};

struct Source {
    QStringList directories;
    const ServiceTable* linked = nullptr;
    std::optional<Expected<const ServiceTable*, QString>> loaded;
    std::unique_ptr<MissingTransport> missing;
};

Source& source() {
    static Source current;
    return current;
}

const ServiceHost host{&Language::text};

Expected<const ServiceTable*, QString> load(const QStringList& directories) {
    QString problem;
    for (const QString& directory : directories) {
        // A QLibrary object going away leaves the module loaded, and nothing unloads it: its
        // code stays in use until the process ends.
        QLibrary library(QDir(directory).filePath(QStringLiteral(QUILLON_MODULE_NAME)));
        const auto entry = reinterpret_cast<ServiceTableEntry>(library.resolve(serviceTableSymbol));
        if (entry != nullptr)
            return entry(&host);
        problem = library.errorString();
    }
    return Language::text("Quillon's network and keyring module could not be loaded (%1).",
                          "Le module réseau et trousseau de Quillon n'a pas pu être chargé (%1).")
        .arg(problem);
}

HttpTransport& moduleTransport() {
    const Expected<const ServiceTable*, QString> services = ServiceModule::table();
    if (services)
        return services.value()->transport();
    std::unique_ptr<MissingTransport>& missing = source().missing;
    if (!missing)
        missing = std::make_unique<MissingTransport>(services.error());
    return *missing;
}

} // namespace

QStringList ServiceModule::defaultDirectories() {
    const QString home = QCoreApplication::applicationDirPath();
    return {home, QDir(home).filePath(QStringLiteral("../" QUILLON_MODULE_DIR))};
}

void ServiceModule::loadFrom(const QStringList& directories) {
    source() = Source{directories, nullptr, std::nullopt, nullptr};
    HttpTransport::setProvider(&moduleTransport);
}

void ServiceModule::useLinked(const ServiceTable& table) {
    source() = Source{{}, &table, std::nullopt, nullptr};
    HttpTransport::setProvider(table.transport);
}

Expected<const ServiceTable*, QString> ServiceModule::table() {
    Source& current = source();
    if (current.linked != nullptr)
        return current.linked;
    if (!current.loaded)
        current.loaded = load(current.directories);
    return *current.loaded;
}
