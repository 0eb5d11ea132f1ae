#include "core/vercel/VercelDecoding.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <limits>

// Qt parses the body; these readers walk the tree. Each answers false when a value has the
// wrong kind or a required member is missing or null, and the first false fails the whole body.

namespace {

bool read(const QJsonValue& v, QString& out) {
    if (!v.isString())
        return false;
    out = v.toString();
    return true;
}

bool read(const QJsonValue& v, double& out) {
    if (!v.isDouble())
        return false;
    out = v.toDouble();
    return true;
}

bool read(const QJsonValue& v, JSONScalar& out);
bool read(const QJsonValue& v, VercelDeployment& out);
bool read(const QJsonValue& v, VercelProject& out);
bool read(const QJsonValue& v, VercelTeam& out);
bool read(const QJsonValue& v, VercelUser& out);
bool read(const QJsonValue& v, VercelTokenInfo& out);
bool read(const QJsonValue& v, VercelBuildEvent::Payload& out);
bool read(const QJsonValue& v, VercelBuildEvent& out);

template <typename T> bool read(const QJsonValue& v, QList<T>& out) {
    if (!v.isArray())
        return false;
    const QJsonArray array = v.toArray();
    out.clear();
    out.reserve(array.size());
    for (const QJsonValue& item : array) {
        if (!read(item, out.emplaceBack()))
            return false;
    }
    return true;
}

template <typename T> bool read(const QJsonValue& v, QMap<QString, T>& out) {
    if (!v.isObject())
        return false;
    const QJsonObject object = v.toObject();
    out.clear();
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!read(it.value(), out[it.key()]))
            return false;
    }
    return true;
}

// Missing or null: absent.
template <typename T>
bool optional(const QJsonObject& o, QLatin1StringView key, std::optional<T>& out) {
    const QJsonValue v = o.value(key);
    if (v.isUndefined() || v.isNull()) {
        out.reset();
        return true;
    }
    return read(v, out.emplace());
}

// A member nothing reads still has to be of its kind when present and not null.
bool optionalKind(const QJsonObject& o, QLatin1StringView key, QJsonValue::Type kind) {
    const QJsonValue::Type type = o.value(key).type();
    return type == QJsonValue::Undefined || type == QJsonValue::Null || type == kind;
}

// Null fails like any other wrong kind, and so does a missing member.
template <typename T> bool required(const QJsonObject& o, QLatin1StringView key, T& out) {
    return read(o.value(key), out);
}

QString numberText(const QJsonValue& v) {
    // Qt keeps integers that fit 64 bits exactly; 2.0 and 1e3 count as integers too.
    constexpr qint64 sentinel = std::numeric_limits<qint64>::min();
    const qint64 integer = v.toInteger(sentinel);
    if (integer != sentinel || v.toDouble() == static_cast<double>(sentinel))
        return QString::number(v.toInteger());
    return QString::number(v.toDouble(), 'g', QLocale::FloatingPointShortest);
}

bool read(const QJsonValue& v, JSONScalar& out) {
    if (v.isString())
        out.string = v.toString();
    else if (v.isDouble())
        out.string = numberText(v);
    else if (v.isBool())
        out.string = v.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    else
        out.string.reset(); // null, arrays and objects carry no text
    return true;
}

// Of `meta` only the git keys are ever read, and a JSONScalar accepts any kind, so keeping just
// those changes no result and spares a map node per unused key.
bool readMeta(const QJsonObject& o, std::optional<QMap<QString, JSONScalar>>& out) {
    static const QLatin1StringView keys[] = {
        QLatin1StringView("githubCommitRef"),        QLatin1StringView("gitlabCommitRef"),
        QLatin1StringView("bitbucketCommitRef"),     QLatin1StringView("githubCommitSha"),
        QLatin1StringView("gitlabCommitSha"),        QLatin1StringView("bitbucketCommitSha"),
        QLatin1StringView("githubCommitMessage"),    QLatin1StringView("gitlabCommitMessage"),
        QLatin1StringView("bitbucketCommitMessage"),
    };
    const QJsonValue v = o.value(QLatin1StringView("meta"));
    out.reset();
    if (v.isUndefined() || v.isNull())
        return true;
    if (!v.isObject())
        return false;
    const QJsonObject meta = v.toObject();
    QMap<QString, JSONScalar> kept;
    for (const QLatin1StringView key : keys) {
        const auto found = meta.constFind(key);
        if (found != meta.constEnd())
            read(found.value(), kept[key]);
    }
    out = std::move(kept);
    return true;
}

