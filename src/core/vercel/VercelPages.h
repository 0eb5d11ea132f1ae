#pragma once

#include "core/vercel/VercelAPI.h"

#include <functional>

// Vercel's lists come a page at a time, newest first; a page's `pagination.next`, passed back as
// "until", asks for the page after it. These read as many pages as the caller needs.

inline QList<VercelDeployment>& pageItems(DeploymentsResponse& page) {
    return page.deployments;
}
inline QList<VercelProject>& pageItems(ProjectsResponse& page) {
    return page.projects;
}
inline QList<VercelTeam>& pageItems(TeamsResponse& page) {
    return page.teams;
}

// A server that keeps answering a next page still ends: 100 pages of 100 items is far more than
// an account holds.
inline constexpr int kMaxPages = 100;

// The pages of `path`, joined into one, read while `wantMore(pages so far)` holds and Vercel has
// a next page. `next` in the result is where reading stopped. A failed page fails the whole.
template <typename Page>
QCoro::Task<RequestResult<Page>> getPages(VercelAPI api, QString path, VercelAPI::Query query,
                                          std::function<bool(const Page&)> wantMore) {
    RequestResult<Page> first = co_await api.get<Page>(path, query);
    if (!first)
        co_return first;
    Page all = std::move(first.value());
    for (int read = 1; read < kMaxPages && all.next && wantMore(all); ++read) {
        const double until = *all.next;
        VercelAPI::Query next = query;
        next.append({QStringLiteral("until"), QString::number(static_cast<qint64>(until))});
        RequestResult<Page> page = co_await api.get<Page>(path, std::move(next));
        if (!page)
            co_return page.error();
        pageItems(all).append(std::move(pageItems(page.value())));
        // Each page must start before the one it follows, or reading would go round in circles.
        all.next = page->next && *page->next < until ? page->next : std::nullopt;
    }
    co_return all;
}

// While the oldest deployment read so far was created at or after `since`: the pages after it
// can only hold older ones.
std::function<bool(const DeploymentsResponse&)> whileNotOlderThan(const QDateTime& since);

// Every page.
template <typename Page>
QCoro::Task<RequestResult<Page>> getAllPages(VercelAPI api, QString path, VercelAPI::Query query) {
    co_return co_await getPages<Page>(std::move(api), std::move(path), std::move(query),
                                      [](const Page&) { return true; });
}
