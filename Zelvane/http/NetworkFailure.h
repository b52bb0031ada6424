#pragma once

#include "http/HttpTransport.h"

namespace zelvane {

/// Why an exchange brought no answer, in more detail than its `TransportError::Kind`.
enum class NetworkFailure {
    notAnAddress,
    unsendableHeader,
    plainHttp,
    hostNotFound,
    refused,
    proxy,
    dropped, ///< before the answer's head, or with something else than HTTP
    packed,  ///< the body has a content encoding that wasn't asked for
    otherConnection,
    noTls,
    untrustedCertificate,
    silence,
    tooLong, ///< the whole exchange, however lively
    tooLarge,
    truncated,
    diskFull,
    notStored,
};

/// The failure as the user reads it. `host` is all of the address that the text tells: the rest may
/// hold a key.
[[nodiscard]] TransportError transportError(NetworkFailure failure, const QString& host);

} // namespace zelvane
