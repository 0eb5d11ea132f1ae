#include "ui/status/StatusPalette.h"

#include "core/common/HexColor.h"
#include "core/common/Preferences.h"

namespace {

const QString successKey = QStringLiteral("colorSuccess");
const QString queuedKey = QStringLiteral("colorQueued");
const QString errorKey = QStringLiteral("colorError");

QColor storedOr(const Preferences& preferences, const QString& key, const QString& fallback) {
    if (const std::optional<QString> text = preferences.string(key)) {
        if (const std::optional<QColor> color = StatusPalette::colorFromHex(*text))
            return *color;
    }
    return *StatusPalette::colorFromHex(fallback);
}

} // namespace

const QString StatusPalette::defaultSuccessHex = PaletteDefaults::success();
const QString StatusPalette::defaultQueuedHex = PaletteDefaults::queued();

const QString& StatusPalette::defaultErrorHex() {
    static const QString value = PaletteDefaults::error();
    return value;
}

QString StatusPalette::defaultErrorHexFrom(const std::optional<QString>& environmentValue) {
    return PaletteDefaults::errorFrom(environmentValue);
}

StatusPalette::StatusPalette(Preferences& preferences, QString defaultError, QObject* parent)
    : QObject(parent), preferences_(preferences), defaultError_(std::move(defaultError)) {
    readStored();
}

// Straight into the members: loading never writes back.
void StatusPalette::readStored() {
    success_ = storedOr(preferences_, successKey, defaultSuccessHex);
    queued_ = storedOr(preferences_, queuedKey, defaultQueuedHex);
    error_ = storedOr(preferences_, errorKey, defaultError_);
}

void StatusPalette::reload() {
    const QString before = signature();
    readStored();
    if (signature() != before)
        Q_EMIT changed();
}

void StatusPalette::setSuccess(const QColor& color) {
    assign(success_, color);
}

void StatusPalette::setQueued(const QColor& color) {
    assign(queued_, color);
}

void StatusPalette::setError(const QColor& color) {
    assign(error_, color);
}

void StatusPalette::reset() {
    setSuccess(*colorFromHex(defaultSuccessHex));
    setQueued(*colorFromHex(defaultQueuedHex));
    setError(*colorFromHex(defaultError_));
}

void StatusPalette::assign(QColor& slot, const QColor& color) {
    const bool different = hexString(slot) != hexString(color);
    slot = color;
    save();
    if (different)
        Q_EMIT changed();
}

void StatusPalette::save() {
    preferences_.setString(successKey, hexString(success_));
    preferences_.setString(queuedKey, hexString(queued_));
    preferences_.setString(errorKey, hexString(error_));
}

bool StatusPalette::isDefault() const {
    return hexString(success_) == defaultSuccessHex && hexString(queued_) == defaultQueuedHex &&
           hexString(error_) == defaultError_;
}

QString StatusPalette::signature() const {
    return hexString(success_) + hexString(queued_) + hexString(error_);
}

QColor StatusPalette::statusColor(DeployStatus status) const {
    switch (status) {
    case DeployStatus::queued:
    case DeployStatus::initializing:
        return queued_;
    case DeployStatus::building:
    case DeployStatus::ready:
        return success_;
    case DeployStatus::error:
    case DeployStatus::blocked:
        return error_;
    case DeployStatus::canceled:
    case DeployStatus::unknown:
        break;
    }
    return secondaryTextColor();
}

std::optional<QColor> StatusPalette::toneColor(Tone tone) const {
    switch (tone) {
    case Tone::success:
    case Tone::building:
        return success_;
    case Tone::queued:
        return queued_;
    case Tone::error:
        return error_;
    case Tone::disconnected:
    case Tone::idle:
        break;
    }
    return std::nullopt;
}

std::optional<QColor> StatusPalette::colorFromHex(QStringView text) {
    const std::optional<quint32> v = rgbFromHex(text);
    if (!v)
        return std::nullopt;
    return QColor::fromRgbF(((*v >> 16) & 0xFF) / 255.0F, ((*v >> 8) & 0xFF) / 255.0F,
                            (*v & 0xFF) / 255.0F, 1.0F);
}

QString StatusPalette::hexString(const QColor& color) {
    const QColor rgb = color.isValid() ? color.toRgb() : color;
    auto channel = [](float value) { return qRound(value * 255.0F); };
    return QString::asprintf("#%02X%02X%02X", channel(rgb.redF()), channel(rgb.greenF()),
                             channel(rgb.blueF()));
}

QColor StatusPalette::secondaryTextColor() {
    return QColor(0x8E, 0x8E, 0x93);
}