bool read(const QJsonValue& v, VercelDeployment& out) {
    if (!v.isObject())
        return false;
    const QJsonObject o = v.toObject();
    using L = QLatin1StringView;
    return optional(o, L("id"), out.id) && optional(o, L("uid"), out.uid) &&
           optional(o, L("name"), out.name) && optional(o, L("projectId"), out.projectId) &&
           optional(o, L("url"), out.url) && optional(o, L("inspectorUrl"), out.inspectorUrl) &&
           optional(o, L("readyState"), out.readyState) && optional(o, L("state"), out.state) &&
           optional(o, L("createdAt"), out.createdAt) && optional(o, L("created"), out.created) &&
           optional(o, L("buildingAt"), out.buildingAt) && optional(o, L("ready"), out.ready) &&
           optional(o, L("target"), out.target) && readMeta(o, out.meta);
}

bool read(const QJsonValue& v, VercelProject& out) {
    if (!v.isObject())
        return false;
    const QJsonObject o = v.toObject();
    using L = QLatin1StringView;
    return required(o, L("id"), out.id) && required(o, L("name"), out.name) &&
           optional(o, L("latestDeployments"), out.latestDeployments);
}

bool read(const QJsonValue& v, VercelTeam& out) {
    if (!v.isObject())
        return false;
    const QJsonObject o = v.toObject();
    using L = QLatin1StringView;
    return required(o, L("id"), out.id) && required(o, L("slug"), out.slug) &&
           optional(o, L("name"), out.name);
}

bool read(const QJsonValue& v, VercelUser& out) {
    if (!v.isObject())
        return false;
    const QJsonObject o = v.toObject();
    using L = QLatin1StringView;
    return required(o, L("username"), out.username) && optional(o, L("email"), out.email) &&
           optional(o, L("name"), out.name) && optional(o, L("defaultTeamId"), out.defaultTeamId);
}

bool read(const QJsonValue& v, VercelTokenInfo& out) {
    if (!v.isObject())
        return false;
    const QJsonObject o = v.toObject();
    using L = QLatin1StringView;
    return optional(o, L("id"), out.id) && optional(o, L("name"), out.name) &&
           optional(o, L("expiresAt"), out.expiresAt);
}

bool read(const QJsonValue& v, VercelBuildEvent::Payload& out) {
    if (!v.isObject())
        return false;
    return optional(v.toObject(), QLatin1StringView("text"), out.text);
}

bool read(const QJsonValue& v, VercelBuildEvent& out) {
    if (!v.isObject())
        return false;
    const QJsonObject o = v.toObject();
    using L = QLatin1StringView;
    return optionalKind(o, L("type"), QJsonValue::String) &&
           optionalKind(o, L("created"), QJsonValue::Double) && optional(o, L("text"), out.text) &&
           optional(o, L("payload"), out.payload);
}

std::optional<QJsonDocument> parse(const QByteArray& body) {
    QJsonParseError error{};
    QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        return std::nullopt;
    return document;
}

// An object whose one required member `key` holds the whole content.
template <typename Envelope, typename Field>
std::optional<Envelope> decodeEnvelope(const QByteArray& body, QLatin1StringView key,
                                       Field Envelope::*field) {
    const std::optional<QJsonDocument> document = parse(body);
    if (!document || !document->isObject())
        return std::nullopt;
    Envelope envelope;
    if (!required(document->object(), key, envelope.*field))
        return std::nullopt;
    return envelope;
}

} // namespace

template <> std::optional<DeploymentsResponse> decodeResponse(const QByteArray& body) {
    return decodeEnvelope(body, QLatin1StringView("deployments"),
                          &DeploymentsResponse::deployments);
}

template <> std::optional<ProjectsResponse> decodeResponse(const QByteArray& body) {
    return decodeEnvelope(body, QLatin1StringView("projects"), &ProjectsResponse::projects);
}

template <> std::optional<TeamsResponse> decodeResponse(const QByteArray& body) {
    return decodeEnvelope(body, QLatin1StringView("teams"), &TeamsResponse::teams);
}

template <> std::optional<UserResponse> decodeResponse(const QByteArray& body) {
    return decodeEnvelope(body, QLatin1StringView("user"), &UserResponse::user);
}

template <> std::optional<TokenInfoResponse> decodeResponse(const QByteArray& body) {
    return decodeEnvelope(body, QLatin1StringView("token"), &TokenInfoResponse::token);
}

template <> std::optional<BuildEventList> decodeResponse(const QByteArray& body) {
    const std::optional<QJsonDocument> document = parse(body);
    BuildEventList events;
    if (!document || !document->isArray() || !read(QJsonValue(document->array()), events))
        return std::nullopt;
    return events;
}
