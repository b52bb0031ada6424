#pragma once

#include "Services/EngineState.h"
#include "cli/CommandStreams.h"

#include <QPropertyNotifier>

namespace zelvane {

/// Tells on the error stream how an installation goes, as long as it exists.
class EngineProgress
{
public:
    enum class Style {
        oneLine,    ///< for a terminal: one line that changes and goes in the end
        plainLines, ///< one line for each step, and for each tenth of the download
    };

    /// `state` must outlive this object.
    EngineProgress(EngineState& state, const CommandStreams& streams, Style style);
    ~EngineProgress();
    Q_DISABLE_COPY_MOVE(EngineProgress)

private:
    void show();
    void print(const QString& text);

    EngineState& m_state;
    const CommandStreams m_streams;
    const Style m_style;
    QString m_shown;
    QString m_step;
    qint64 m_tenths = 0; ///< of the download, as far as they have been told in lines
    QPropertyNotifier m_onStatus;
    QPropertyNotifier m_onDownload;
};

/// How far a download is: "1.2 GB of 2.7 GB (44 %), 12.3 MB/s, 2:05 left".
[[nodiscard]] QString shownDownload(const EngineDownloadProgress& progress);

} // namespace zelvane
