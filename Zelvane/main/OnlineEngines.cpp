#include "main/OnlineEngines.h"

#include <QNetworkProxyFactory>

namespace zelvane {

OnlineEngines::OnlineEngines(Clock& clock, const UserDefaults& defaults, TranslationTrace& trace,
                             Kept kept)
    : m_transport(clock)
    , m_chat(m_transport, trace)
    , m_gemini(m_transport, defaults)
    , m_claude(m_transport, defaults)
    , m_deepL(m_transport, defaults)
    , m_hosted(m_transport, kept.defaults, kept.secrets, m_machine,
               {QStringLiteral(ZELVANE_VERSION), QString()})
    , m_models(m_transport, defaults, &m_hosted)
{
    QNetworkProxyFactory::setUseSystemConfiguration(true);
}

TranslationDispatch::Engines OnlineEngines::forDispatch(GlossaryLookup* glossary)
{
    return {&m_chat,
            &m_hosted,
            {{AIProvider::gemini, &m_gemini},
             {AIProvider::claude, &m_claude},
             {AIProvider::deepL, &m_deepL}},
            glossary};
}

} // namespace zelvane
