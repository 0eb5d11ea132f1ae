#include "core/vercel/VercelDecoding.h"

#include "core/vercel/VercelDecodingTree.h"
#include "core/vercel/VercelDecodingValues.h"

#include <QJsonDocument>
#include <QLocale>
#include <array>

// RapidJSON parses the body; what it refuses, Qt's more lenient parser judges. The readers walk
// either tree through its view (VercelDecodingValues.h). Each answers false when a value has the
// wrong kind or a required member is missing or null, and the first false fails the whole body.

namespace {

template <typename V> bool read(const V& v, QString& out) {
    if (!v.isString())
        return false;
    out = v.string();
    return true;
}

template <typename V> bool read(const V& v, double& out) {
    if (!v.isNumber())
        return false;
    out = v.number();
    return true;
}

template <typename V> bool read(const V& v, bool& out) {
    if (!v.isBool())
        return false;
    out = v.boolean();
    return true;
}

template <typename V> bool read(const V& v, JSONScalar& out);
template <typename V> bool read(const V& v, VercelDeployment& out);
template <typename V> bool read(const V& v, VercelProject& out);
template <typename V> bool read(const V& v, VercelTeam& out);
template <typename V> bool read(const V& v, VercelUser& out);
template <typename V> bool read(const V& v, VercelTokenInfo& out);
template <typename V> bool read(const V& v, VercelBuildEvent::Payload& out);
template <typename V> bool read(const V& v, VercelBuildEvent& out);

template <typename V, typename T> bool read(const V& v, QList<T>& out) {
    if (!v.isArray())
        return false;
    out.clear();
    out.reserve(v.size());
    return v.everyElement([&](const V& item) { return read(item, out.emplaceBack()); });
}

// The members named in `keys`, in one pass over the object. Of duplicate keys the last counts,
// as in Qt's parser, which drops the others unread.
template <typename V, std::size_t N>
std::array<std::optional<V>, N> members(const V& object,
                                        const std::array<std::string_view, N>& keys) {
    std::array<std::optional<V>, N> found;
    object.forEachMember([&](const auto& key, const V& value) {
        for (std::size_t i = 0; i < N; ++i) {
            if (keyIs(key, keys[i])) {
                found[i] = value;
                return;
            }
        }
    });
    return found;
}

// Missing or null: absent.
template <typename V, typename T> bool optional(const std::optional<V>& v, std::optional<T>& out) {
    if (!v || v->isNull()) {
        out.reset();
        return true;
    }
    return read(*v, out.emplace());
}

// A member nothing reads still has to be of its kind when present and not null.
template <typename V> bool optionalString(const std::optional<V>& v) {
    return !v || v->isNull() || v->isString();
}
template <typename V> bool optionalNumber(const std::optional<V>& v) {
    return !v || v->isNull() || v->isNumber();
}

// Null fails like any other wrong kind, and so does a missing member.
template <typename V, typename T> bool required(const std::optional<V>& v, T& out) {
    return v && read(*v, out);
}

template <typename V> QString numberText(const V& v) {
    if (const std::optional<qint64> integer = v.integer())
        return QString::number(*integer);
    return QString::number(v.number(), 'g', QLocale::FloatingPointShortest);
}

template <typename V> bool read(const V& v, JSONScalar& out) {
    if (v.isString())
        out.string = v.string();
    else if (v.isNumber())
        out.string = numberText(v);
    else if (v.isBool())
        out.string = v.boolean() ? QStringLiteral("true") : QStringLiteral("false");
    else
        out.string.reset(); // null, arrays and objects carry no text
    return true;
}

// Of `meta` only the git keys are ever read, and a JSONScalar accepts any kind, so keeping just
// those changes no result and spares a map node per unused key.
template <typename V>
bool readMeta(const std::optional<V>& v, std::optional<QMap<QString, JSONScalar>>& out) {
    static constexpr std::array<std::string_view, 9> keys{
        "githubCommitRef",     "gitlabCommitRef",     "bitbucketCommitRef",
        "githubCommitSha",     "gitlabCommitSha",     "bitbucketCommitSha",
        "githubCommitMessage", "gitlabCommitMessage", "bitbucketCommitMessage",
    };
    out.reset();
    if (!v || v->isNull())
        return true;
    if (!v->isObject())
        return false;
    const auto found = members(*v, keys);
    QMap<QString, JSONScalar> kept;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (found[i])
            read(*found[i], kept[QLatin1StringView(keys[i].data(), qsizetype(keys[i].size()))]);
    }
    out = std::move(kept);
    return true;
}

