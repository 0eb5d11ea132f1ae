#pragma once

#include <QString>
#include <chrono>
#include <optional>

// `--timeout`: "90s", "15m", "1h", or a plain number of seconds; from 1 s to 24 h.
std::optional<std::chrono::seconds> waitTimeoutFromText(const QString& text);
