#pragma once

#include <QString>
#include <QStringView>
#include <QtGlobal>
#include <optional>

// The palette's colour text without any GUI type, so that headless code and the fuzzers can
// read it: spaces and tabs around, an optional "#", then exactly six hexadecimal digits (either
// case). Answers 0xRRGGBB, or nothing for any other text.
std::optional<quint32> rgbFromHex(QStringView text);

// The palette's colours until the user picks others, as "#RRGGBB".
namespace PaletteDefaults {
QString success();
QString queued();
// QUILLON_ERROR_COLOR when it holds a colour, else the built-in failure colour.
QString error();
QString errorFrom(const std::optional<QString>& environmentValue);
} // namespace PaletteDefaults