// Of `creator` only its `uid` is read: whose deployment it is.
template <typename V> bool readCreator(const std::optional<V>& v, std::optional<QString>& out) {
    out.reset();
    if (!v || v->isNull())
        return true;
    if (!v->isObject())
        return false;
    const auto [uid] = members(*v, std::array<std::string_view, 1>{"uid"});
    return optional(uid, out);
}

// A member that only explains something: its text whatever its kind, absent when it has none.
template <typename V> void lenientText(const std::optional<V>& v, std::optional<QString>& out) {
    JSONScalar scalar;
    if (v)
        read(*v, scalar);
    out = std::move(scalar.string);
}

template <typename V> bool read(const V& v, VercelDeployment& out) {
    if (!v.isObject())
        return false;
    static constexpr std::array<std::string_view, 18> keys{
        "id",           "uid",          "name",     "projectId", "url",
        "inspectorUrl", "readyState",   "state",    "createdAt", "created",
        "buildingAt",   "ready",        "target",   "meta",      "readyStateReason",
        "creator",      "errorMessage", "errorLink"};
    const auto [id, uid, name, projectId, url, inspectorUrl, readyState, state, createdAt, created,
                buildingAt, ready, target, meta, readyStateReason, creator, errorMessage,
                errorLink] = members(v, keys);
    lenientText(errorMessage, out.errorMessage);
    lenientText(errorLink, out.errorLink);
    return optional(id, out.id) && optional(uid, out.uid) && optional(name, out.name) &&
           optional(projectId, out.projectId) && optional(url, out.url) &&
           optional(inspectorUrl, out.inspectorUrl) && optional(readyState, out.readyState) &&
           optional(state, out.state) && optional(createdAt, out.createdAt) &&
           optional(created, out.created) && optional(buildingAt, out.buildingAt) &&
           optional(ready, out.ready) && optional(target, out.target) && readMeta(meta, out.meta) &&
           optional(readyStateReason, out.readyStateReason) && readCreator(creator, out.creatorUid);
}

// Never fails: see VercelGitLink.
template <typename V> void readLink(const std::optional<V>& v, std::optional<VercelGitLink>& out) {
    out.reset();
    if (!v || !v->isObject())
        return;
    static constexpr std::array<std::string_view, 8> keys{
        "type", "org", "repo", "projectNamespace", "projectName", "projectUrl", "owner", "slug"};
    const auto [type, org, repo, projectNamespace, projectName, projectUrl, owner, slug] =
        members(*v, keys);
    VercelGitLink& link = out.emplace();
    lenientText(type, link.type);
    lenientText(org, link.org);
    lenientText(repo, link.repo);
    lenientText(projectNamespace, link.projectNamespace);
    lenientText(projectName, link.projectName);
    lenientText(projectUrl, link.projectUrl);
    lenientText(owner, link.owner);
    lenientText(slug, link.slug);
}

template <typename V> bool read(const V& v, VercelProject& out) {
    if (!v.isObject())
        return false;
    static constexpr std::array<std::string_view, 4> keys{"id", "name", "latestDeployments",
                                                          "link"};
    const auto [id, name, latestDeployments, link] = members(v, keys);
    readLink(link, out.link);
    return required(id, out.id) && required(name, out.name) &&
           optional(latestDeployments, out.latestDeployments);
}

// Of a team's `saml` object only `enforced` matters.
template <typename V> bool readSaml(const std::optional<V>& v, std::optional<bool>& enforced) {
    enforced.reset();
    if (!v || v->isNull())
        return true;
    if (!v->isObject())
        return false;
    const auto [flag] = members(*v, std::array<std::string_view, 1>{"enforced"});
    return optional(flag, enforced);
}

template <typename V> bool read(const V& v, VercelTeam& out) {
    if (!v.isObject())
        return false;
    static constexpr std::array<std::string_view, 6> keys{"id",      "slug",      "name",
                                                          "limited", "limitedBy", "saml"};
    const auto [id, slug, name, limited, limitedBy, saml] = members(v, keys);
    return required(id, out.id) && required(slug, out.slug) && optional(name, out.name) &&
           optional(limited, out.limited) && optional(limitedBy, out.limitedBy) &&
           readSaml(saml, out.samlEnforced);
}

template <typename V> bool read(const V& v, VercelUser& out) {
    if (!v.isObject())
        return false;
    static constexpr std::array<std::string_view, 5> keys{"id", "username", "email", "name",
                                                          "defaultTeamId"};
    const auto [id, username, email, name, defaultTeamId] = members(v, keys);
    return optional(id, out.id) && required(username, out.username) && optional(email, out.email) &&
           optional(name, out.name) && optional(defaultTeamId, out.defaultTeamId);
}

template <typename V> bool read(const V& v, VercelTokenInfo& out) {
    if (!v.isObject())
        return false;
    static constexpr std::array<std::string_view, 3> keys{"id", "name", "expiresAt"};
    const auto [id, name, expiresAt] = members(v, keys);
    return optional(id, out.id) && optional(name, out.name) && optional(expiresAt, out.expiresAt);
}

