#include "cli/EngineChoice.h"

namespace zelvane {

std::optional<AIProvider> engineFromName(const QString& name)
{
    if (const auto exact = providerFromStoredName(name)) {
        return exact;
    }
    QString plain = name.toLower();
    plain.remove(u' ').remove(u'-');
    for (const AIProvider provider : allProviders) {
        if (rawValue(provider).toLower().remove(u' ') == plain) {
            return provider;
        }
    }
    return std::nullopt;
}

void chooseEngine(AIProvider provider, UserDefaults& overlay)
{
    overlay.setValue(QStringLiteral("zv.provider"), rawValue(provider));
}

} // namespace zelvane
