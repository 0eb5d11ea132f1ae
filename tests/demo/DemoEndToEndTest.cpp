// The demo played end to end, as a person would show it: `quillon-cli watch` on a private
// desktop, a hot key pressed with xdotool, dunst showing the failure, then the report.
#include "support/CliProcess.h"
#include "support/QtPrinters.h"
#include "support/StopProcess.h"
#include "support/WaitUntil.h"
#include "support/desktop/DunstControl.h"
#include "support/desktop/PrivateDesktop.h"

#include <gtest/gtest.h>

namespace {

constexpr int kLineTimeoutMs = 15000;

// `quillon-cli watch` running in the demo, its output read line by line as it comes.
class DemoWatch {
public:
    explicit DemoWatch(const QProcessEnvironment& environment) {
        process_.setProcessEnvironment(environment);
        process_.start(QStringLiteral(QUILLON_CLI_PATH), {"watch"});
    }
    ~DemoWatch() { stopProcess(process_); }

    // Waits for a line from index `from` on that starts with `prefix` and holds `text`; answers
    // its index, or -1.
    int waitForLine(const QString& prefix, int from = 0, const QString& text = {}) {
        int found = -1;
        waitUntil(
            [&] {
                while (process_.canReadLine())
                    lines_.append(QString::fromUtf8(process_.readLine()).chopped(1));
                for (int i = from; i < lines_.size() && found < 0; ++i) {
                    if (lines_[i].startsWith(prefix) && lines_[i].contains(text))
                        found = i;
                }
                return found >= 0 || process_.state() == QProcess::NotRunning;
            },
            kLineTimeoutMs);
        return found;
    }
    const QStringList& lines() const { return lines_; }
    QString errors() { return QString::fromUtf8(process_.readAllStandardError()); }

private:
    QProcess process_;
    QStringList lines_;
};

} // namespace

TEST(DemoEndToEnd, HotKeyTwoFailsApiOnceOnScreenAndTheReportShowsTheTypeError) {
    PrivateDesktop desktop;
    for (auto start :
         {&PrivateDesktop::startDisplay, &PrivateDesktop::startBus, &PrivateDesktop::startDunst}) {
        const std::optional<QString> failure = (desktop.*start)();
        ASSERT_FALSE(failure) << failure->toStdString();
    }
    QProcessEnvironment environment = desktop.environment();
    environment.insert("QUILLON_DEMO", "1");
    environment.insert("QUILLON_DEMO_SPEED", "10");
    DemoWatch watch(environment);
    // The first block is printed once the hot keys are registered.
    const int start = watch.waitForLine("  Live  blog");
    ASSERT_GE(start, 0) << watch.errors().toStdString();

    ASSERT_TRUE(desktop.xdotool({"key", "ctrl+alt+super+2"}));
    const QString api = "  %1  api  main  ";
    const int queued = watch.waitForLine(api.arg("Queued"), start);
    const int building = watch.waitForLine(api.arg("Building"), start);
    const int failed = watch.waitForLine(api.arg("Failed"), start);
    ASSERT_GT(queued, start) << watch.lines().join('\n').toStdString();
    ASSERT_GT(building, queued);
    ASSERT_GT(failed, building);
    EXPECT_TRUE(watch.lines()[failed].contains("Handle checkout webhook"));

    DunstControl dunst(desktop.connection());
    ASSERT_TRUE(waitUntil([&] { return dunst.displayed() == 1; }));
    // Later passes still see api failed; they must not notify it again.
    ASSERT_TRUE(desktop.xdotool({"key", "ctrl+alt+super+1"}));
    ASSERT_GT(watch.waitForLine("  Live  my-saas  main  ", failed, "Add pricing page"), failed);
    EXPECT_EQ(dunst.displayed(), 1);
    ASSERT_TRUE(dunst.closeAll());
    const QList<QVariantMap> history = dunst.history();
    ASSERT_EQ(history.size(), 1);
    EXPECT_EQ(history[0].value("summary").toString(), "api: deployment failed");
    EXPECT_TRUE(
        history[0].value("body").toString().startsWith("Branch main · Handle checkout webhook · "))
        << history[0].value("body").toString().toStdString();

    const CliRun report = runCli({"report", "api"}, environment, "no-token-here");
    ASSERT_EQ(report.exitCode, 0) << report.err.toStdString();
    EXPECT_TRUE(report.out.startsWith("# Vercel deployment failed: api\n"));
    const QStringList fenced = report.out.split("```");
    ASSERT_EQ(fenced.size(), 3) << report.out.toStdString();
    EXPECT_TRUE(fenced[1].contains("\nType error: Property 'customerId' does not exist on type "
                                   "'CheckoutSession'.\n"));
}
