#pragma once

#include "settings/AIProvider.h"

#include <QList>
#include <QString>

#include <optional>

namespace zelvane {

/// The models that run on this machine.
enum class SmartOfflineVariant { hyMT2_7b, euroLLM_9b, lmt60_4b };

/// What is fixed for a model.
struct SmartOfflineVariantFacts
{
    AIProvider provider;
    QString folder; ///< of the engine, below the application-support folder
    QString modelFile;
    QString requestModel; ///< what requests to the server call it
    qint64 expectedModelBytes;
    QString recordEngine = {}; ///< what the record of an installation calls it
    QString repository = {};   ///< account and name at the host of the model files
    QString downloadText = {}; ///< shown while the model is downloaded; a key of the translations
};

/// In the order of the enumeration.
[[nodiscard]] const QList<SmartOfflineVariant>& smartOfflineVariants();
[[nodiscard]] const SmartOfflineVariantFacts& factsOf(SmartOfflineVariant variant);
/// None for a provider whose model runs elsewhere.
[[nodiscard]] std::optional<SmartOfflineVariant> smartOfflineVariantOf(AIProvider provider);

} // namespace zelvane
