#pragma once

#include "http/NetworkHttpTransport.h"
#include "online/AnthropicClient.h"
#include "online/ChatCompletionsClient.h"
#include "online/DeepLClient.h"
#include "online/GeminiClient.h"
#include "online/HostedService.h"
#include "online/RemoteModels.h"
#include "pipeline/TranslationDispatch.h"

namespace zelvane {

/// The engines that are reached over the network, and the connections that they share.
class OnlineEngines
{
public:
    /// What this installation of the program keeps from one run to the next, whatever the choices
    /// of one call.
    struct Kept
    {
        UserDefaults& defaults;
        SecretStore& secrets;
    };

    /// All must outlive this object. From now on the process uses the proxies of the system.
    OnlineEngines(Clock& clock, const UserDefaults& defaults, TranslationTrace& trace, Kept kept);

    /// What a dispatch needs of them, which stays owned by this object, with the dictionaries.
    [[nodiscard]] TranslationDispatch::Engines forDispatch(GlossaryLookup* glossary);
    [[nodiscard]] RemoteModels& models() { return m_models; }
    [[nodiscard]] HttpTransport& transport() { return m_transport; }
    [[nodiscard]] HostedService& hosted() { return m_hosted; }

private:
    NetworkHttpTransport m_transport;
    ChatCompletionsClient m_chat;
    GeminiClient m_gemini;
    AnthropicClient m_claude;
    DeepLClient m_deepL;
    SystemMachineIdentity m_machine;
    HostedService m_hosted;
    RemoteModels m_models;
};

} // namespace zelvane
