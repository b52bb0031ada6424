#pragma once

#include "settings/AIProvider.h"
#include "settings/UserDefaults.h"

#include <QString>

namespace zelvane {

/// The address of an engine's operation: the provider's public host and `path`, which begins with a
/// slash and is already percent-encoded.
///
/// The default `zv.endpoint.<provider raw value>`, a text such as "https://gateway.example/openai",
/// takes the place of scheme, host and port; its own path goes before `path`, as gateways that
/// serve several providers expect it. A blank one counts as none.
///
/// Empty if the default is no usable address (not HTTP, without a host, with a user name, a query
/// or a fragment, or plain HTTP to a host other than a loopback address), and for a provider
/// without one public host.
[[nodiscard]] QString endpointUrl(AIProvider provider, const QString& path,
                                  const UserDefaults& defaults);

/// The kinds of DeepL accounts, each with a public host of its own.
enum class DeepLPlan { free, paid };

/// The same for DeepL, whose default takes the place of either host.
[[nodiscard]] QString deepLEndpointUrl(DeepLPlan plan, const QString& path,
                                       const UserDefaults& defaults);

/// The address of the hosted service's operation. `workerUrl` is the user's setting: without white
/// space and then slashes at its ends it is the base, under the same rules as above; if nothing is
/// left, `endpointUrl` has the address.
[[nodiscard]] QString hostedServiceUrl(const QString& workerUrl, const QString& path,
                                       const UserDefaults& defaults);

/// The address of a file at the public host of models. The default `zv.endpoint.modelFiles`, under
/// the same rules, takes the place of the host: for a mirror.
[[nodiscard]] QString modelFileUrl(const QString& path, const UserDefaults& defaults);

/// The address of a file of the dictionaries' publisher. The default `zv.endpoint.dictionaries`, a
/// mirror, takes the place of its host under the same rules as above.
[[nodiscard]] QString dictionariesUrl(const QString& path, const UserDefaults& defaults);

} // namespace zelvane
