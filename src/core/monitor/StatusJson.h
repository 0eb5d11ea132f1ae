#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>

class AppState;

// The engine's picture as one JSON object, for status bars and scripts: the overall tone, the
// summary, today's count and one entry per project. `quillon-cli watch --json` prints it once
// per pass and the running application answers it over D-Bus.
QJsonObject statusJson(const AppState& state, const QDateTime& now);
// The same object on one line, without a trailing newline.
QByteArray statusJsonLine(const AppState& state, const QDateTime& now);
