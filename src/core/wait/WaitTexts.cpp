#include "core/wait/WaitTexts.h"

#include "core/common/Language.h"
#include "core/common/TimeTexts.h"

namespace {

QString clockText(const QDateTime& at) {
    return at.toLocalTime().time().toString(QStringLiteral("HH:mm:ss"));
}

// The commit as its deployment names it, else as it was asked for.
QString commitText(const CommitHash& commit, const std::optional<VercelDeployment>& deployment) {
    const std::optional<QString> sha = deployment ? deployment->shortSHA() : std::nullopt;
    return sha.value_or(commit.shortText());
}

} // namespace

QString waitingLine(const CommitHash& commit, const LinkedProject& project) {
    return Language::text("Waiting for the deployment of %1 in %2…",
                          "En attente du déploiement de %1 dans %2…")
        .arg(commit.shortText(), project.ref.name);
}

QString stateLine(const VercelDeployment& deployment, const LinkedProject& project,
                  const CommitHash& commit, const QDateTime& at) {
    return u'[' + clockText(at) + QStringLiteral("] ") + project.ref.name + u' ' +
           commitText(commit, deployment) + Language::text(": ", " : ") +
           deployment.statusTitle(Language::isFrench());
}

QString canceledSentence(const CommitHash& commit, const LinkedProject& project) {
    return Language::text("The deployment of %1 in %2 was canceled.",
                          "Le déploiement de %1 dans %2 a été annulé.")
        .arg(commit.shortText(), project.ref.name);
}

QString skippedSentence(const CommitHash& commit, const LinkedProject& project) {
    return Language::text("Vercel skipped the build of %1 in %2: the project's Ignored Build Step "
                          "found nothing to build.",
                          "Vercel n'a pas construit %1 dans %2 : l'Ignored Build Step du projet "
                          "n'a rien trouvé à construire.")
        .arg(commit.shortText(), project.ref.name);
}

QString blockedSentence(const CommitHash& commit, const LinkedProject& project,
                        const VercelDeployment& deployment) {
    const QString blocked = Language::text("Vercel blocked the deployment of %1 in %2.",
                                           "Vercel a bloqué le déploiement de %1 dans %2.")
                                .arg(commit.shortText(), project.ref.name);
    if (!deployment.readyStateReason || deployment.readyStateReason->isEmpty())
        return blocked;
    return blocked + u' ' + *deployment.readyStateReason;
}

QString timedOutSentence(const CommitHash& commit, const std::optional<LinkedProject>& project,
                         const std::optional<VercelDeployment>& deployment,
                         std::chrono::milliseconds timeout) {
    const QString duration = durationText(double(timeout.count()) / 1000.0);
    if (!project)
        return Language::text("Vercel could not be asked about %1 within %2.",
                              "Vercel n'a pas pu être interrogé sur %1 en %2.")
            .arg(commit.shortText(), duration);
    if (!deployment)
        return Language::text("No deployment of %1 appeared in %2 within %3.",
                              "Aucun déploiement de %1 n'est apparu dans %2 en %3.")
            .arg(commit.shortText(), project->ref.name, duration);
    return Language::text("The deployment of %1 in %2 did not end within %3 (%4).",
                          "Le déploiement de %1 dans %2 ne s'est pas terminé en %3 (%4).")
        .arg(commitText(commit, deployment), project->ref.name, duration,
             deployment->statusTitle(Language::isFrench()));
}

QString retryNote(const QString& why, const QDateTime& deadline) {
    return why + u' ' +
           Language::text("Trying again until %1.", "Nouvel essai jusqu'à %1.")
               .arg(clockText(deadline));
}

QString slowDownNote(const QDateTime& next) {
    return Language::text("Vercel asked Quillon to slow down. Next check at %1.",
                          "Vercel a demandé à Quillon de ralentir. Prochaine vérification à %1.")
        .arg(clockText(next));
}
