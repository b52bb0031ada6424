#pragma once

#include "foundation/Completion.h"
#include "pipeline/Engines.h"

#include <QList>

#include <exception>
#include <optional>
#include <utility>

namespace zelvane::test {

/// An engine that answers at once, or when the test decides.
class HeldEngine final : public TranslationEngine
{
public:
    [[nodiscard]] QCoro::Task<QString> translate(TranslationRequest request,
                                                 std::stop_token stop) override
    {
        requests << request;
        if (failure) {
            std::rethrow_exception(failure);
        }
        if (answer) {
            const QString copy = *answer; // a member would be emptied
            co_return copy;
        }
        const Completion<QString> current;
        m_held << current;
        const std::stop_callback onStop(stop, [current] { current.fail(CancellationError()); });
        co_return co_await current.result();
    }

    /// Ends all requests that wait.
    void finishAll(const QString& translation)
    {
        const auto held = std::exchange(m_held, {});
        for (const Completion<QString>& request : held) {
            request.succeed(translation);
        }
    }

    QList<TranslationRequest> requests;
    std::optional<QString> answer = QStringLiteral("Hallo Welt");
    std::exception_ptr failure;

private:
    QList<Completion<QString>> m_held;
};

} // namespace zelvane::test
