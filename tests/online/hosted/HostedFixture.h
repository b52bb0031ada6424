#pragma once

#include "http/JsonError.h"
#include "online/CloudflareKeyError.h"
#include "online/HostedService.h"
#include "settings/SecretStore.h"
#include "support/Await.h"
#include "support/FakeHttpTransport.h"
#include "support/FakeSecretBackend.h"

#include <gtest/gtest.h>

namespace zelvane::test {

/// A machine with an id of the test's choice.
class FixedMachine final : public MachineIdentity
{
public:
    [[nodiscard]] QByteArray machineId() const override { return id; }

    QByteArray id = "machine-1";
};

/// What a call of the hosted service ended with.
template <typename T>
struct HostedOutcome
{
    std::optional<T> value;
    std::optional<CloudflareKeyError::Code> code;
    std::optional<TransportError::Kind> transport;
    bool json = false;
    bool cancelled = false;
    QString text; ///< the failure's description
};

/// Runs a call to its end.
template <typename T>
HostedOutcome<T> outcomeOf(QCoro::Task<T> call)
{
    HostedOutcome<T> outcome;
    try {
        outcome.value = await(std::move(call));
    } catch (const CancellationError&) {
        outcome.cancelled = true;
    } catch (const CloudflareKeyError& error) {
        outcome.code = error.code();
        outcome.text = error.description();
    } catch (const TransportError& error) {
        outcome.transport = error.kind();
        outcome.text = error.description();
    } catch (const JsonError& error) {
        outcome.json = true;
        outcome.text = error.description();
    }
    return outcome;
}

/// One installation of the program: its settings and its keyring, which outlive a start.
struct Install
{
    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{defaults, backend};
    FixedMachine machine;

    [[nodiscard]] QString id() const
    {
        return defaults.string(QStringLiteral("zv.installId")).value_or(QString());
    }
    [[nodiscard]] QByteArray token() const
    {
        return backend.items.value(QStringLiteral("zv.cloudflare.installToken"));
    }
};

inline TranslationRequest hostedRequest(const QString& text = QStringLiteral("Hello"))
{
    TranslationRequest request;
    request.text = text;
    request.model = QStringLiteral("m-1");
    request.systemPrompt = QStringLiteral("Translate.");
    return request;
}

} // namespace zelvane::test
