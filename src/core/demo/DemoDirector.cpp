#include "core/demo/DemoDirector.h"

#include <QUuid>
#include <cmath>

namespace {

const QString demoScope = QStringLiteral("demo");

double nowMs(const Clock& clock) {
    return static_cast<double>(clock.now().toMSecsSinceEpoch());
}

} // namespace

DemoDirector::DemoDirector(Clock& clock, QObject* parent) : QObject(parent), clock_(clock) {}

DemoDirector::~DemoDirector() {
    for (const auto& task : std::as_const(tasks_))
        task->cancel();
    if (autoplay_)
        autoplay_->cancel();
}

const QList<DemoDirector::Project>& DemoDirector::projects() {
    static const QList<Project> list{
        {QStringLiteral("my-saas"), 22}, {QStringLiteral("landing-page"), 14},
        {QStringLiteral("api"), 16},     {QStringLiteral("dashboard"), 20},
        {QStringLiteral("docs"), 11},    {QStringLiteral("blog"), 15},
    };
    return list;
}

QString DemoDirector::userId() {
    return QStringLiteral("usr_demo_acme");
}

double DemoDirector::speedFromEnvironment() {
    bool ok = false;
    const double speed = qEnvironmentVariable("QUILLON_DEMO_SPEED").toDouble(&ok);
    return ok && speed > 0 && std::isfinite(speed) ? speed : 1.0;
}

std::chrono::milliseconds DemoDirector::scaled(double seconds) const {
    return std::chrono::milliseconds(std::llround(seconds * 1000.0 / speed_));
}

void DemoDirector::start() {
    seedHistory();
}

void DemoDirector::changed() {
    if (onChange)
        onChange();
}

void DemoDirector::seedHistory() {
    struct Seed {
        const char* project;
        const char* message;
        const char* branch;
        double age;
        double build;
    };
    static constexpr Seed seeds[] = {
        {"my-saas", "Add team invitations", "main", 720, 24},
        {"landing-page", "Update hero copy", "main", 2820, 13},
        {"api", "Rate limit public endpoints", "main", 7200, 17},
        {"dashboard", "Dark mode", "feat/dark-mode", 10800, 21},
        {"docs", "Document webhooks", "main", 93600, 10},
        {"blog", "How we ship 20 times a day", "main", 345600, 15},
    };
    const double now = nowMs(clock_);
    latest_.clear();
    for (const Seed& seed : seeds) {
        Play play{QString::fromUtf8(seed.project), QString::fromUtf8(seed.message),
                  QString::fromUtf8(seed.branch)};
        VercelDeployment deployment = newDeployment(play);
        deployment.readyState = QStringLiteral("READY");
        deployment.createdAt = now - seed.age * 1000.0;
        deployment.buildingAt = deployment.createdAt;
        deployment.ready = *deployment.createdAt + seed.build * 1000.0;
        latest_.insert(play.project, deployment);
    }
    todayCount_ = 11;
    changed();
}

VercelDeployment DemoDirector::newDeployment(const Play& play) const {
    VercelDeployment deployment;
    const QString uuid = QUuid::createUuid().toString(QUuid::Id128);
    deployment.id = QStringLiteral("dpl_") + uuid.left(12);
    // Vercel's address of a deployment: project, a short hash, the account.
    deployment.url = QStringLiteral("%1-%2-acme.vercel.app").arg(play.project, uuid.mid(12, 9));
    if (play.production)
        deployment.target = QStringLiteral("production");
    QMap<QString, JSONScalar> meta;
    meta.insert(QStringLiteral("githubCommitRef"), JSONScalar{play.branch});
    meta.insert(QStringLiteral("githubCommitMessage"), JSONScalar{play.message});
    meta.insert(QStringLiteral("githubCommitSha"), JSONScalar{fakeSHA(play.message)});
    deployment.meta = meta;
    deployment.creatorUid = userId();
    return deployment;
}

void DemoDirector::runScene(int key) {
    const QString main = QStringLiteral("main");
    switch (key) {
    case 1:
        play({QStringLiteral("my-saas"), QStringLiteral("Add pricing page"), main, true, 22});
        break;
    case 2:
        play({QStringLiteral("api"), QStringLiteral("Handle checkout webhook"), main, true, 16,
              true});
        break;
    case 3:
        play({QStringLiteral("landing-page"), QStringLiteral("Add testimonials section"), main,
              true, 14});
        play({QStringLiteral("dashboard"), QStringLiteral("Onboarding checklist"),
              QStringLiteral("feat/onboarding"), false, 20, false, 1.2});
        play({QStringLiteral("docs"), QStringLiteral("Add API reference"), main, true, 11, false,
              2.4});
        break;
    case 4:
        play({QStringLiteral("api"), QStringLiteral("Fix customerId on checkout session"), main,
              true, 15});
        break;
    case 5:
        toggleAutoplay();
        break;
    case 0:
        seedHistory();
        break;
    default:
        break;
    }
}

void DemoDirector::play(const Play& play) {
    if (const auto running = tasks_.value(play.project))
        running->cancel();
    auto token = std::make_shared<Cancellation>();
    tasks_.insert(play.project, token);
    runPlay(play, token);
}

