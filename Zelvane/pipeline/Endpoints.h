#pragma once

#include "settings/AIProvider.h"
#include "settings/UserDefaults.h"

#include <QString>

namespace zelvane {

/// The address of an engine's operation: the provider's public host, or what the default
/// `zv.endpoint.<provider raw value>` puts in place of its scheme, host and port, and `path`.
///
/// Empty if the default is no usable address: not HTTP, without a host, or plain HTTP to a host
/// other than a loopback address.
[[nodiscard]] QString endpointUrl(AIProvider provider, const QString& path,
                                  const UserDefaults& defaults);

} // namespace zelvane
