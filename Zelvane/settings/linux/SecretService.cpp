#include "settings/linux/SecretService.h"

#include <libsecret/secret.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

namespace zelvane::secretservice {

namespace {

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Object = std::unique_ptr<T, Unref>;

/// Hands GLib a place for an error and owns what is put there.
class ErrorPlace
{
public:
    ErrorPlace() = default;
    ~ErrorPlace() { g_clear_error(&m_error); }
    ErrorPlace(const ErrorPlace&) = delete;
    ErrorPlace& operator=(const ErrorPlace&) = delete;

    operator GError**() { return &m_error; } // NOLINT(google-explicit-constructor)
    [[nodiscard]] bool isSet() const { return m_error != nullptr; }
    [[nodiscard]] Answer answer() const
    {
        if (g_error_matches(m_error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED) != FALSE) {
            return Answer::locked;
        }
        if (g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) != FALSE ||
            g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_AUTH_FAILED) != FALSE) {
            return Answer::refused;
        }
        return Answer::failed;
    }

private:
    GError* m_error = nullptr;
};

const SecretSchema* schema()
{
    // Without a match of the schema's name: items of older versions and other tools count too.
    static const SecretSchema* made = secret_schema_new(
        "org.zelvane.desk.Secret", SECRET_SCHEMA_DONT_MATCH_NAME, "service",
        SECRET_SCHEMA_ATTRIBUTE_STRING, "account", SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    return made;
}

using Attributes = std::unique_ptr<GHashTable, decltype(&g_hash_table_unref)>;

Attributes attributes(const std::string& account)
{
    return {secret_attributes_build(schema(), "service", "Zelvane", "account", account.c_str(),
                                    nullptr),
            &g_hash_table_unref};
}

/// Whether there is a bus to speak to. Asked for one that isn't there, GLib would start one.
bool hasSessionBus()
{
    if (const char* address = g_getenv("DBUS_SESSION_BUS_ADDRESS");
        address != nullptr && *address != '\0') {
        return true;
    }
    const std::string usual = std::string(g_get_user_runtime_dir()) + "/bus";
    return g_file_test(usual.c_str(), G_FILE_TEST_EXISTS) != FALSE;
}

Object<SecretService> openService(GCancellable* cancellable, GError** error)
{
    const Object<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, error));
    if (!bus) {
        return nullptr;
    }
    // Otherwise the end of the bus would end the program.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    return Object<SecretService>(
        secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, cancellable, error));
}

/// Runs `call` with the service, and a second time if the service may have been restarted since it
/// was opened.
Answer withService(const Cancellation& cancellation,
                   const std::function<Answer(SecretService*)>& call)
{
    if (!hasSessionBus()) {
        return Answer::failed;
    }
    Answer answer = Answer::failed;
    for (int round = 0; round < 2 && answer == Answer::failed; ++round) {
        if (g_cancellable_is_cancelled(cancellation.get()) != FALSE) {
            break;
        }
        if (round > 0) {
            secret_service_disconnect();
        }
        ErrorPlace error;
        const Object<SecretService> service = openService(cancellation.get(), error);
        answer = service ? call(service.get()) : error.answer();
    }
    return answer;
}

/// The keyring that new items go to; null if there is none yet.
Object<SecretCollection> defaultKeyring(SecretService* service, GCancellable* cancellable,
                                        GError** error)
{
    return Object<SecretCollection>(secret_collection_for_alias_sync(
        service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, cancellable, error));
}

/// What it means that no unlocked item was found: a locked keyring may hide one.
Answer absence(SecretService* service, GCancellable* cancellable)
{
    ErrorPlace error;
    const Object<SecretCollection> keyring = defaultKeyring(service, cancellable, error);
    if (error.isSet()) {
        return error.answer();
    }
    const bool isLocked = keyring && secret_collection_get_locked(keyring.get()) != FALSE;
    return isLocked ? Answer::locked : Answer::notFound;
}

Answer load(SecretItem* item, GCancellable* cancellable, std::string& value)
{
    ErrorPlace error;
    if (secret_item_load_secret_sync(item, cancellable, error) == FALSE) {
        return error.answer();
    }
    SecretValue* secret = secret_item_get_secret(item);
    if (secret == nullptr) {
        return Answer::failed;
    }
    gsize length = 0;
    const gchar* bytes = secret_value_get(secret, &length);
    value.assign(bytes, length);
    secret_value_unref(secret);
    return Answer::success;
}

