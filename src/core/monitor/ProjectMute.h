#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>
#include <optional>

class Preferences;

// A project whose notifications and capsule rows are held back, for a while or until unmuted. Its
// failures still show in the panel and the tray colour. The name is kept for display, so the
// mutes can be listed without asking Vercel.
struct ProjectMute {
    QString name;
    std::optional<QDateTime> until; // absent: until unmuted

    bool isActive(const QDateTime& now) const { return !until || *until > now; }
    friend bool operator==(const ProjectMute&, const ProjectMute&) = default;
};

// By project id.
using ProjectMutes = QHash<QString, ProjectMute>;

// The lengths offered by the panel, Settings and quillon-cli.
enum class MuteLength { oneHour, untilTomorrow, untilUnmuted };

// When a mute of that length started at `now` ends: an hour later, at the next local midnight, or
// never (absent).
std::optional<QDateTime> muteEnd(MuteLength length, const QDateTime& now);

// The preference `mutedProjects`: {"prj_1": {"name": "api", "until": 1767270000}, …} with `until`
// in seconds since 1970, missing for "until unmuted". An entry of the wrong shape counts as
// absent, like any stored value of the wrong type.
namespace MuteStore {
ProjectMutes read(const Preferences& preferences);
void write(Preferences& preferences, const ProjectMutes& mutes);
} // namespace MuteStore

// "Muted until 16:00", "Muted until tomorrow", "Muted until 2026-01-03 16:00", or "Muted" without
// an end, in the user's language.
QString mutedText(const ProjectMute& mute, const QDateTime& now);
