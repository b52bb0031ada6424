#pragma once

#include <QString>

#include <optional>
#include <variant>

namespace zelvane {

namespace engine_status {

/// An installation is under way.
struct Installing
{
    QString message;
    double fraction = 0; ///< from 0 to 1

    friend bool operator==(const Installing&, const Installing&) = default;
};

/// The last installation failed; the text is for the user.
struct Failed
{
    QString text;

    friend bool operator==(const Failed&, const Failed&) = default;
};

/// There is nothing usable on the disk.
struct NotInstalled
{
    friend bool operator==(const NotInstalled&, const NotInstalled&) = default;
};

/// Installed; this says nothing about a running server.
struct Ready
{
    friend bool operator==(const Ready&, const Ready&) = default;
};

} // namespace engine_status

/// What is on the disk of an offline engine.
using EngineStatus = std::variant<engine_status::NotInstalled, engine_status::Ready,
                                  engine_status::Installing, engine_status::Failed>;

/// How far the download of a model is.
struct EngineDownloadProgress
{
    qint64 downloadedBytes = 0;
    std::optional<qint64> totalBytes;
    qint64 bytesPerSecond = 0;            ///< the average since the download began
    std::optional<qint64> remainingBytes; ///< not below 0
    std::optional<qint64> etaSeconds;     ///< absent while the speed is 0
    qint64 elapsedSeconds = 1;            ///< whole seconds since the download began, at least 1
    qint64 idleSeconds = 0;

    friend bool operator==(const EngineDownloadProgress&, const EngineDownloadProgress&) = default;
};

} // namespace zelvane
