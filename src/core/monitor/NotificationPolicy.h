#pragma once

#include "core/monitor/ProjectMute.h"
#include "core/vercel/ProjectSnapshot.h"

#include <QDateTime>
#include <optional>

// Which deployments may interrupt the user: reach a notification or the Live Activity capsule.
// Every other view (the panel, the tray colour, the summary, today's count) shows every
// deployment whatever this says. With its defaults it lets everything through.
class NotificationPolicy {
public:
    struct Filters {
        bool productionOnly = false; // previews stay quiet
        bool onlyMine = false;       // deployments another user started stay quiet
        bool ignoreBots = false;     // dependency bots' branches stay quiet
        friend bool operator==(const Filters&, const Filters&) = default;
    };

    NotificationPolicy() = default;
    NotificationPolicy(Filters filters, std::optional<QString> accountUserId, ProjectMutes mutes)
        : filters_(filters), accountUserId_(std::move(accountUserId)), mutes_(std::move(mutes)) {}

    // Whether a deployment is of the kind the user asked to hear about, whatever its project. With
    // "only mine", a deployment without a known creator is not the user's; while the account's
    // own id is unknown the filter cannot tell and lets everything through.
    bool concerns(const VercelDeployment& deployment) const;
    // Whether the project is muted at `now`; a mute whose end has passed no longer counts.
    bool isMuted(const QString& projectId, const QDateTime& now) const;
    // Both: the snapshot's latest deployment may interrupt the user. A snapshot without one never
    // interrupts anyway.
    bool allows(const ProjectSnapshot& snapshot, const QDateTime& now) const;

    // Branches that Dependabot and Renovate push.
    static bool isBotBranch(const QString& branch);

private:
    Filters filters_;
    std::optional<QString> accountUserId_;
    ProjectMutes mutes_;
};
