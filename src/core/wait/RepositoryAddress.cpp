#include "core/wait/RepositoryAddress.h"

#include <QUrl>

namespace {

// Hosts that serve the same repositories under another name (ssh over port 443, www.).
QString canonicalHost(QString host) {
    host = host.toLower();
    if (host.startsWith(QLatin1String("www.")))
        host.remove(0, 4);
    if (host == QLatin1String("ssh.github.com"))
        return QStringLiteral("github.com");
    if (host == QLatin1String("altssh.gitlab.com"))
        return QStringLiteral("gitlab.com");
    if (host == QLatin1String("altssh.bitbucket.org"))
        return QStringLiteral("bitbucket.org");
    return host;
}

QString canonicalPath(QString path) {
    path = path.toLower();
    while (path.startsWith(u'/'))
        path.remove(0, 1);
    while (path.endsWith(u'/'))
        path.chop(1);
    if (path.endsWith(QLatin1String(".git")))
        path.chop(4);
    return path;
}

std::optional<RepositoryAddress> address(const QString& host, const QString& path) {
    RepositoryAddress found{canonicalHost(host), canonicalPath(path)};
    if (found.path.isEmpty() || !found.path.contains(u'/'))
        return std::nullopt;
    return found;
}

// `[user@]host:path`, git's scp-like form: a colon before any slash, and no scheme.
std::optional<RepositoryAddress> scpLike(const QString& url) {
    const qsizetype colon = url.indexOf(u':');
    const qsizetype slash = url.indexOf(u'/');
    if (colon <= 0 || (slash >= 0 && slash < colon))
        return std::nullopt;
    QString host = url.left(colon);
    host = host.mid(host.lastIndexOf(u'@') + 1);
    if (host.isEmpty())
        return std::nullopt;
    return address(host, url.mid(colon + 1));
}

std::optional<QString> joined(const std::optional<QString>& first,
                              const std::optional<QString>& second) {
    if (!first || !second || first->isEmpty() || second->isEmpty())
        return std::nullopt;
    return *first + u'/' + *second;
}

} // namespace

QString RepositoryAddress::text() const {
    return host.isEmpty() ? path : host + u'/' + path;
}

std::optional<RepositoryAddress> remoteRepository(const QString& url) {
    const QString trimmed = url.trimmed();
    if (!trimmed.contains(QLatin1String("://")))
        return scpLike(trimmed);
    const QUrl parsed(trimmed);
    static const QStringList schemes{"https", "http", "ssh", "git", "git+ssh", "ssh+git"};
    if (!parsed.isValid() || parsed.host().isEmpty() || !schemes.contains(parsed.scheme()))
        return std::nullopt;
    return address(parsed.host(), parsed.path());
}

std::optional<RepositoryAddress> linkedRepository(const VercelGitLink& link) {
    const QString type = link.type.value_or(QString());
    if (type.startsWith(QLatin1String("github"))) {
        // "github-custom-host" is GitHub Enterprise: its host is not in the link.
        const QString host =
            type == QLatin1String("github-custom-host") ? QString() : QStringLiteral("github.com");
        const auto path = joined(link.org, link.repo);
        return path ? address(host, *path) : std::nullopt;
    }
    if (type == QLatin1String("gitlab")) {
        // The address gives the path as git sees it; the name may be spelt for people.
        const QUrl url(link.projectUrl.value_or(QString()));
        if (url.isValid() && !url.host().isEmpty())
            return address(url.host(), url.path());
        const auto path = joined(link.projectNamespace, link.projectName);
        return path ? address(QString(), *path) : std::nullopt;
    }
    if (type == QLatin1String("bitbucket")) {
        const auto path = joined(link.owner, link.slug);
        return path ? address(QStringLiteral("bitbucket.org"), *path) : std::nullopt;
    }
    return std::nullopt;
}

bool isSameRepository(const RepositoryAddress& remote, const RepositoryAddress& linked) {
    return remote.path == linked.path && (linked.host.isEmpty() || remote.host == linked.host);
}
