// Renders every state of the panel, the Live Activity capsule and the General settings to PNG
// files, offscreen, so a person can look at them (and the README can show them).
#include "core/common/Language.h"
#include "core/demo/DemoDirector.h"
#include "platform/ServiceModule.h"
#include "screenshots/ScreenshotScene.h"
#include "support/WaitUntil.h"
#include "ui/common/ActionConfirmationWindow.h"
#include "ui/panel/PanelView.h"
#include "ui/panel/ProjectRow.h"
#include "ui/settings/GeneralSettings.h"
#include "ui/settings/SettingsView.h"
#include "ui/settings/VercelSettings.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/LiveActivityModel.h"
#include "ui/status/LiveActivityView.h"

#include <QApplication>
#include <QCoro/QCoroTask>
#include <QDir>
#include <QEnterEvent>
#include <QJsonArray>
#include <QMenu>
#include <QPainter>
#include <QTabBar>
#include <cstdio>
#include <memory>

using namespace std::chrono_literals;

namespace {

QDir outDir;
int failures = 0;

void save(const QImage& image, const QString& name) {
    const QString path = outDir.filePath(name + QStringLiteral(".png"));
    if (!image.save(path)) {
        std::fprintf(stderr, "quillon-screenshots: cannot write %s\n", qPrintable(path));
        ++failures;
        return;
    }
    std::printf("%s\n", qPrintable(path));
}

void settle() {
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
}

// `act`, when given, does something to the shown panel first (a hover, a question).
void shootPanel(ScreenshotScene& scene, const QString& name,
                const std::function<void(PanelView&)>& act = {}) {
    PanelView panel(scene.state, scene.palette);
    panel.redraw();
    panel.resize(PanelView::panelWidth, panel.fittingHeight());
    panel.show();
    settle();
    if (act) {
        act(panel);
        settle();
        panel.resize(PanelView::panelWidth, panel.fittingHeight());
        settle();
    }
    save(panel.grab().toImage(), name);
}

ProjectRow* rowOf(PanelView& panel, const QString& name) {
    for (ProjectRow* row : panel.rows())
        if (row->snapshot().name == name)
            return row;
    return nullptr;
}

void hover(ProjectRow& row) {
    const QPointF at(row.width() / 2.0, row.height() / 2.0);
    QEnterEvent enter(at, at, row.mapToGlobal(at));
    QCoreApplication::sendEvent(&row, &enter);
}

// Scenes whose work never finishes (a request left unanswered) stay alive until the end.
ScreenshotScene& newScene() {
    static std::vector<std::unique_ptr<ScreenshotScene>> scenes;
    scenes.push_back(std::make_unique<ScreenshotScene>());
    return *scenes.back();
}

void addProjects(ScreenshotScene& scene, int count) {
    const QStringList states{"READY", "READY", "BUILDING", "READY", "ERROR", "READY"};
    for (int i = 0; i < count; ++i) {
        const QString id = QStringLiteral("p_%1").arg(i, 2, 10, QLatin1Char('0'));
        const QString state = states[i % states.size()];
        const double created = scene.minutesAgo(i == 2 ? 1 : 30 + 45 * i);
        const std::optional<double> ready =
            state == "BUILDING" ? std::nullopt : std::optional(created + 83'000);
        scene.account.addProject(
            "", id, QStringLiteral("project-%1").arg(i),
            QJsonArray{FakeVercelAccount::deployment("dpl_" + id, id, state, created, ready)});
    }
}

void connectScene(ScreenshotScene& scene) {
    QCoro::waitFor(scene.state.connect(QStringLiteral("tok_screenshots")));
    waitUntil([&] { return !scene.state.isRefreshing(); });
}

void shootConnectionStates() {
    ScreenshotScene& noToken = newScene();
    noToken.state.start(false);
    shootPanel(noToken, "panel-no-token");

    ScreenshotScene& checking = newScene();
    checking.account.failures.insert("/v2/user", LoopbackHttpServer::Response::never());
    [[maybe_unused]] auto pending = checking.state.connect(QStringLiteral("tok_screenshots"));
    shootPanel(checking, "panel-checking");

    ScreenshotScene& failed = newScene();
    failed.account.failures.insert("/v2/user", LoopbackHttpServer::Response::vercelError(
                                                   403, "forbidden", "The token is not valid."));
    QCoro::waitFor(failed.state.connect(QStringLiteral("tok_screenshots")));
    shootPanel(failed, "panel-failed-connection");

    ScreenshotScene& loading = newScene();
    addProjects(loading, 3);
    loading.account.failures.insert("/v6/deployments", LoopbackHttpServer::Response::never());
    [[maybe_unused]] auto loadingTask = loading.state.connect(QStringLiteral("tok_screenshots"));
    waitUntil([&] { return loading.state.connection().kind == Connection::Kind::connected; });
    shootPanel(loading, "panel-loading");

    ScreenshotScene& empty = newScene();
    connectScene(empty);
    shootPanel(empty, "panel-no-projects");

    ScreenshotScene& many = newScene();
    addProjects(many, 12);
    connectScene(many);
    shootPanel(many, "panel-scrolling");
}

// A team that wants SAML, a deployment Vercel blocked, and Vercel asking to slow down: the
// panel and Settings › Vercel say so.
void shootNotices() {
    ScreenshotScene& scene = newScene();
    addProjects(scene, 3);
    scene.account.addSamlTeam("team_saml", "acme", "Acme Team");
    QJsonObject blocked =
        FakeVercelAccount::deployment("dpl_blocked", "p_01", "BLOCKED", scene.minutesAgo(4));
    blocked.insert("readyStateReason", "Git author eve@acme.dev must have access to the team "
                                       "Acme Team on Vercel to create deployments.");
    scene.account.addDeployment("", blocked);
    connectScene(scene);
    scene.account.failures.insert(
        "/v9/projects", LoopbackHttpServer::Response::vercelError(429, "rate_limited", "Slow down")
                            .withHeader("Retry-After", "90"));
    QCoro::waitFor(scene.state.refresh());
    shootPanel(scene, "panel-notices");
    VercelSettings settings(scene.state, scene.palette);
    settings.resize(560, settings.sizeHint().height());
    settings.show();
    settle();
    save(settings.grab().toImage(), "settings-vercel-notices");
}

// The demo's six projects, with one scene played up to `seconds`.
void shootDemo(const QString& name, int scene, double seconds, const QString& language) {
    ScreenshotScene& demo = newScene();
    demo.state.setLanguage(language);
    demo.state.start(true);
    if (scene > 0)
        demo.state.demo()->runScene(scene);
    for (double t = 0; t < seconds; t += 0.5)
        demo.clock.advance(500ms);
    settle();
    shootPanel(demo, name);
}

// The demo after api failed, with api muted for an hour: its row stays, marked.
void shootMuted() {
    ScreenshotScene& demo = newScene();
    demo.state.setLanguage(QStringLiteral("en"));
    demo.state.start(true);
    demo.state.demo()->runScene(2);
    for (int i = 0; i < 60; ++i)
        demo.clock.advance(500ms);
    demo.state.muteProject(QStringLiteral("api"), QStringLiteral("api"), MuteLength::oneHour);
    settle();
    shootPanel(demo, QStringLiteral("panel-muted"));
}

// The demo with api failed and my-saas building: Redeploy beside Copy for AI and View log, Cancel
// on the build, the question asked inside a row, Copy URL under the pointer and just after a click.
void shootActions(const QString& language, const QString& suffix) {
    const auto demoAt = [&](int scene, int halfSeconds) -> ScreenshotScene& {
        ScreenshotScene& demo = newScene();
        demo.state.setLanguage(language);
        demo.state.start(true);
        demo.state.demo()->runScene(scene);
        for (int i = 0; i < halfSeconds; ++i)
            demo.clock.advance(500ms);
        return demo;
    };
    ScreenshotScene& failed = demoAt(2, 60);
    failed.state.demo()->runScene(1);
    failed.clock.advance(3s);
    shootPanel(failed, "panel-actions" + suffix);
    shootPanel(failed, "panel-redeploy-question" + suffix, [](PanelView& panel) {
        if (ProjectRow* api = rowOf(panel, "api"))
            api->ask(DeploymentAction::redeploy);
    });
    shootPanel(failed, "panel-cancel-question" + suffix, [](PanelView& panel) {
        if (ProjectRow* saas = rowOf(panel, "my-saas"))
            saas->ask(DeploymentAction::cancel);
    });
    ScreenshotScene& idle = demoAt(0, 2);
    shootPanel(idle, "panel-copy-url" + suffix, [](PanelView& panel) {
        if (ProjectRow* row = panel.rows().value(0))
            hover(*row);
    });
    shootPanel(idle, "panel-url-copied" + suffix, [](PanelView& panel) {
        if (ProjectRow* row = panel.rows().value(0)) {
            hover(*row);
            row->copyURL();
        }
    });
}

// A redeploy Vercel refused (the team lets the token read, not deploy): the row says why.
void shootActionProblem() {
    ScreenshotScene& scene = newScene();
    scene.state.setLanguage(QStringLiteral("en"));
    scene.account.now = [&scene] { return scene.clock.now(); };
    scene.account.addTeam("team_acme", "acme");
    scene.account.readOnlyTeams.insert("team_acme");
    scene.account.addProject("team_acme", "p_api", "api");
    QJsonObject failed = FakeVercelAccount::deployment("dpl_api1", "p_api", "ERROR",
                                                       scene.minutesAgo(10), scene.minutesAgo(8));
    failed.insert("target", "production");
    scene.account.addDeployment("team_acme", failed);
    addProjects(scene, 2);
    connectScene(scene);
    for (const ProjectSnapshot& snapshot : scene.state.snapshots())
        if (snapshot.name == "api")
            QCoro::waitFor(scene.state.redeploy(snapshot));
    shootPanel(scene, "panel-action-problem");
}

// The window the notification's Redeploy and the capsule's Cancel build open, and the capsule's
// row menu over a running build.
void shootActionWindows() {
    ScreenshotScene& demo = newScene();
    demo.state.setLanguage(QStringLiteral("en"));
    demo.state.start(true);
    demo.state.demo()->runScene(1);
    demo.clock.advance(3s);
    const ProjectSnapshot building = demo.state.snapshots().first();
    ActionConfirmationWindow* asked =
        ActionConfirmationWindow::ask(demo.state, DeploymentAction::cancel, building);
    settle();
    save(asked->grab().toImage(), "action-window");
    asked->close();

    LiveActivityController controller(demo.palette, demo.clock);
    controller.observe(demo.state);
    QMenu menu;
    controller.fillRowMenu(menu, building);
    menu.adjustSize();
    menu.show();
    settle();
    const QImage menuImage = menu.grab().toImage();
    LiveActivityModel model;
    model.setRows({building}, 0);
    model.setBeakX(300);
    LiveActivityView view(model, demo.palette, {}, &demo.clock);
    view.resize(LiveActivityView::sizeFor(1));
    view.show();
    settle();
    QImage image(view.size() + QSize(0, menuImage.height() / 2),
                 QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.fillRect(image.rect(), QColor(0x5a, 0x6b, 0x85));
    view.render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    painter.drawImage(QPoint(200, 100), menuImage);
    painter.end();
    save(image, "capsule-row-menu");
}

// A tab of Settings whole, as tall as its content (the window scrolls past 680 pixels).
void shootSettings(ScreenshotScene& scene, SettingsView::Tab tab, const QString& name) {
    SettingsView view(scene.state, scene.palette, nullptr, nullptr);
    view.show(); // opens on the Vercel tab
    view.setTab(tab);
    settle();
    QWidget* page = tab == SettingsView::Tab::general ? static_cast<QWidget*>(view.general())
                                                      : static_cast<QWidget*>(view.vercel());
    const int content = page->hasHeightForWidth() ? page->heightForWidth(SettingsView::viewWidth)
                                                  : page->sizeHint().height();
    view.resize(SettingsView::viewWidth, view.tabBar()->sizeHint().height() + content + 2);
    settle();
    save(view.grab().toImage(), name);
}

void shootSettingsTabs() {
    ScreenshotScene& general = newScene();
    general.state.setLanguage(QStringLiteral("en"));
    shootSettings(general, SettingsView::Tab::general, QStringLiteral("settings-general"));

    // Connected with a token Vercel disables on 1 January 2027, one project muted for an hour.
    ScreenshotScene& vercel = newScene();
    vercel.state.setLanguage(QStringLiteral("en"));
    vercel.account.token.insert(
        "expiresAt", double(QDateTime(QDate(2027, 1, 1), QTime(12, 0)).toMSecsSinceEpoch()));
    for (int i = 0; i < 5; ++i)
        vercel.account.addProject({}, QStringLiteral("prj_%1").arg(i),
                                  QStringLiteral("site-%1").arg(i, 2, 10, QLatin1Char('0')));
    QCoro::waitFor(vercel.state.saveToken(QStringLiteral("tok_screenshots")));
    waitUntil([&] { return !vercel.state.isRefreshing(); });
    vercel.state.muteProject(QStringLiteral("prj_2"), QStringLiteral("site-02"),
                             MuteLength::oneHour);
    shootSettings(vercel, SettingsView::Tab::vercel, QStringLiteral("settings-vercel"));
}

ProjectSnapshot capsuleRow(const QString& name, const char* state, const char* message,
                           double secondsAgo, std::optional<double> buildSeconds) {
    VercelDeployment d;
    d.id = "dpl_" + name;
    d.readyState = QString::fromLatin1(state);
    const double start = double(QDateTime::currentMSecsSinceEpoch()) - secondsAgo * 1000;
    d.buildingAt = start;
    if (buildSeconds)
        d.ready = start + *buildSeconds * 1000;
    d.meta =
        QMap<QString, JSONScalar>{{"githubCommitMessage", JSONScalar{QString::fromUtf8(message)}}};
    return {name, name, "acme", std::nullopt, d, 60.0};
}

// `beakX` along the edge facing the tray: from the left under a top tray, from the top beside a
// tray on the left.
void shootCapsule(Preferences& prefs, const QList<ProjectSnapshot>& rows, int overflow,
                  const QString& name, TrayEdge edge = TrayEdge::top, double beakX = 300) {
    StatusPalette palette(prefs, QStringLiteral("#FF0074"));
    LiveActivityModel model;
    model.setRows(rows, overflow);
    model.setBeakEdge(edge);
    model.setBeakX(beakX);
    LiveActivityView view(model, palette);
    view.resize(LiveActivityView::sizeFor(int(rows.size())));
    view.show();
    settle();
    // Over a muted desktop, so the shadow shows.
    QImage image(view.size() * 2, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(2);
    QPainter painter(&image);
    QLinearGradient wallpaper(0, 0, view.width(), view.height());
    wallpaper.setColorAt(0, QColor(0x5a, 0x6b, 0x85));
    wallpaper.setColorAt(1, QColor(0x8a, 0x7f, 0x9e));
    painter.fillRect(QRectF(QPointF(0, 0), view.size()), wallpaper);
    view.render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    painter.end();
    save(image, name);
}

void shootCapsules() {
    TempPreferences prefs; // English, whatever the last panel scene chose
    const QList<ProjectSnapshot> all{
        capsuleRow("my-saas", "BUILDING", "Add pricing page", 14, std::nullopt),
        capsuleRow("api", "ERROR", "Handle checkout webhook", 40, 16),
        capsuleRow("landing-page", "READY", "Add testimonials section", 20, 14),
        capsuleRow("dashboard", "QUEUED", "Onboarding checklist", 2, std::nullopt),
        capsuleRow("documentation-and-api-reference-site", "BUILDING", "Add API reference", 8,
                   std::nullopt),
    };
    shootCapsule(*prefs, all.mid(0, 1), 0, "capsule-1");
    shootCapsule(*prefs, all.mid(0, 3), 0, "capsule-3");
    shootCapsule(*prefs, all, 1, "capsule-6");
    shootCapsule(*prefs, all.mid(0, 3), 0, "capsule-left", TrayEdge::left, 40);
    ProjectSnapshot blocked = capsuleRow("blog", "BLOCKED", "Draft post", 30, std::nullopt);
    blocked.latest->readyStateReason = QStringLiteral("The commit author is not a team member");
    shootCapsule(*prefs, {all.first(), blocked}, 0, "capsule-blocked");
}

int usage(FILE* out, int code) {
    std::fprintf(out, "Usage: quillon-screenshots [--help] [--version] OUT_DIR\n"
                      "Renders the panel in each of its states and the Live Activity capsule\n"
                      "with 1, 3 and 6 rows to PNG files in OUT_DIR, offscreen.\n");
    return code;
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QString first = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (first == "--help" || first == "-h")
        return usage(stdout, 0);
    if (first == "--version") {
        std::printf("quillon-screenshots %s (%s)\n", QUILLON_VERSION, QUILLON_BUILD_NUMBER);
        return 0;
    }
    if (argc != 2 || first.startsWith('-'))
        return usage(stderr, 2);
    QApplication app(argc, argv);
    ServiceModule::useLinked(linkedServiceTable());
    if (!QDir().mkpath(first)) {
        std::fprintf(stderr, "quillon-screenshots: cannot create %s\n", qPrintable(first));
        return 1;
    }
    outDir = QDir(first);
    Language::overrideSystemLanguages({QStringLiteral("en-US")});
    shootConnectionStates();
    shootNotices();
    shootDemo("panel-rows", 1, 9, "en");
    shootDemo("panel-failed-row", 2, 30, "en");
    shootDemo("panel-french", 2, 30, "fr");
    shootMuted();
    shootActions(QStringLiteral("en"), QString());
    shootActions(QStringLiteral("fr"), QStringLiteral("-fr"));
    shootActionProblem();
    shootActionWindows();
    shootSettingsTabs();
    shootCapsules();
    std::fflush(stdout);
    // The scenes left waiting on unanswered requests are not taken apart.
    std::_Exit(failures == 0 ? 0 : 1);
}