QCoro::Task<> DemoDirector::runPlay(Play play, std::shared_ptr<Cancellation> token) {
    QPointer<DemoDirector> self(this);
    Clock& clock = clock_;
    auto stopped = [&] { return !self || token->isCancelled(); };
    if (play.delaySeconds > 0)
        co_await clock.sleep(scaled(play.delaySeconds), token);
    if (stopped())
        co_return;
    ++todayCount_;
    VercelDeployment deployment = newDeployment(play);
    deployment.readyState = QStringLiteral("QUEUED");
    deployment.createdAt = nowMs(clock);
    latest_.insert(play.project, deployment);
    changed();
    co_await clock.sleep(scaled(2), token);
    if (stopped())
        co_return;
    deployment.readyState = QStringLiteral("BUILDING");
    deployment.buildingAt = nowMs(clock);
    latest_.insert(play.project, deployment);
    changed();
    co_await clock.sleep(scaled(play.buildSeconds), token);
    if (stopped())
        co_return;
    deployment.readyState = play.fails ? QStringLiteral("ERROR") : QStringLiteral("READY");
    deployment.ready = nowMs(clock);
    latest_.insert(play.project, deployment);
    changed();
}

std::optional<VercelDeployment> DemoDirector::redeploy(const QString& project) {
    const auto found = latest_.constFind(project);
    if (found == latest_.constEnd())
        return std::nullopt;
    const auto meta = [&](const char* key) {
        return found->meta.value_or(QMap<QString, JSONScalar>())
            .value(QString::fromLatin1(key))
            .string.value_or(QString());
    };
    play({project, meta("githubCommitMessage"), meta("githubCommitRef"), found->isProduction(),
          medianOf(project)});
    return latest_.value(project);
}

bool DemoDirector::cancel(const QString& project) {
    const std::shared_ptr<Cancellation> running = tasks_.value(project);
    const auto found = latest_.find(project);
    if (!running || running->isCancelled() || found == latest_.end() ||
        !isInProgress(found->status()))
        return false;
    running->cancel();
    tasks_.remove(project);
    found->readyState = QStringLiteral("CANCELED");
    found->ready = nowMs(clock_);
    changed();
    return true;
}

double DemoDirector::medianOf(const QString& project) const {
    for (const Project& known : projects()) {
        if (known.name == project)
            return known.median;
    }
    return 15;
}

void DemoDirector::toggleAutoplay() {
    if (autoplay_) {
        autoplay_->cancel();
        autoplay_.reset();
        return;
    }
    autoplay_ = std::make_shared<Cancellation>();
    runAutoplay(autoplay_);
}

QCoro::Task<> DemoDirector::runAutoplay(std::shared_ptr<Cancellation> token) {
    QPointer<DemoDirector> self(this);
    Clock& clock = clock_;
    static constexpr std::pair<int, int> cycle[] = {{1, 38}, {2, 30}, {4, 32}, {3, 40}};
    while (self && !token->isCancelled()) {
        for (const auto& [scene, wait] : cycle) {
            if (!self || token->isCancelled())
                co_return;
            runScene(scene);
            co_await clock.sleep(scaled(wait), token);
        }
    }
}

QList<ProjectSnapshot> DemoDirector::snapshots() const {
    QList<ProjectSnapshot> list;
    for (const Project& project : projects()) {
        ProjectSnapshot snapshot{project.name, project.name, demoScope,
                                 std::nullopt, std::nullopt, project.median};
        if (latest_.contains(project.name))
            snapshot.latest = latest_.value(project.name);
        list.append(snapshot);
    }
    return list;
}

QList<ProjectRef> DemoDirector::projectRefs() const {
    QList<ProjectRef> refs;
    for (const Project& project : projects())
        refs.append({project.name, project.name, std::nullopt, demoScope});
    return refs;
}

std::optional<VercelDeployment> DemoDirector::latest(const QString& project) const {
    if (!latest_.contains(project))
        return std::nullopt;
    return latest_.value(project);
}

QString DemoDirector::fakeSHA(const QString& message) {
    quint64 hash = 0x14650fb0739d0383ULL;
    for (const char byte : message.toUtf8()) {
        hash ^= static_cast<quint8>(byte);
        hash *= 0x100000001b3ULL;
    }
    return QStringLiteral("%1").arg(hash, 16, 16, QLatin1Char('0')) +
           QStringLiteral("a3c9e2f1d4b8a7c6e5f0");
}

QStringList DemoDirector::buildLog(const QString& project) {
    const QString sha = fakeSHA(QStringLiteral("Handle checkout webhook")).left(7);
    QStringList lines{
        QStringLiteral("Cloning github.com/acme/%1 (Branch: main, Commit: %2)").arg(project, sha),
        QStringLiteral("Cloning completed: 412.000ms"),
        QStringLiteral("Running \"vercel build\""),
        QStringLiteral("Vercel CLI 39.1.2"),
        QStringLiteral("Installing dependencies..."),
        QStringLiteral("added 312 packages in 9s"),
        QStringLiteral("Detected Next.js version: 15.0.3"),
        QStringLiteral("Running \"npm run build\""),
        QString(),
        QStringLiteral("> %1@0.1.0 build").arg(project),
        QStringLiteral("> next build"),
        QString(),
        QStringLiteral("   Creating an optimized production build ..."),
        QStringLiteral("   Compiled successfully"),
        QStringLiteral("   Linting and checking validity of types ..."),
        QStringLiteral("Failed to compile."),
        QString(),
        QStringLiteral("./app/api/checkout/webhook/route.ts:42:31"),
        QStringLiteral("Type error: Property 'customerId' does not exist on type "
                       "'CheckoutSession'."),
        QString(),
        QStringLiteral("  40 |   const session = event.data.object as CheckoutSession;"),
        QStringLiteral("  41 |   await markPaid(session.id);"),
        QStringLiteral("> 42 |   await linkCustomer(session.customerId, session.id);"),
        QStringLiteral("     |                              ^"),
        QStringLiteral("  43 |   return Response.json({ received: true });"),
        QStringLiteral("  44 | }"),
        QString(),
        QStringLiteral("Next.js build worker exited with code: 1 and signal: null"),
        QStringLiteral("Error: Command \"npm run build\" exited with 1"),
    };
    return lines;
}