Answer findIn(SecretService* service, const std::string& account, GCancellable* cancellable,
              std::string& value)
{
    ErrorPlace error;
    const Attributes wanted = attributes(account);
    GList* items = secret_service_search_sync(service, schema(), wanted.get(), SECRET_SEARCH_ALL,
                                              cancellable, error);
    if (error.isSet()) {
        return error.answer();
    }
    Answer answer = Answer::notFound;
    for (const GList* entry = items; entry != nullptr && answer != Answer::success;
         entry = entry->next) {
        auto* item = static_cast<SecretItem*>(entry->data);
        answer =
            secret_item_get_locked(item) != FALSE ? Answer::locked : load(item, cancellable, value);
    }
    g_list_free_full(items, g_object_unref);
    return answer == Answer::notFound ? absence(service, cancellable) : answer;
}

/// Raises the desktop's dialog for unlocking the keyring, or for making one. Nobody waits for the
/// user here: the dialog may stay for as long as the process.
void askToUnlock()
{
    static std::atomic_flag isAsking;
    if (isAsking.test_and_set()) {
        return;
    }
    std::thread([] {
        const Object<SecretService> service = openService(nullptr, nullptr);
        if (service) {
            const Object<SecretCollection> keyring =
                defaultKeyring(service.get(), nullptr, nullptr);
            if (keyring) {
                GList single = {keyring.get(), nullptr, nullptr};
                secret_service_unlock_sync(service.get(), &single, nullptr, nullptr, nullptr);
            } else {
                const Object<SecretCollection> made(secret_collection_create_sync(
                    service.get(), "Default keyring", SECRET_COLLECTION_DEFAULT,
                    SECRET_COLLECTION_CREATE_NONE, nullptr, nullptr));
            }
        }
        isAsking.clear();
    }).detach();
}

Answer addIn(SecretService* service, const std::string& account, const std::string& value,
             bool mayAsk, GCancellable* cancellable)
{
    ErrorPlace error;
    const Object<SecretCollection> keyring = defaultKeyring(service, cancellable, error);
    if (error.isSet()) {
        return error.answer();
    }
    if (!keyring || secret_collection_get_locked(keyring.get()) != FALSE) {
        if (mayAsk) {
            askToUnlock();
        }
        return Answer::locked;
    }
    const Attributes item = attributes(account);
    SecretValue* secret =
        secret_value_new(value.data(), static_cast<gssize>(value.size()), "text/plain");
    const Object<SecretItem> made(
        secret_item_create_sync(keyring.get(), schema(), item.get(), "Zelvane Desk", secret,
                                SECRET_ITEM_CREATE_REPLACE, cancellable, error));
    secret_value_unref(secret);
    return made ? Answer::success : error.answer();
}

} // namespace

Cancellation::Cancellation()
    : m_cancellable(g_cancellable_new())
{
}

Cancellation::~Cancellation()
{
    g_object_unref(m_cancellable);
}

void Cancellation::cancel()
{
    g_cancellable_cancel(m_cancellable);
}

Found find(const std::string& account, const Cancellation& cancellation)
{
    Found found;
    found.answer = withService(cancellation, [&](SecretService* service) {
        return findIn(service, account, cancellation.get(), found.value);
    });
    return found;
}

Answer add(const std::string& account, const std::string& value, bool mayAsk,
           const Cancellation& cancellation)
{
    return withService(cancellation, [&](SecretService* service) {
        return addIn(service, account, value, mayAsk, cancellation.get());
    });
}

Answer remove(const std::string& account, const Cancellation& cancellation)
{
    return withService(cancellation, [&](SecretService* service) {
        ErrorPlace error;
        const Attributes wanted = attributes(account);
        const gboolean removed =
            secret_service_clear_sync(service, schema(), wanted.get(), cancellation.get(), error);
        if (error.isSet()) {
            return error.answer();
        }
        return removed != FALSE ? Answer::success : absence(service, cancellation.get());
    });
}

} // namespace zelvane::secretservice
