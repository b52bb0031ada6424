#pragma once

#include "foundation/Worker.h"
#include "glossary/GlossaryDictionary.h"
#include "glossary/GlossaryDirection.h"
#include "glossary/GlossaryMatcher.h"
#include "pipeline/Engines.h"

#include <functional>
#include <map>
#include <memory>

namespace zelvane {

/// The installed dictionaries, read when they are first asked for and kept from then on, while
/// their files are there.
///
/// Used on one thread, which must run an event loop and never waits: reading and looking up happen
/// one after the other on a thread of the store's own, so that no dictionary is read twice. Nothing
/// that goes wrong with a dictionary is an error: it has no matches then.
class GlossaryStore final : public GlossaryLookup
{
public:
    using Entry = GlossaryEntry;
    using Matches = std::vector<std::optional<GlossaryMatch>>;
    /// Reads the dictionary in a file, on the store's thread; throws what `loadGlossary` throws.
    using Load = std::function<GlossaryDictionary(const QString& path, const std::stop_token&)>;

    /// `folder` holds one file for each direction, named after its key. It need not exist.
    explicit GlossaryStore(QString folder, Load load = loadGlossary);
    /// Ends all waits with `CancellationError`, and what is being read or looked up shortly after.
    ~GlossaryStore() override;

    /// One optional match for each line, in order. `source` and `target` are names or codes of
    /// languages; a source to be detected means every installed one. Throws `CancellationError`
    /// only.
    [[nodiscard]] QCoro::Task<Matches> matches(QStringList lines, QString source, QString target,
                                               std::stop_token stop) override;

    /// Forgets the dictionary of a direction such as "de-en", whose file has been written or
    /// deleted: every call of `matches` from now on sees the file as it is. Ends when that is done.
    QCoro::Task<void> invalidate(QString directionKey);

private:
    /// What belongs to the store's thread alone.
    class Shelf
    {
    public:
        Shelf(QString folder, Load load, std::stop_token end);

        [[nodiscard]] Matches matches(const QStringList& lines, const QString& source,
                                      const QString& target, const std::stop_token& stop);
        void remove(const QString& directionKey);

    private:
        using Dictionary = std::shared_ptr<const GlossaryDictionary>;

        [[nodiscard]] GlossaryDictionaries dictionariesFor(const QString& source,
                                                           const GlossaryLanguage& target);
        [[nodiscard]] QStringList installedSources(const QString& targetBase) const;
        /// None if there is no such dictionary, or no use in it.
        [[nodiscard]] Dictionary dictionary(const GlossaryDirection& direction);

        QString m_folder;
        Load m_load;
        std::stop_token m_end;
        std::map<QString, Dictionary> m_cache;
    };

    std::stop_source m_end;
    Shelf m_shelf;
    Worker m_worker; // last: it ends first, and its calls use what stands above
};

} // namespace zelvane
