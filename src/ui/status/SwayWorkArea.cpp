#include "ui/status/SwayWorkArea.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace {

constexpr int answerTimeoutMs = 500;

QRect rectOf(const QJsonObject& rect) {
    return {rect.value(QLatin1String("x")).toInt(), rect.value(QLatin1String("y")).toInt(),
            rect.value(QLatin1String("width")).toInt(),
            rect.value(QLatin1String("height")).toInt()};
}

} // namespace

std::optional<QRect> swayUsableArea(const QRect& screen) {
    if (qEnvironmentVariableIsEmpty("SWAYSOCK"))
        return std::nullopt;
    QProcess swaymsg;
    swaymsg.start(QStringLiteral("swaymsg"),
                  {QStringLiteral("-t"), QStringLiteral("get_workspaces"), QStringLiteral("-r")});
    if (!swaymsg.waitForFinished(answerTimeoutMs) || swaymsg.exitCode() != 0) {
        swaymsg.kill();
        return std::nullopt;
    }
    const QJsonArray workspaces = QJsonDocument::fromJson(swaymsg.readAllStandardOutput()).array();
    for (const QJsonValue& workspace : workspaces) {
        const QJsonObject object = workspace.toObject();
        const QRect area = rectOf(object.value(QLatin1String("rect")).toObject());
        if (object.value(QLatin1String("visible")).toBool() && !area.isEmpty() &&
            screen.contains(area))
            return area;
    }
    return std::nullopt;
}
