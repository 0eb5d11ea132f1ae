#include "services/LibsecretBackend.h"

#include "core/common/Language.h"
#include "services/SecretServiceSession.h"

// The Secret Service has no per-item accessibility classes; where a copy lives stands in for
// them. The persistent copy goes to the default collection (the login keyring, on disk, unlocked
// at login and then readable all session: "after first unlock"). The local copy goes to the
// session collection (in memory, gone at logout: readable only while this session is open).

namespace {

const SecretSchema kSchema = {
    .name = "com.fernhollow.quillon.Token",
    .flags = SECRET_SCHEMA_NONE,
    .attributes = {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                   {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                   {"copy", SECRET_SCHEMA_ATTRIBUTE_STRING},
                   {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
    .reserved = 0,
    .reserved1 = nullptr,
    .reserved2 = nullptr,
    .reserved3 = nullptr,
    .reserved4 = nullptr,
    .reserved5 = nullptr,
    .reserved6 = nullptr,
    .reserved7 = nullptr,
};

const char* collectionAlias(KeychainMode copy) {
    return copy == KeychainMode::synced ? SECRET_COLLECTION_DEFAULT : SECRET_COLLECTION_SESSION;
}

// The attributes that identify the item of a copy; the copy attribute keeps the two apart, since
// a search covers every collection.
GHashTablePtr itemAttributes(KeychainMode copy) {
    GHashTablePtr attributes(g_hash_table_new(g_str_hash, g_str_equal));
    g_hash_table_insert(attributes.get(), gpointer("service"), gpointer("com.fernhollow.quillon"));
    g_hash_table_insert(attributes.get(), gpointer("account"), gpointer("vercel-token"));
    g_hash_table_insert(attributes.get(), gpointer("copy"),
                        gpointer(copy == KeychainMode::synced ? "synced" : "local"));
    return attributes;
}

// What a finished call answered, or why it failed.
template <typename T> struct Answer {
    T value;
    std::optional<SecretFailure> failure;
};

// Runs one call, then its finish function (which takes the result and an error location).
template <typename Finish>
auto finishCall(SecretServiceSession& session, const GlibAsyncRunner::Start& start, Finish finish,
                GObjectPtr<GAsyncResult> (SecretServiceSession::*call)(
                    const GlibAsyncRunner::Start&) = &SecretServiceSession::call) {
    const GObjectPtr<GAsyncResult> result = (session.*call)(start);
    GError* raw = nullptr;
    using Value = decltype(finish(result.get(), &raw));
    Answer<Value> answer{result ? finish(result.get(), &raw) : Value{}, std::nullopt};
    GErrorPtr error(raw);
    if (error || !result)
        answer.failure = session.failure(error.get());
    return answer;
}

SecretFailure missingCollection(KeychainMode copy) {
    return {LibsecretBackend::noCollection,
            copy == KeychainMode::synced ? Language::text("There is no login keyring.",
                                                          "Il n'y a pas de trousseau de connexion.")
                                         : Language::text("There is no session keyring.",
                                                          "Il n'y a pas de trousseau de session.")};
}

SecretFailure lockedCollection() {
    return {LibsecretBackend::locked,
            Language::text("The keyring is locked.", "Le trousseau est verrouillé.")};
}

// Asks the Secret Service to unlock `objects` (collections or items); the desktop shows its own
// password prompt. Only for what the user just asked for (a token pasted or removed): answers the
// failure when anything stays locked.
std::optional<SecretFailure> unlock(SecretServiceSession& session, SecretService* service,
                                    GList* objects) {
    const guint wanted = g_list_length(objects);
    auto unlocked = finishCall(
        session,
        [&](GCancellable* cancellable, GAsyncReadyCallback done, gpointer context) {
            secret_service_unlock(service, objects, cancellable, done, context);
        },
        [&](GAsyncResult* result, GError** error) {
            return secret_service_unlock_finish(service, result, nullptr, error);
        },
        &SecretServiceSession::promptingCall);
    if (unlocked.failure || unlocked.value < gint(wanted))
        return lockedCollection();
    return std::nullopt;
}

// The collection a copy goes to, looked up without creating it (that would prompt for a new
// password). A locked login keyring is asked to unlock; a missing one, or one that stays locked,
// leaves the token in the session collection only.
Expected<GObjectPtr<SecretCollection>, SecretFailure>
writableCollection(SecretServiceSession& session, SecretService* service, KeychainMode copy) {
    auto found = finishCall(
        session,
        [&](GCancellable* cancellable, GAsyncReadyCallback done, gpointer context) {
            secret_collection_for_alias(service, collectionAlias(copy), SECRET_COLLECTION_NONE,
                                        cancellable, done, context);
        },
        [](GAsyncResult* result, GError** error) {
            return secret_collection_for_alias_finish(result, error);
        });
    GObjectPtr<SecretCollection> collection(found.value);
    if (found.failure)
        return *found.failure;
    if (!collection)
        return missingCollection(copy);
    if (secret_collection_get_locked(collection.get())) {
        GList objects{collection.get(), nullptr, nullptr};
        if (auto failure = unlock(session, service, &objects))
            return *failure;
    }
    return collection;
}

std::optional<SecretFailure> createItem(SecretServiceSession& session, SecretCollection* collection,
                                        KeychainMode copy, const QByteArray& data,
                                        const QString& label) {
    const GHashTablePtr attributes = itemAttributes(copy);
    const QByteArray labelText = label.toUtf8();
    const SecretValuePtr value(secret_value_new(data.constData(), data.size(), "text/plain"));
    auto created = finishCall(
        session,
        [&](GCancellable* cancellable, GAsyncReadyCallback done, gpointer context) {
            secret_item_create(collection, &kSchema, attributes.get(), labelText.constData(),
                               value.get(), SECRET_ITEM_CREATE_REPLACE, cancellable, done, context);
        },
        [](GAsyncResult* result, GError** error) {
            return secret_item_create_finish(result, error);
        });
    const GObjectPtr<SecretItem> item(created.value);
    if (created.failure)
        return created.failure;
    if (!item) // a prompt the user dismissed
        return SecretFailure{LibsecretBackend::refused,
                             Language::text("The keyring refused to store the token.",
                                            "Le trousseau a refusé d'enregistrer le jeton.")};
    return std::nullopt;
}

// Unlocks the items matching `attributes` that are locked, if any.
std::optional<SecretFailure> unlockItems(SecretServiceSession& session, SecretService* service,
                                         GHashTable* attributes) {
    auto searched = finishCall(
        session,
        [&](GCancellable* cancellable, GAsyncReadyCallback done, gpointer context) {
            secret_service_search(service, &kSchema, attributes, SECRET_SEARCH_ALL, cancellable,
                                  done, context);
        },
        [&](GAsyncResult* result, GError** error) {
            return secret_service_search_finish(service, result, error);
        });
    const GObjectListPtr items(searched.value);
    if (searched.failure)
        return searched.failure;
    GList* locked = nullptr;
    for (GList* item = items.get(); item; item = item->next) {
        if (secret_item_get_locked(SECRET_ITEM(item->data)))
            locked = g_list_prepend(locked, item->data);
    }
    if (!locked)
        return std::nullopt;
    std::optional<SecretFailure> failure = unlock(session, service, locked);
    g_list_free(locked);
    return failure;
}

// Holds the Secret Service for the length of one backend call.
class ServiceUse {
public:
    explicit ServiceUse(SecretServiceSession& session)
        : session_(session), service_(session.service()) {}
    ~ServiceUse() { session_.release(); }
    ServiceUse(const ServiceUse&) = delete;
    ServiceUse& operator=(const ServiceUse&) = delete;

    const Expected<SecretService*, SecretFailure>& service() const { return service_; }

private:
    SecretServiceSession& session_;
    Expected<SecretService*, SecretFailure> service_;
};

} // namespace

LibsecretBackend::LibsecretBackend() : session_(std::make_unique<SecretServiceSession>()) {}

LibsecretBackend::~LibsecretBackend() = default;

int LibsecretBackend::addItem(KeychainMode copy, const QByteArray& data, const QString& label) {
    const ServiceUse use(*session_);
    if (!use.service())
        return fail(use.service().error());
    const Expected<GObjectPtr<SecretCollection>, SecretFailure> collection =
        writableCollection(*session_, *use.service(), copy);
    if (!collection)
        return fail(collection.error());
    if (const auto failure = createItem(*session_, collection->get(), copy, data, label))
        return fail(*failure);
    return 0;
}

int LibsecretBackend::deleteItems(KeychainMode copy) {
    const ServiceUse use(*session_);
    if (!use.service())
        return fail(use.service().error());
    SecretService* service = *use.service();
    const GHashTablePtr attributes = itemAttributes(copy);
    // Clearing skips locked items: those are unlocked first, or the copy stays and says why.
    if (const auto failure = unlockItems(*session_, service, attributes.get()))
        return fail(*failure);
    auto cleared = finishCall(
        *session_,
        [&](GCancellable* cancellable, GAsyncReadyCallback done, gpointer context) {
            secret_service_clear(service, &kSchema, attributes.get(), cancellable, done, context);
        },
        [&](GAsyncResult* result, GError** error) {
            return secret_service_clear_finish(service, result, error);
        });
    if (cleared.failure)
        return fail(*cleared.failure);
    return cleared.value ? 0 : notFound;
}

SecretBackend::Match LibsecretBackend::copyMatching(KeychainMode copy) {
    const ServiceUse use(*session_);
    if (!use.service())
        return {fail(use.service().error()), {}};
    SecretService* service = *use.service();
    const GHashTablePtr attributes = itemAttributes(copy);
    // Secrets load only for unlocked items: a locked login keyring reads as no synced copy
    // rather than a password prompt.
    auto searched = finishCall(
        *session_,
        [&](GCancellable* cancellable, GAsyncReadyCallback done, gpointer context) {
            secret_service_search(service, &kSchema, attributes.get(), SECRET_SEARCH_LOAD_SECRETS,
                                  cancellable, done, context);
        },
        [&](GAsyncResult* result, GError** error) {
            return secret_service_search_finish(service, result, error);
        });
    const GObjectListPtr items(searched.value);
    if (searched.failure)
        return {fail(*searched.failure), {}};
    if (!items)
        return {notFound, {}};
    const SecretValuePtr value(secret_item_get_secret(SECRET_ITEM(items->data)));
    if (!value)
        return {fail(lockedCollection()), {}};
    gsize length = 0;
    const gchar* bytes = secret_value_get(value.get(), &length);
    return {0, QByteArray(bytes, qsizetype(length))};
}

std::optional<QString> LibsecretBackend::errorMessage(int status) const {
    const auto found = messages_.constFind(status);
    if (found == messages_.constEnd() || found->isEmpty())
        return std::nullopt;
    return *found;
}

int LibsecretBackend::fail(const SecretFailure& failure) {
    messages_.insert(failure.status, failure.message);
    return failure.status;
}
