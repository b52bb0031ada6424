#pragma once

#include "pipeline/Engines.h"
#include "settings/UserDefaults.h"

#include <mutex>
#include <optional>

namespace zelvane {

/// What is prescribed until the hosted service has been heard.
[[nodiscard]] ZelvaneClientConfig builtInClientConfig();

/// The last configuration that the hosted service gave, in memory and in the settings. Callable
/// from any thread.
class HostedConfigCache
{
public:
    /// `defaults` must outlive this object.
    explicit HostedConfigCache(UserDefaults& defaults);

    /// The record at hand, the built-in one if there is none.
    [[nodiscard]] ZelvaneClientConfig current() const;

    /// The record at hand, if there is one.
    [[nodiscard]] std::optional<ZelvaneClientConfig> known() const;

    /// Makes `config` the current record. Whether it differs from the stored one, which it then
    /// replaces.
    bool store(const ZelvaneClientConfig& config);

private:
    UserDefaults& m_defaults;
    mutable std::mutex m_lock;
    mutable std::optional<ZelvaneClientConfig> m_record;
};

} // namespace zelvane
