#include "core/common/HexColor.h"

#include <QString> // defines QStringView::toUInt
#include <algorithm>

namespace {

bool isHexDigit(QChar c) {
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

bool isPadding(QChar c) {
    return c == u' ' || c == u'\t';
}

} // namespace

std::optional<quint32> rgbFromHex(QStringView text) {
    while (!text.isEmpty() && isPadding(text.front()))
        text = text.mid(1);
    while (!text.isEmpty() && isPadding(text.back()))
        text.chop(1);
    if (text.startsWith(u'#'))
        text = text.mid(1);
    if (text.size() != 6 || !std::all_of(text.begin(), text.end(), isHexDigit))
        return std::nullopt;
    return text.toUInt(nullptr, 16);
}

namespace PaletteDefaults {

QString success() {
    return QStringLiteral("#0CF1E8");
}

QString queued() {
    return QStringLiteral("#C05BEC");
}

QString error() {
    return errorFrom(qEnvironmentVariableIsSet("QUILLON_ERROR_COLOR")
                         ? std::optional<QString>(qEnvironmentVariable("QUILLON_ERROR_COLOR"))
                         : std::nullopt);
}

QString errorFrom(const std::optional<QString>& environmentValue) {
    if (environmentValue && rgbFromHex(*environmentValue))
        return *environmentValue;
    return QStringLiteral("#FF0074");
}

} // namespace PaletteDefaults
