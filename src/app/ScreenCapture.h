#pragma once

#include <QString>
#include <chrono>

// Debugging aid: saves a PNG of the whole screen (tray and capsule included) after `delay`,
// then quits, with a non-zero exit when the file could not be written.
namespace ScreenCapture {
void saveAfter(const QString& path, std::chrono::milliseconds delay);
}
