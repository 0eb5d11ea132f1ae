#pragma once

#include <QStringView>
#include <QtGlobal>
#include <optional>

// The palette's colour text without any GUI type, so that headless code and the fuzzers can
// read it: spaces and tabs around, an optional "#", then exactly six hexadecimal digits (either
// case). Answers 0xRRGGBB, or nothing for any other text.
std::optional<quint32> rgbFromHex(QStringView text);
