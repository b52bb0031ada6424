#pragma once

#include "desktop/AppModelWindows.h"
#include "desktop/ServicePasteboard.h"
#include "foundation/DescribedError.h"
#include "foundation/HomeThread.h"
#include "foundation/TaskScope.h"
#include "pipeline/TranslationDispatch.h"

#include <chrono>
#include <expected>
#include <functional>
#include <semaphore>

namespace zelvane {

/// Why a service can't be done, in fixed English.
class ServiceError final : public DescribedError
{
public:
    explicit ServiceError(QString message)
        : m_message(std::move(message))
    {
    }
    [[nodiscard]] QString description() const override { return m_message; }

private:
    QString m_message;
};

/// Translation as a service of the system: a text comes on a pasteboard, and the translation is to
/// stand there before the call returns.
///
/// A slot is a place in the list of pairs, all of them counted, the first being 1 in the names of
/// the entries. An entry may be called on any thread, which it blocks for at most 60 seconds and a
/// moment; on the main thread that holds up the whole interface, and engines that need that thread
/// don't get an answer in time.
class ServicesProvider
{
public:
    /// What the services stand on. All must outlive the provider.
    struct Parts
    {
        const AppSettings& settings;
        TranslationDispatch& dispatch;
        TranslationTrace& trace;
        AppModelWindows& windows;
    };

    /// Waits for the end of a translation; false if it takes longer than the limit.
    using Wait = std::function<bool(std::binary_semaphore&, std::chrono::milliseconds)>;

    /// Made on the main thread.
    explicit ServicesProvider(const Parts& parts, Wait wait = waitInRealTime);
    /// No call may be under way.
    ~ServicesProvider();
    Q_DISABLE_COPY_MOVE(ServicesProvider)

    /// The text of the failure, none if the translation stands on the pasteboard. After a failure
    /// the pasteboard is as it was.
    using Failure = std::optional<QString>;
    using Entry = Failure (ServicesProvider::*)(ServicePasteboard&);

    Failure translatePair1(ServicePasteboard& pasteboard);
    Failure translatePair2(ServicePasteboard& pasteboard);
    Failure translatePair3(ServicePasteboard& pasteboard);
    /// These open the result popup as well.
    Failure translatePair1UI(ServicePasteboard& pasteboard);
    Failure translatePair2UI(ServicePasteboard& pasteboard);
    Failure translatePair3UI(ServicePasteboard& pasteboard);

    /// Ends the calls under way, and all that come, with a failure. Main thread.
    void close();

private:
    enum class Form {
        plain,
        withPopup,
    };
    using Prepared = std::expected<TranslationRequest, QString>;
    /// What the calling thread and the translation share.
    struct Boxes;

    static bool waitInRealTime(std::binary_semaphore& end, std::chrono::milliseconds limit);

    Failure runServiceTranslation(ServicePasteboard& pasteboard, int slot, Form form);
    [[nodiscard]] Prepared prepareServiceRequest(const QString& text, int slot) const;
    void traceServiceStart(const TranslationRequest& request, const QString& text);
    [[nodiscard]] QCoro::Task<void> translate(TranslationRequest request,
                                              std::shared_ptr<Boxes> boxes, std::stop_token stop);
    void presentServiceResult(const QString& text, const QString& translation);

    /// What `call` yields on the main thread, or why that didn't come to it.
    template <typename Call>
    [[nodiscard]] auto onMainThread(Call call)
        -> std::expected<std::invoke_result_t<Call>, QString>;

    Parts m_parts;
    Wait m_wait;
    TaskScope m_tasks;
    HomeThread m_mainThread;
};

} // namespace zelvane
