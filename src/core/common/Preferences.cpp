#include "core/common/Preferences.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <cmath>

namespace {

Preferences* g_standard = nullptr;

QVariant toVariant(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::Double: {
        const double d = value.toDouble();
        // Integers come back as integers; 2^53 bounds what a double holds exactly.
        if (std::isfinite(d) && std::trunc(d) == d && std::fabs(d) <= 9007199254740992.0)
            return QVariant::fromValue(static_cast<qint64>(d));
        return d;
    }
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Array: {
        QVariantList list;
        for (const QJsonValue& item : value.toArray())
            list.append(toVariant(item));
        return list;
    }
    case QJsonValue::Object: {
        QVariantMap map;
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            map.insert(it.key(), toVariant(it.value()));
        return map;
    }
    default:
        return {};
    }
}

bool readJson(QIODevice& device, QSettings::SettingsMap& map) {
    const QByteArray bytes = device.readAll();
    if (bytes.trimmed().isEmpty())
        return true;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    // An unreadable file counts as empty rather than failing every read.
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return true;
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it)
        map.insert(it.key(), toVariant(it.value()));
    return true;
}

bool writeJson(QIODevice& device, const QSettings::SettingsMap& map) {
    QJsonObject object;
    for (auto it = map.begin(); it != map.end(); ++it)
        object.insert(it.key(), QJsonValue::fromVariant(it.value()));
    return device.write(QJsonDocument(object).toJson(QJsonDocument::Indented)) >= 0;
}

QSettings::Format jsonFormat() {
    static const QSettings::Format format =
        QSettings::registerFormat(QStringLiteral("json"), readJson, writeJson);
    return format;
}

} // namespace

Preferences::Preferences(const QString& filePath)
    : settings_(std::make_unique<QSettings>(filePath, jsonFormat())) {
    settings_->setFallbacksEnabled(false);
}

Preferences& Preferences::standard() {
    if (g_standard == nullptr) {
        static Preferences process(defaultFilePath());
        g_standard = &process;
    }
    return *g_standard;
}

void Preferences::setStandard(Preferences* store) {
    g_standard = store;
}

QString Preferences::defaultFilePath() {
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir(config).filePath(QStringLiteral("quillon/preferences.json"));
}

QString Preferences::filePath() const {
    return settings_->fileName();
}

bool Preferences::contains(const QString& key) const {
    return settings_->contains(key);
}

std::optional<qint64> Preferences::integer(const QString& key) const {
    const QVariant value = settings_->value(key);
    if (value.typeId() != QMetaType::LongLong)
        return std::nullopt;
    return value.toLongLong();
}

std::optional<bool> Preferences::boolean(const QString& key) const {
    const QVariant value = settings_->value(key);
    if (value.typeId() != QMetaType::Bool)
        return std::nullopt;
    return value.toBool();
}

std::optional<QString> Preferences::string(const QString& key) const {
    const QVariant value = settings_->value(key);
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

std::optional<QStringList> Preferences::stringList(const QString& key) const {
    const QVariant value = settings_->value(key);
    if (value.typeId() != QMetaType::QVariantList && value.typeId() != QMetaType::QStringList)
        return std::nullopt;
    QStringList result;
    for (const QVariant& item : value.toList()) {
        if (item.typeId() != QMetaType::QString)
            return std::nullopt;
        result.append(item.toString());
    }
    return result;
}

std::optional<QVariantMap> Preferences::map(const QString& key) const {
    const QVariant value = settings_->value(key);
    if (value.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return value.toMap();
}

void Preferences::setInteger(const QString& key, qint64 value) {
    write(key, QVariant::fromValue(value));
}

void Preferences::setBoolean(const QString& key, bool value) {
    write(key, value);
}

void Preferences::setString(const QString& key, const QString& value) {
    write(key, value);
}

void Preferences::setStringList(const QString& key, const QStringList& value) {
    write(key, QVariant(value));
}

void Preferences::setMap(const QString& key, const QVariantMap& value) {
    write(key, value);
}

void Preferences::remove(const QString& key) {
    settings_->remove(key);
    settings_->sync();
}

void Preferences::reload() {
    settings_->sync();
}

void Preferences::write(const QString& key, const QVariant& value) {
    QDir().mkpath(QFileInfo(settings_->fileName()).absolutePath());
    settings_->setValue(key, value);
    settings_->sync();
}
