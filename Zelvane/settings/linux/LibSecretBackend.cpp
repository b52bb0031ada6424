#include "settings/linux/LibSecretBackend.h"

#include "settings/linux/SecretService.h"

#include <future>
#include <thread>

namespace zelvane {

namespace {

using secretservice::Answer;
using secretservice::Cancellation;

SecretStatus statusOf(Answer answer)
{
    switch (answer) {
    case Answer::success:
        return SecretStatus::success;
    case Answer::notFound:
        return SecretStatus::notFound;
    case Answer::refused:
        return SecretStatus::refused;
    case Answer::locked:
    case Answer::failed:
        return SecretStatus::otherFailure;
    }
    Q_UNREACHABLE();
}

/// What a call and the one who waits for it share: the call may outlive the wait.
template <typename Result>
struct Shared
{
    Cancellation cancellation;
    std::promise<Result> promise;
};

} // namespace

LibSecretBackend::LibSecretBackend(std::chrono::milliseconds limit)
    : m_limit(limit)
{
}

template <typename Result, typename Call>
Result LibSecretBackend::bounded(Call call, Result otherwise)
{
    const std::unique_lock turn(m_turn, m_limit);
    if (!turn.owns_lock() || m_isBusy->exchange(true)) {
        return otherwise;
    }
    const auto shared = std::make_shared<Shared<Result>>();
    std::future<Result> result = shared->promise.get_future();
    std::thread([shared, call = std::move(call), isBusy = m_isBusy] {
        Result value = call(shared->cancellation);
        isBusy->store(false);
        shared->promise.set_value(std::move(value));
    }).detach();
    if (result.wait_for(m_limit) != std::future_status::ready) {
        shared->cancellation.cancel();
        return otherwise;
    }
    return result.get();
}

SecretBackend::Found LibSecretBackend::find(const QString& account)
{
    const auto call = [name = account.toStdString()](const Cancellation& cancellation) {
        return secretservice::find(name, cancellation);
    };
    const secretservice::Found found = bounded(call, secretservice::Found());
    return {statusOf(found.answer), QByteArray::fromStdString(found.value)};
}

SecretStatus LibSecretBackend::add(const QString& account, const QByteArray& value,
                                   SecretDialog dialog)
{
    const bool mayAsk = dialog == SecretDialog::allowed;
    const auto call = [name = account.toStdString(), secret = value.toStdString(),
                       mayAsk](const Cancellation& cancellation) {
        return secretservice::add(name, secret, mayAsk, cancellation);
    };
    return statusOf(bounded(call, Answer::failed));
}

SecretStatus LibSecretBackend::remove(const QString& account)
{
    const auto call = [name = account.toStdString()](const Cancellation& cancellation) {
        return secretservice::remove(name, cancellation);
    };
    return statusOf(bounded(call, Answer::failed));
}

} // namespace zelvane
