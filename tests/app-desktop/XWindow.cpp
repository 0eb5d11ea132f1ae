#include "app-desktop/XWindow.h"

#include <QProcess>
#include <QRegularExpression>
#include <algorithm>

namespace {

bool isApp(const XWindow& window) {
    return window.instance == QLatin1String("quillon");
}

bool isTrayerPanel(const XWindow& window) {
    return window.depth == 0 && window.className == QLatin1String("trayer") &&
           window.rect.width() > 100;
}

} // namespace

std::optional<QString> runTool(const QString& program, const QStringList& arguments,
                               const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(kXToolTimeoutMs) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(process.readAllStandardOutput());
}

QList<XWindow> windowTree(const QProcessEnvironment& environment) {
    const std::optional<QString> tree = runTool("xwininfo", {"-root", "-tree"}, environment);
    if (!tree)
        return {};
    // `     0x400006 "quillon": ("quillon" "quillon")  22x26+0+0  +1257+1`
    static const QRegularExpression line(QString::fromLatin1(
        R"re(^(\s*)(0x[0-9a-f]+) .*: \((?:"([^"]*)" "([^"]*)")?\)\s+(\d+)x(\d+)[+-]-?\d+[+-]-?\d+)re"
        R"re(\s+\+(-?\d+)\+(-?\d+)\s*$)re"));
    QList<XWindow> windows;
    QList<std::pair<int, QString>> stack; // indentation and class of the open ancestors
    for (const QString& text : tree->split(QLatin1Char('\n'))) {
        const QRegularExpressionMatch match = line.match(text);
        if (!match.hasMatch())
            continue;
        const int indent = int(match.capturedLength(1));
        while (!stack.isEmpty() && stack.last().first >= indent)
            stack.removeLast();
        XWindow window;
        window.id = match.captured(2);
        window.instance = match.captured(3);
        window.className = match.captured(4);
        window.rect = QRect(match.captured(7).toInt(), match.captured(8).toInt(),
                            match.captured(5).toInt(), match.captured(6).toInt());
        window.depth = int(stack.size());
        for (const auto& ancestor : std::as_const(stack))
            window.ancestorClasses.append(ancestor.second);
        stack.append({indent, window.instance + QLatin1Char(' ') + window.className});
        windows.append(window);
    }
    return windows;
}

bool isViewable(const QString& id, const QProcessEnvironment& environment) {
    const std::optional<QString> info = runTool("xwininfo", {"-id", id}, environment);
    return info && info->contains("Map State: IsViewable");
}

std::optional<XWindow> trayIcon(const QProcessEnvironment& environment) {
    const QList<XWindow> windows = windowTree(environment);
    const auto panel = std::find_if(windows.begin(), windows.end(), isTrayerPanel);
    if (panel == windows.end())
        return std::nullopt;
    const QString panelClass = panel->instance + QLatin1Char(' ') + panel->className;
    for (const XWindow& window : windows) {
        if (isApp(window) && window.ancestorClasses.contains(panelClass) &&
            window.rect.width() > 1 && panel->rect.contains(window.rect))
            return window;
    }
    return std::nullopt;
}

bool trayerShowsPanel(const QProcessEnvironment& environment) {
    const QList<XWindow> windows = windowTree(environment);
    return std::any_of(windows.begin(), windows.end(), isTrayerPanel);
}

QList<XWindow> shownTopLevels(const QProcessEnvironment& environment) {
    QList<XWindow> shown;
    for (const XWindow& window : windowTree(environment)) {
        if (window.depth == 0 && isApp(window) && isViewable(window.id, environment))
            shown.append(window);
    }
    return shown;
}

QString describe(const QRect& r) {
    return QStringLiteral("%1x%2 at (%3, %4)").arg(r.width()).arg(r.height()).arg(r.x()).arg(r.y());
}
