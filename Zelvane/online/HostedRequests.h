#pragma once

#include "http/HttpTransport.h"

#include <QString>

// What the hosted service is asked, by one call each.

namespace zelvane {

/// This program, as the hosted service is told.
struct ProgramVersion
{
    QString version = QStringLiteral("unknown");
    /// The number of the build; may be empty.
    QString build;
};

/// What an installation proves itself with.
struct HostedInstallation
{
    QString id;
    QString token;

    friend bool operator==(const HostedInstallation&, const HostedInstallation&) = default;
};

/// A text on its way to the service.
struct HostedText
{
    QString text;
    QString systemPrompt;
    QString model;
};

[[nodiscard]] HttpRequest registerRequest(const QUrl& url, const ProgramVersion& program,
                                          const QString& installId,
                                          const QString& deviceFingerprint);
[[nodiscard]] HttpRequest bootstrapRequest(const QUrl& url, const ProgramVersion& program,
                                           const HostedInstallation& installation);
[[nodiscard]] HttpRequest quotaRequest(const QUrl& url, const ProgramVersion& program,
                                       const HostedInstallation& installation);
[[nodiscard]] HttpRequest translateRequest(const QUrl& url, const ProgramVersion& program,
                                           const HostedInstallation& installation,
                                           const HostedText& text);

} // namespace zelvane
