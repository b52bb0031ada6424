#include "http/NetworkFailure.h"

#include "settings/Localization.h"

namespace zelvane {

namespace {

TransportError::Kind kindOf(NetworkFailure failure)
{
    switch (failure) {
    case NetworkFailure::plainHttp:
    case NetworkFailure::noTls:
    case NetworkFailure::untrustedCertificate:
        return TransportError::Kind::insecure;
    case NetworkFailure::silence:
    case NetworkFailure::tooLong:
        return TransportError::Kind::timeout;
    case NetworkFailure::tooLarge:
        return TransportError::Kind::tooLarge;
    case NetworkFailure::truncated:
        return TransportError::Kind::truncated;
    case NetworkFailure::diskFull:
    case NetworkFailure::notStored:
        return TransportError::Kind::storage;
    default:
        return TransportError::Kind::connection;
    }
}

QString textOf(NetworkFailure failure, const QString& host)
{
    const auto about = [&](const QString& format) { return localizedFormat(format, {host}); };
    switch (failure) {
    case NetworkFailure::notAnAddress:
        return localizedText(QStringLiteral("This is not the address of a web server."));
    case NetworkFailure::unsendableHeader:
        return about(LOCALIZATION_KEY("The API key for %@ holds a line break."));
    case NetworkFailure::plainHttp:
        return about(LOCALIZATION_KEY("%@ may only be reached over HTTPS."));
    case NetworkFailure::hostNotFound:
        return about(LOCALIZATION_KEY("The server %@ was not found. Is the internet reachable?"));
    case NetworkFailure::refused:
        return about(LOCALIZATION_KEY("%@ refuses the connection."));
    case NetworkFailure::proxy:
        return about(LOCALIZATION_KEY("The proxy server does not connect to %@."));
    case NetworkFailure::dropped:
        return about(LOCALIZATION_KEY("The connection to %@ ended without a valid answer."));
    case NetworkFailure::packed:
        return about(LOCALIZATION_KEY("The answer of %@ is packed and can't be read."));
    case NetworkFailure::otherConnection:
        return about(LOCALIZATION_KEY("The connection to %@ failed."));
    case NetworkFailure::noTls:
        return about(LOCALIZATION_KEY("No secure connection to %@ is possible."));
    case NetworkFailure::untrustedCertificate:
        return about(LOCALIZATION_KEY("The certificate of %@ is not trusted."));
    case NetworkFailure::silence:
    case NetworkFailure::tooLong:
        return about(LOCALIZATION_KEY("%@ did not answer in time."));
    case NetworkFailure::tooLarge:
        return about(LOCALIZATION_KEY("The answer of %@ is too large."));
    case NetworkFailure::truncated:
        return about(LOCALIZATION_KEY("The answer of %@ is incomplete."));
    case NetworkFailure::diskFull:
        return localizedText(QStringLiteral("The disk is full."));
    case NetworkFailure::notStored:
        return localizedText(QStringLiteral("The download could not be written to the disk."));
    }
    Q_UNREACHABLE();
}

} // namespace

TransportError transportError(NetworkFailure failure, const QString& host)
{
    return {kindOf(failure), textOf(failure, host)};
}

} // namespace zelvane
