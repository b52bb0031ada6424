#pragma once

#include <QUrl>

namespace zelvane {

/// Whether an address names this machine itself: localhost, 127.0.0.0/8 or ::1. Only there may HTTP
/// go without TLS, and never through a proxy.
[[nodiscard]] bool isLoopback(const QUrl& url);

} // namespace zelvane
