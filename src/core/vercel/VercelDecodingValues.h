#pragma once

#include "core/vercel/VercelDecodingRapidJson.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <limits>
#include <optional>
#include <string_view>

// The two trees a body can be decoded from, seen through the same few operations so that each
// reader is written once. Both are cheap to copy: a reference into the tree they view.

// A value of RapidJSON's tree, parsed by StrictJsonTree: integers that fit 64 bits are stored as
// such, every other number as a double, as Qt stores them.
class RapidJsonView {
public:
    explicit RapidJsonView(const rapidjson::Value& value) : value_(&value) {}

    bool isNull() const { return value_->IsNull(); }
    bool isBool() const { return value_->IsBool(); }
    bool isNumber() const { return value_->IsNumber(); }
    bool isString() const { return value_->IsString(); }
    bool isArray() const { return value_->IsArray(); }
    bool isObject() const { return value_->IsObject(); }

    bool boolean() const { return value_->GetBool(); }
    double number() const { return value_->GetDouble(); }
    std::optional<qint64> integer() const {
        return value_->IsInt64() ? std::optional<qint64>(value_->GetInt64()) : std::nullopt;
    }
    QString string() const {
        return QString::fromUtf8(value_->GetString(), value_->GetStringLength());
    }

    qsizetype size() const { return value_->Size(); }
    template <typename F> bool everyElement(F f) const {
        for (const rapidjson::Value& item : value_->GetArray()) {
            if (!f(RapidJsonView(item)))
                return false;
        }
        return true;
    }
    template <typename F> void forEachMember(F f) const {
        for (const auto& member : value_->GetObject())
            f(std::string_view(member.name.GetString(), member.name.GetStringLength()),
              RapidJsonView(member.value));
    }

private:
    const rapidjson::Value* value_;
};

// A value of Qt's tree, for the bodies only Qt's parser accepts.
class QtJsonView {
public:
    explicit QtJsonView(QJsonValue value) : value_(std::move(value)) {}

    bool isNull() const { return value_.isNull() || value_.isUndefined(); }
    bool isBool() const { return value_.isBool(); }
    bool isNumber() const { return value_.isDouble(); }
    bool isString() const { return value_.isString(); }
    bool isArray() const { return value_.isArray(); }
    bool isObject() const { return value_.isObject(); }

    bool boolean() const { return value_.toBool(); }
    double number() const { return value_.toDouble(); }
    std::optional<qint64> integer() const {
        // Qt keeps integers that fit 64 bits exactly; 2.0 and 1e3 count as integers too.
        constexpr qint64 sentinel = std::numeric_limits<qint64>::min();
        const qint64 integer = value_.toInteger(sentinel);
        if (integer != sentinel || value_.toDouble() == static_cast<double>(sentinel))
            return value_.toInteger();
        return std::nullopt;
    }
    QString string() const { return value_.toString(); }

    qsizetype size() const { return value_.toArray().size(); }
    template <typename F> bool everyElement(F f) const {
        const QJsonArray array = value_.toArray();
        for (const QJsonValue& item : array) {
            if (!f(QtJsonView(item)))
                return false;
        }
        return true;
    }
    template <typename F> void forEachMember(F f) const {
        const QJsonObject object = value_.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            f(it.key(), QtJsonView(it.value()));
    }

private:
    QJsonValue value_;
};

inline bool keyIs(std::string_view key, std::string_view name) {
    return key == name;
}

inline bool keyIs(const QString& key, std::string_view name) {
    return key == QLatin1StringView(name.data(), qsizetype(name.size()));
}
