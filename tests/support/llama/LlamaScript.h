#pragma once

#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <expected>
#include <optional>

namespace zelvane::test {

/// How the model answers one request.
enum class ModelMood {
    echo,      ///< each line, as `LlamaScript::translate` has it
    dropLine,  ///< without the last line, if there are two or more
    addLine,   ///< with a line too many
    repeat,    ///< one line again and again
    think,     ///< thoughts in their tags, then the answer
    thinkCut,  ///< thoughts that never end
    fence,     ///< the answer in a code fence
    reasoning, ///< the answer in the field for thoughts
    blank,     ///< nothing
    refuse,    ///< 503
    notJson,   ///< 200 with something else
    noChoices, ///< 200 with JSON of another shape
    cutOff,    ///< half of the answer, then the connection is closed
    die,       ///< half of the answer, then the server is gone
    silence,   ///< never
};

/// What a test asks of the server besides its arguments. Read from the file `llama-script.json`
/// beside the program's path as it was called, or from the variable ZELVANE_FAKE_LLAMA.
struct LlamaScript
{
    std::chrono::milliseconds listenAfter{15};
    std::chrono::milliseconds loadFor{20}; ///< from the moment of listening
    bool neverReady = false;
    bool diesWithGpu = false; ///< while loading, if any layers go there
    bool diesLoading = false; ///< in any case
    bool ignoresTerminate = false;
    /// Written to the log at each request, beside the usual half KiB.
    qsizetype logFlood = 0;
    std::chrono::milliseconds answerAfter{0};
    /// One for each request; the last one stays. Never empty.
    QList<ModelMood> moods{ModelMood::echo};
    QString prefix; ///< before each line that `translations` doesn't have
    QHash<QString, QString> translations;
    /// A file to which each start, request and ordinary end is appended as a line of JSON.
    QString record;

    [[nodiscard]] QString translate(const QString& line) const;

    /// Or a sentence about what is wrong.
    [[nodiscard]] static std::expected<LlamaScript, QString> parse(const QByteArray& json);
    /// The script for the program at `path`; the plain one if there is none.
    [[nodiscard]] static std::expected<LlamaScript, QString> find(const QString& path);
};

} // namespace zelvane::test
