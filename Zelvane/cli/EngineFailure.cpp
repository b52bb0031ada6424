#include "cli/EngineFailure.h"

#include "online/CloudflareKeyError.h"
#include "pipeline/TranslationError.h"

namespace zelvane {

QString complaintAbout(const std::exception_ptr& error, AIProvider engine)
{
    try {
        std::rethrow_exception(error);
    } catch (const TranslationError& failure) {
        switch (failure.code()) {
        case TranslationError::Code::emptyText:
            return QStringLiteral("there is no text to translate");
        case TranslationError::Code::missingAPIKey:
            return QStringLiteral("there is no key for %1; set ZELVANE_API_KEY, or store one in "
                                  "the keyring")
                .arg(displayName(engine));
        case TranslationError::Code::offlineEngineMissing:
            return QStringLiteral("the engine %1 is not installed; choose another one with "
                                  "--engine NAME")
                .arg(displayName(engine));
        default:
            return failure.description();
        }
    } catch (const CloudflareKeyError& failure) {
        if (failure.code() == CloudflareKeyError::Code::missingCachedConfig) {
            return QStringLiteral("%1 can't be reached; check the network, or choose another "
                                  "engine with --engine NAME")
                .arg(displayName(engine));
        }
        return failure.description();
    } catch (...) {
        return describe(std::current_exception());
    }
}

} // namespace zelvane