template <typename V> bool read(const V& v, VercelBuildEvent::Payload& out) {
    if (!v.isObject())
        return false;
    static constexpr std::array<std::string_view, 1> keys{"text"};
    const auto [text] = members(v, keys);
    return optional(text, out.text);
}

// An array of events in which null stands for no event.
template <typename V> bool readEvents(const V& v, BuildEventList& out) {
    if (v.isNull())
        return true;
    if (!v.isArray())
        return false;
    out.reserve(v.size());
    return v.everyElement([&](const V& item) {
        if (item.isNull())
            return true;
        return read(item, out.emplaceBack());
    });
}

template <typename V> bool read(const V& v, VercelBuildEvent& out) {
    if (!v.isObject())
        return false;
    static constexpr std::array<std::string_view, 4> keys{"type", "created", "text", "payload"};
    const auto [type, created, text, payload] = members(v, keys);
    return optionalString(type) && optionalNumber(created) && optional(text, out.text) &&
           optional(payload, out.payload);
}

// Decodes the body's top value with `decode`, from RapidJSON's tree when it accepts the body,
// else from Qt's; absent when both refuse it or `decode` fails.
template <typename Decoded, typename Decode>
std::optional<Decoded> decodeBody(const QByteArray& body, Decode decode) {
    Decoded decoded;
    StrictJsonTree tree;
    if (tree.parse(body))
        return decode(RapidJsonView(tree.root()), decoded) ? std::optional(std::move(decoded))
                                                           : std::nullopt;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        return std::nullopt;
    const QJsonValue top = document.isObject()  ? QJsonValue(document.object())
                           : document.isArray() ? QJsonValue(document.array())
                           : document.isNull()  ? QJsonValue(QJsonValue::Null)
                                                : QJsonValue(QJsonValue::Undefined);
    return decode(QtJsonView(top), decoded) ? std::optional(std::move(decoded)) : std::nullopt;
}

// An object whose one required member `key` holds the whole content.
template <typename Envelope, typename Field>
std::optional<Envelope> decodeEnvelope(const QByteArray& body, std::string_view key,
                                       Field Envelope::*field) {
    return decodeBody<Envelope>(body, [&](const auto& top, Envelope& envelope) {
        if (!top.isObject())
            return false;
        const auto [content] = members(top, std::array<std::string_view, 1>{key});
        return required(content, envelope.*field);
    });
}

// `pagination.next`: absent with the pagination, null on the last page.
template <typename V>
bool readNext(const std::optional<V>& pagination, std::optional<double>& next) {
    next.reset();
    if (!pagination || pagination->isNull())
        return true;
    if (!pagination->isObject())
        return false;
    const auto [value] = members(*pagination, std::array<std::string_view, 1>{"next"});
    return optional(value, next);
}

// A page of a list: the list under `key` and where the next page starts.
template <typename Envelope, typename Field>
std::optional<Envelope> decodePage(const QByteArray& body, std::string_view key,
                                   Field Envelope::*field) {
    return decodeBody<Envelope>(body, [&](const auto& top, Envelope& envelope) {
        if (!top.isObject())
            return false;
        const auto [content, pagination] =
            members(top, std::array<std::string_view, 2>{key, "pagination"});
        return required(content, envelope.*field) && readNext(pagination, envelope.next);
    });
}

} // namespace

template <> std::optional<DeploymentsResponse> decodeResponse(const QByteArray& body) {
    return decodePage(body, "deployments", &DeploymentsResponse::deployments);
}

template <> std::optional<ProjectsResponse> decodeResponse(const QByteArray& body) {
    return decodePage(body, "projects", &ProjectsResponse::projects);
}

template <> std::optional<TeamsResponse> decodeResponse(const QByteArray& body) {
    return decodePage(body, "teams", &TeamsResponse::teams);
}

template <> std::optional<UserResponse> decodeResponse(const QByteArray& body) {
    return decodeEnvelope(body, "user", &UserResponse::user);
}

template <> std::optional<TokenInfoResponse> decodeResponse(const QByteArray& body) {
    return decodeEnvelope(body, "token", &TokenInfoResponse::token);
}

template <> std::optional<VercelDeployment> decodeResponse(const QByteArray& body) {
    return decodeBody<VercelDeployment>(
        body, [](const auto& top, VercelDeployment& deployment) { return read(top, deployment); });
}

template <> std::optional<BuildEventList> decodeResponse(const QByteArray& body) {
    return decodeBody<BuildEventList>(
        body, [](const auto& top, BuildEventList& events) { return readEvents(top, events); });
}

