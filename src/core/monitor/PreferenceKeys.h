#pragma once

#include <QString>

// Keys of the per-user preference store.
namespace PreferenceKeys {
inline const QString monitoredProjectIDs = QStringLiteral("monitoredProjectIDs");
inline const QString projectsConfigured = QStringLiteral("projectsConfigured");
inline const QString refreshInterval = QStringLiteral("refreshInterval");
inline const QString notifyOnFailure = QStringLiteral("notifyOnFailure");
inline const QString countProductionOnly = QStringLiteral("countProductionOnly");
inline const QString appLanguage = QStringLiteral("appLanguage");
inline const QString heroMonochrome = QStringLiteral("heroMonochrome");
inline const QString liveActivity = QStringLiteral("liveActivity");
inline const QString slowBuildWarning = QStringLiteral("slowBuildWarning");
inline const QString notifyProductionOnly = QStringLiteral("notifyProductionOnly");
inline const QString notifyOnlyMine = QStringLiteral("notifyOnlyMine");
inline const QString notifyWhenFixed = QStringLiteral("notifyWhenFixed");
inline const QString ignoreBotBranches = QStringLiteral("ignoreBotBranches");
inline const QString mutedProjects = QStringLiteral("mutedProjects");
} // namespace PreferenceKeys
