// Every fault the network or Vercel can throw at each endpoint the engine calls, end to end
// through AppState: the user reads one clear sentence, the token and the preferences stay as they
// were, the engine recovers once the fault is gone, and the event loop is never held up.
#include "core/monitor/PreferenceKeys.h"
#include "support/EngineFixture.h"
#include "support/EventLoopLatency.h"
#include "support/FrenchDesktop.h"
#include "support/QtPrinters.h"

using Response = LoopbackHttpServer::Response;
using namespace std::chrono_literals;

namespace {

enum class Endpoint { user, teams, token, projects, deployments, events };
enum class Fault {
    unauthorized,
    invalidToken,
    rateLimited,
    serverError,
    timeout,
    refused,
    resetMidBody,
    truncatedJson,
    wrongKindDeep,
    body50MB,
    redirectLoop,
    notUtf8,
};

const QString token = QStringLiteral("tok_matrix_secret");

const char* name(Endpoint endpoint) {
    constexpr const char* names[] = {"user", "teams", "token", "projects", "deployments", "events"};
    return names[static_cast<int>(endpoint)];
}

QString pathOf(Endpoint endpoint) {
    constexpr const char* paths[] = {
        "/v2/user",     "/v2/teams",       "/v5/user/tokens/current",
        "/v9/projects", "/v6/deployments", "/v3/deployments/dpl_new/events"};
    return QString::fromLatin1(paths[static_cast<int>(endpoint)]);
}

// What the user reads for each fault, and whether it can pass by itself (an account check
// failing so is tried again without the user).
struct Traits {
    const char* name;
    const char* english;
    const char* french;
    bool canPass;
};

const Traits& traitsOf(Fault fault) {
    static const Traits rejected{"", "Token rejected by Vercel. It is invalid or expired.",
                                 "Jeton refusé par Vercel. Il est invalide ou expiré.", false};
    static const Traits unreadable{"", "Unreadable Vercel response.", "Réponse Vercel illisible.",
                                   false};
    static const Traits traits[] = {
        {"unauthorized", rejected.english, rejected.french, false},
        {"invalidToken", rejected.english, rejected.french, false},
        {"rateLimited", "Vercel rate limit reached, retrying soon.",
         "Limite d'appels Vercel atteinte, nouvel essai bientôt.", true},
        {"serverError", "Vercel error (HTTP 500).", "Erreur Vercel (HTTP 500).", true},
        {"timeout", "The request to Vercel timed out.", "La requête vers Vercel a expiré.", true},
        {"refused", "Could not connect to Vercel (connection refused).",
         "Impossible de se connecter à Vercel (connexion refusée).", true},
        {"resetMidBody", "The connection to Vercel was cut off before the answer ended.",
         "La connexion à Vercel a été coupée avant la fin de la réponse.", true},
        {"truncatedJson", unreadable.english, unreadable.french, false},
        {"wrongKind", unreadable.english, unreadable.french, false},
        {"body50MB", unreadable.english, unreadable.french, false},
        // The stack gives up following and the last status stands.
        {"redirectLoop", "Vercel error (HTTP 307).", "Erreur Vercel (HTTP 307).", false},
        {"notUtf8", unreadable.english, unreadable.french, false},
    };
    return traits[static_cast<int>(fault)];
}

bool rejectsToken(Fault fault) {
    return fault == Fault::unauthorized || fault == Fault::invalidToken;
}

// A well-formed answer of each endpoint with one text "MARK" in it.
QByteArray sampleBody(Endpoint endpoint) {
    static const QByteArray bodies[] = {
        R"({"user":{"username":"ada","email":"ada@example.com","name":"MARK"}})",
        R"({"teams":[{"id":"team_a","slug":"acme","name":"MARK"}],"pagination":{}})",
        R"({"token":{"id":"tok_1","name":"MARK","expiresAt":null}})",
        R"({"projects":[{"id":"p_web","name":"web","latestDeployments":[{"uid":"dpl_old",)"
        R"("state":"READY","meta":{"githubCommitMessage":"MARK"}}]}]})",
        R"({"deployments":[{"uid":"dpl_new","projectId":"p_web","state":"ERROR",)"
        R"("meta":{"githubCommitMessage":"MARK"}}]})",
        R"([{"type":"stdout","text":"MARK"}])",
    };
    return bodies[static_cast<int>(endpoint)];
}

// One record among good ones carries a field of the wrong JSON kind, deep inside.
QByteArray wrongKindBody(Endpoint endpoint) {
    static const QByteArray bodies[] = {
        R"({"user":{"username":"ada","defaultTeamId":["team_a"]}})",
        R"({"teams":[{"id":"team_a","slug":"acme"},{"id":"team_b","slug":{"en":"b"}}]})",
        R"({"token":{"id":"tok_1","expiresAt":"never"}})",
        R"({"projects":[{"id":"p_shop","name":"shop"},{"id":"p_web","name":"web",)"
        R"("latestDeployments":[{"uid":"dpl_old","target":[]}]}]})",
        R"({"deployments":[{"uid":"dpl_ok","projectId":"p_web","state":"READY"},)"
        R"({"uid":"dpl_bad","projectId":"p_web","meta":5}]})",
        R"([{"type":"stdout","text":"ok"},{"type":"stderr","payload":"Error: boom"}])",
    };
    return bodies[static_cast<int>(endpoint)];
}

Response faultResponse(Endpoint endpoint, Fault fault) {
    const QByteArray path = pathOf(endpoint).toLatin1();
    switch (fault) {
    case Fault::unauthorized:
        return Response::vercelError(401, "unauthorized", "Not authorized");
    case Fault::invalidToken: // Vercel's 403 says invalidToken
        return Response::vercelError(403, "forbidden", "Not authorized");
    case Fault::rateLimited:
        return Response::vercelError(429, "rate_limited", "Rate limit exceeded")
            .withHeader("X-RateLimit-Limit", "100")
            .withHeader("X-RateLimit-Remaining", "0")
            .withHeader("X-RateLimit-Reset", "1795449600")
            .withHeader("Retry-After", "60");
    case Fault::serverError:
        return Response::vercelError(500, "internal_server_error", "An unexpected error occurred");
    case Fault::timeout:
        return Response::never();
    case Fault::refused: // sent on to a port where nobody listens
        return Response::redirect("http://127.0.0.1:1" + path);
    case Fault::resetMidBody:
        return Response::resetMidBody(sampleBody(endpoint));
    case Fault::truncatedJson: {
        const QByteArray body = sampleBody(endpoint);
        return Response::json(body.left(body.size() / 2));
    }
    case Fault::wrongKindDeep:
        return Response::json(wrongKindBody(endpoint));
    case Fault::body50MB: // well-formed: only the size cap stands in its way
        return Response::json(sampleBody(endpoint).replace("MARK", QByteArray(50 << 20, 'x')));
    case Fault::redirectLoop:
        return Response::redirect(path);
    case Fault::notUtf8:
        return Response::json(sampleBody(endpoint).replace("MARK", "Ad\xC3\x28\xFF\xFE"));
    }
    Q_UNREACHABLE();
}

std::string describe(const AppState& s) {
    QString text = QStringLiteral("connection %1 '%2', lastError '%3', refreshing %4, projects")
                       .arg(int(s.connection().kind))
                       .arg(s.connection().detail, s.lastError().value_or("-"))
                       .arg(s.isRefreshing());
    for (const ProjectSnapshot& snapshot : s.snapshots())
        text += QStringLiteral(" %1:%2").arg(
            snapshot.id, snapshot.latest ? snapshot.latest->deploymentID() : QStringLiteral("-"));
    return text.toStdString();
}

class FaultMatrixTest : public EngineFixture,
                        public ::testing::WithParamInterface<std::tuple<Endpoint, Fault>> {
protected:
    void SetUp() override {
        account.addTeam("team_a", "acme");
        account.addProject("", "p_web", "web", {deployment("dpl_old", "p_web", "READY", -60, -59)});
        account.addProject("team_a", "p_shop", "shop");
        account.addDeployment("", deployment("dpl_new", "p_web", "ERROR", -3, -1));
        account.addDeployment("team_a", deployment("dpl_shop", "p_shop", "READY", -9, -8));
        account.events.insert("dpl_new",
                              QJsonArray{QJsonObject{{"type", "stderr"}, {"text", "Error: boom"}}});

        prefs->setBoolean(PreferenceKeys::projectsConfigured, true);
        prefs->setStringList(PreferenceKeys::monitoredProjectIDs, {"p_shop", "p_web"});
        prefs->setInteger(PreferenceKeys::refreshInterval, 60);
        prefs->setString(PreferenceKeys::appLanguage, "auto");
        ASSERT_TRUE(keychain.storeToken(token));
        storedToken = secrets.items;
        preferences = prefs.bytes();
        makeState(services(server.baseUrl(), 1s));
    }

    std::optional<ProjectSnapshot> snapshot(const QString& id) const {
        for (const ProjectSnapshot& s : state->snapshots()) {
            if (s.id == id)
                return s;
        }
        return std::nullopt;
    }

    // The first check and pass are over, whichever way they went.
    bool settled() const {
        const Connection& c = state->connection();
        return c.kind == Connection::Kind::failed || c.kind == Connection::Kind::retrying ||
               (c.isConnected() && state->hasLoadedOnce() && !state->isRefreshing());
    }

    // Both projects shown with their newest deployment, and no message left.
    bool recovered() const {
        const auto web = snapshot("p_web");
        const auto shop = snapshot("p_shop");
        return state->connection().isConnected() && !state->isRefreshing() && !state->lastError() &&
               state->snapshots().size() == 2 && web && web->latest &&
               web->latest->deploymentID() == "dpl_new" && shop && shop->latest &&
               shop->latest->deploymentID() == "dpl_shop";
    }

    QString copyReport() {
        EXPECT_TRUE(QCoro::waitFor(state->copyFailureReport(*snapshot("p_web"))));
        return clipboard.texts.value(clipboard.texts.size() - 1);
    }

    std::map<KeychainMode, QByteArray> storedToken;
    QByteArray preferences;
};

TEST_P(FaultMatrixTest, OneSentenceNothingLostRecoveryAndAResponsiveLoop) {
    const auto [endpoint, fault] = GetParam();
    const Traits& expected = traitsOf(fault);
    AppState& s = *state;
    QStringList seen;
    QObject::connect(&s, &AppState::connectionChanged, [&] {
        if (s.connection().kind == Connection::Kind::failed ||
            s.connection().kind == Connection::Kind::retrying)
            seen << s.connection().detail;
    });
    QObject::connect(&s, &AppState::lastErrorChanged, [&] {
        if (s.lastError())
            seen << *s.lastError();
    });
    // Made before the measure starts: building 50 MB is the test's work, not the app's.
    account.failures.insert(pathOf(endpoint), faultResponse(endpoint, fault));
    EventLoopLatency latency;

    s.start(false);
    ASSERT_TRUE(waitUntil([&] { return settled(); }, 20000)) << describe(s);
    if (endpoint == Endpoint::events) { // "Copy for AI" on the failed deployment
        EXPECT_TRUE(copyReport().contains("```\n(log unavailable)\n```"));
    }

    // The one sentence, where the user reads it: the connection's state when the account check
    // (with the teams) failed or a rejected token ended the connection, else the last error.
    // Teams that cannot be read for good, the token's expiry and the build log fail silently;
    // but a 429 anywhere holds every request of the token until its Retry-After, so the
    // listing and the pass that follow a rate-limited expiry check are held back and say so.
    seen.removeDuplicates();
    const bool retries =
        (endpoint == Endpoint::user || endpoint == Endpoint::teams) && expected.canPass;
    const bool ended = (endpoint == Endpoint::user && !retries) ||
                       (rejectsToken(fault) &&
                        (endpoint == Endpoint::projects || endpoint == Endpoint::deployments));
    const bool silent = (endpoint == Endpoint::teams && !retries) ||
                        (endpoint == Endpoint::token && fault != Fault::rateLimited) ||
                        endpoint == Endpoint::events;
    EXPECT_EQ(seen, silent ? QStringList() : QStringList{expected.english}) << describe(s);
    if (ended || retries) {
        EXPECT_EQ(s.connection().kind,
                  retries ? Connection::Kind::retrying : Connection::Kind::failed);
        EXPECT_EQ(s.connection().detail, expected.english);
    } else {
        EXPECT_TRUE(s.connection().isConnected()) << describe(s);
    }
    if (endpoint == Endpoint::projects && !ended) { // nothing to show: the message stays
        EXPECT_EQ(s.lastError(), expected.english);
    }
    if (endpoint == Endpoint::deployments && !ended) { // shown from the projects' own list
        const auto web = snapshot("p_web");
        ASSERT_TRUE(web && web->latest) << describe(s);
        EXPECT_EQ(web->latest->deploymentID(), "dpl_old");
    }
    if (endpoint == Endpoint::teams && !retries) { // the team's projects wait for the teams
        EXPECT_FALSE(snapshot("p_shop")) << describe(s);
    }
    if (endpoint == Endpoint::token) {
        EXPECT_EQ(s.tokenExpiry(), TokenExpiry::unknown());
    }
    if (endpoint == Endpoint::user || retries) {
        FrenchDesktop french;
        QCoro::waitFor(s.connect(token));
        EXPECT_EQ(s.connection().detail, QString::fromUtf8(expected.french));
    }

    account.failures.clear();
    if (ended) {
        // A rejected token or an unreadable answer is not retried by itself: it waits for the
        // user, who submits the token again in Settings (or restarts Quillon).
        EXPECT_EQ(clock.pendingSleepers(), 0);
        QCoro::waitFor(s.saveToken(token));
    } else if (endpoint == Endpoint::teams && !retries) {
        // Only a new account check reads the teams again; until then the personal scope is
        // polled.
        QCoro::waitFor(s.saveToken(token));
    } else {                                // a retried account check, or the loop's next pass
        if (endpoint == Endpoint::projects) // "Reload list" in Settings
            QCoro::waitFor(s.loadProjects());
        ASSERT_TRUE(waitUntil([&] { return clock.pendingSleepers() > 0; })) << describe(s);
        clock.advance(5min);
    }
    ASSERT_TRUE(waitUntil([&] { return recovered(); }, 20000)) << describe(s);
    if (endpoint == Endpoint::events) {
        EXPECT_TRUE(copyReport().contains("```\nError: boom\n```"));
    }

    // Compared without printing: the token must not reach the test's output.
    EXPECT_TRUE(secrets.items == storedToken) << "the stored token changed";
    EXPECT_EQ(prefs.bytes(), preferences);
    EXPECT_LE(latency.worst().count(), 200) << "the event loop was held up";
}

INSTANTIATE_TEST_SUITE_P(
    EveryEndpoint, FaultMatrixTest,
    ::testing::Combine(::testing::Values(Endpoint::user, Endpoint::teams, Endpoint::token,
                                         Endpoint::projects, Endpoint::deployments,
                                         Endpoint::events),
                       ::testing::Values(Fault::unauthorized, Fault::invalidToken,
                                         Fault::rateLimited, Fault::serverError, Fault::timeout,
                                         Fault::refused, Fault::resetMidBody, Fault::truncatedJson,
                                         Fault::wrongKindDeep, Fault::body50MB, Fault::redirectLoop,
                                         Fault::notUtf8)),
    [](const auto& info) {
        return std::string(name(std::get<0>(info.param))) + "_" +
               traitsOf(std::get<1>(info.param)).name;
    });

} // namespace
