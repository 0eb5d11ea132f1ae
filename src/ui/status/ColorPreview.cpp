#include "ui/status/ColorPreview.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/status/LiveActivityController.h"

using namespace std::chrono_literals;

namespace {

const QString previewID = QStringLiteral("color-preview");

// One state of the fake deployment: created and started `startedAgo` seconds before `start`,
// finished `buildSeconds` after that when given.
ProjectSnapshot snapshotAt(const QDateTime& start, const char* state, double startedAgo,
                           std::optional<double> buildSeconds) {
    const double created = static_cast<double>(start.toMSecsSinceEpoch()) - startedAgo * 1000.0;
    VercelDeployment deployment;
    deployment.id = previewID;
    deployment.readyState = QString::fromLatin1(state);
    deployment.target = QStringLiteral("production");
    deployment.createdAt = created;
    deployment.buildingAt = created;
    if (buildSeconds)
        deployment.ready = created + *buildSeconds * 1000.0;
    QMap<QString, JSONScalar> meta;
    meta.insert(QStringLiteral("githubCommitMessage"),
                JSONScalar{Language::text("Color preview", "Aperçu des couleurs")});
    deployment.meta = meta;
    return ProjectSnapshot{previewID,
                           Language::text("my-project", "mon-projet"),
                           QStringLiteral("preview"),
                           std::nullopt,
                           deployment,
                           30.0};
}

} // namespace

ColorPreview::ColorPreview(AppState& state, LiveActivityController& controller, QObject* parent)
    : QObject(parent), state_(state), controller_(controller) {}

ColorPreview::~ColorPreview() {
    if (task_)
        task_->cancel();
}

QList<ColorPreview::Step> ColorPreview::steps(const QDateTime& start) {
    return {
        {snapshotAt(start, "QUEUED", 2, std::nullopt), Tone::queued, 2500ms},
        {snapshotAt(start, "BUILDING", 18, std::nullopt), Tone::building, 3500ms},
        {snapshotAt(start, "READY", 45, 42), Tone::success, 2500ms},
        {snapshotAt(start, "ERROR", 40, 38), Tone::error, 3500ms},
    };
}

void ColorPreview::previewColors() {
    if (task_)
        task_->cancel();
    task_ = std::make_shared<Cancellation>();
    setPreviewing(true);
    run(this, steps(state_.clock().now()), task_);
}

QCoro::Task<> ColorPreview::run(QPointer<ColorPreview> self, QList<Step> steps,
                                std::shared_ptr<Cancellation> token) {
    for (const Step& step : steps) {
        if (!self || token->isCancelled())
            co_return;
        self->state_.setPreviewTone(step.tone);
        self->controller_.beginPreview(step.snapshot);
        co_await self->state_.clock().sleep(step.hold, token);
    }
    if (!self || token->isCancelled())
        co_return;
    AppState& state = self->state_;
    state.setPreviewTone(std::nullopt);
    self->setPreviewing(false);
    self->controller_.endPreview();
    self->controller_.update(state.snapshots(), state.liveActivity());
}

void ColorPreview::setPreviewing(bool previewing) {
    if (previewing_ == previewing)
        return;
    previewing_ = previewing;
    Q_EMIT previewingChanged(previewing);
}
