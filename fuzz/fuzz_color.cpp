// Colour texts of the palette, read as UTF-8 and as UTF-16: whatever parses prints back as
// "#RRGGBB" and parses again to the same value.
#include "FuzzCheck.h"
#include "core/common/HexColor.h"

#include <QString>

namespace {

void probe(const QString& text) {
    const std::optional<quint32> rgb = rgbFromHex(text);
    if (!rgb)
        return;
    FUZZ_CHECK(*rgb <= 0xFFFFFF);
    const QString printed = QString::asprintf("#%06X", *rgb);
    FUZZ_CHECK(rgbFromHex(printed) == rgb);
    FUZZ_CHECK(text.trimmed().size() <= 7);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    probe(QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    probe(QString::fromUtf16(reinterpret_cast<const char16_t*>(data),
                             static_cast<qsizetype>(size / 2)));
    return 0;
}
