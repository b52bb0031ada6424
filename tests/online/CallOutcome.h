#pragma once

#include "http/HttpTransport.h"
#include "http/JsonError.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"

namespace zelvane::test {

/// What a call of an engine ended with.
template <typename T>
struct CallOutcome
{
    std::optional<T> value;
    std::optional<TranslationError::Code> code;
    std::optional<TransportError::Kind> transport;
    bool json = false;
    bool cancelled = false;
    QString text; ///< the failure's description
};

/// Runs a call to its end.
template <typename T>
CallOutcome<T> outcomeOf(QCoro::Task<T> call)
{
    CallOutcome<T> outcome;
    try {
        outcome.value = await(std::move(call));
    } catch (const TranslationError& error) {
        outcome.code = error.code();
        outcome.text = error.description();
    } catch (const TransportError& error) {
        outcome.transport = error.kind();
        outcome.text = error.description();
    } catch (const JsonError& error) {
        outcome.json = true;
        outcome.text = error.description();
    } catch (const CancellationError&) {
        outcome.cancelled = true;
    }
    return outcome;
}

} // namespace zelvane::test
