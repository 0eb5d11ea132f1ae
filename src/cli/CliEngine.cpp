#include "cli/CliEngine.h"

#include "cli/CliApi.h"

std::unique_ptr<CliEngine> CliEngine::fromEnvironment() {
    const std::optional<QUrl> base = apiBaseFromEnvironment();
    if (!base)
        return nullptr;
    return std::make_unique<CliEngine>(*base);
}
