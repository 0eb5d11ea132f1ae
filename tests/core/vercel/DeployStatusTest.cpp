#include "core/vercel/DeployStatus.h"

#include "support/TempPreferences.h"

#include <gtest/gtest.h>

namespace {

const DeployStatus allStatuses[] = {
    DeployStatus::queued, DeployStatus::initializing, DeployStatus::building, DeployStatus::ready,
    DeployStatus::error,  DeployStatus::canceled,     DeployStatus::unknown};

} // namespace

TEST(DeployStatus, RawValuesRoundTripAndMatchExactly) {
    for (DeployStatus status : allStatuses)
        EXPECT_EQ(deployStatusFromRaw(rawValue(status)), status);
    EXPECT_EQ(rawValue(DeployStatus::canceled), "CANCELED");
    EXPECT_EQ(deployStatusFromRaw(u"INITIALIZING"), DeployStatus::initializing);
    EXPECT_FALSE(deployStatusFromRaw(u"ready"));
    EXPECT_FALSE(deployStatusFromRaw(u"READY "));
    EXPECT_FALSE(deployStatusFromRaw(u"CANCELLED"));
    EXPECT_FALSE(deployStatusFromRaw(u""));
}

TEST(DeployStatus, OnlyTheFirstThreeAreInProgress) {
    QList<DeployStatus> inProgress;
    for (DeployStatus status : allStatuses) {
        if (isInProgress(status))
            inProgress << status;
    }
    EXPECT_EQ(inProgress, (QList<DeployStatus>{DeployStatus::queued, DeployStatus::initializing,
                                               DeployStatus::building}));
}

TEST(DeployStatus, TitleFollowsTheLanguageWhenAsked) {
    TempPreferences prefs;
    prefs->setString(QStringLiteral("appLanguage"), QStringLiteral("en"));
    QStringList english;
    for (DeployStatus status : allStatuses)
        english << title(status);
    EXPECT_EQ(english, (QStringList{"Queued", "Initializing", "Building", "Live", "Failed",
                                    "Canceled", "No deployment"}));

    prefs->setString(QStringLiteral("appLanguage"), QStringLiteral("fr"));
    QStringList french;
    for (DeployStatus status : allStatuses)
        french << title(status);
    EXPECT_EQ(french, (QStringList{"En attente", "Initialisation", "Build en cours", "En ligne",
                                   "Échec", "Annulé", "Aucun déploiement"}));
    EXPECT_EQ(title(DeployStatus::ready, false), "Live");
}
