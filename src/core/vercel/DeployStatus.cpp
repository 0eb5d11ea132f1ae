#include "core/vercel/DeployStatus.h"

#include "core/common/Language.h"

#include <array>

namespace {

struct StatusText {
    DeployStatus status;
    const char* raw;
    const char* english;
    const char* french;
};

// In the order of the cases.
constexpr std::array<StatusText, 8> statusTexts{{
    {DeployStatus::queued, "QUEUED", "Queued", "En attente"},
    {DeployStatus::initializing, "INITIALIZING", "Initializing", "Initialisation"},
    {DeployStatus::building, "BUILDING", "Building", "Build en cours"},
    {DeployStatus::ready, "READY", "Live", "En ligne"},
    {DeployStatus::error, "ERROR", "Failed", "Échec"},
    {DeployStatus::canceled, "CANCELED", "Canceled", "Annulé"},
    {DeployStatus::blocked, "BLOCKED", "Blocked", "Bloqué"},
    {DeployStatus::unknown, "UNKNOWN", "No deployment", "Aucun déploiement"},
}};

const StatusText& textOf(DeployStatus status) {
    return statusTexts[static_cast<size_t>(status)];
}

} // namespace

std::optional<DeployStatus> deployStatusFromRaw(QStringView raw) {
    for (const StatusText& text : statusTexts) {
        if (raw == QLatin1StringView(text.raw))
            return text.status;
    }
    return std::nullopt;
}

QString rawValue(DeployStatus status) {
    return QString::fromLatin1(textOf(status).raw);
}

QString title(DeployStatus status) {
    return title(status, Language::isFrench());
}

QString title(DeployStatus status, bool french) {
    const StatusText& text = textOf(status);
    return QString::fromUtf8(french ? text.french : text.english);
}

bool isInProgress(DeployStatus status) {
    return status == DeployStatus::queued || status == DeployStatus::initializing ||
           status == DeployStatus::building;
}

bool isFailure(DeployStatus status) {
    return status == DeployStatus::error || status == DeployStatus::blocked;
}
