#include "glossary/GlossaryStore.h"

#include "settings/LanguageNames.h"

#include <QDir>
#include <QFileInfo>

namespace zelvane {

namespace {

constexpr QLatin1StringView ending(".tsv");

} // namespace

GlossaryStore::GlossaryStore(QString folder, Load load)
    : m_shelf(std::move(folder), std::move(load), m_end.get_token())
{
}

GlossaryStore::~GlossaryStore()
{
    m_end.request_stop();
}

QCoro::Task<GlossaryStore::Matches> GlossaryStore::matches(QStringList lines, QString source,
                                                           QString target, std::stop_token stop)
{
    const auto look = [this, lines, source, target, stop] {
        return m_shelf.matches(lines, source, target, stop);
    };
    co_return co_await m_worker.run(look, stop);
}

QCoro::Task<void> GlossaryStore::invalidate(QString directionKey)
{
    const auto forget = [this, directionKey] { m_shelf.remove(directionKey); };
    co_await m_worker.run(forget, {});
}

GlossaryStore::Shelf::Shelf(QString folder, Load load, std::stop_token end)
    : m_folder(std::move(folder))
    , m_load(std::move(load))
    , m_end(std::move(end))
{
}

GlossaryStore::Matches GlossaryStore::Shelf::matches(const QStringList& lines,
                                                     const QString& source, const QString& target,
                                                     const std::stop_token& stop)
{
    Matches found(static_cast<size_t>(lines.size()));
    const auto language = resolveGlossaryLanguage(target);
    if (!language || stop.stop_requested()) {
        return found;
    }
    GlossaryDictionaries dictionaries = dictionariesFor(source, *language);
    if (dictionaries.empty()) {
        return found;
    }
    GlossaryMatcher matcher(std::move(dictionaries), *language);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (stop.stop_requested() || m_end.stop_requested()) {
            break; // nobody waits any more
        }
        found[static_cast<size_t>(i)] = matcher.match(lines[i]);
    }
    return found;
}

void GlossaryStore::Shelf::remove(const QString& directionKey)
{
    m_cache.erase(directionKey);
}

GlossaryDictionaries GlossaryStore::Shelf::dictionariesFor(const QString& source,
                                                           const GlossaryLanguage& target)
{
    const QString targetBase = languageBase(target.code);
    QList<GlossaryLanguage> sources;
    if (isAutoSource(source)) {
        for (const QString& code : installedSources(targetBase)) {
            sources += GlossaryLanguage{code, code};
        }
    } else if (const auto language = resolveGlossaryLanguage(source)) {
        sources += *language;
    }
    GlossaryDictionaries dictionaries;
    for (const GlossaryLanguage& from : std::as_const(sources)) {
        // A language has no dictionary into itself.
        if (languageBase(from.code) == targetBase) {
            continue;
        }
        if (Dictionary one = dictionary({from, target})) {
            dictionaries.push_back(std::move(one));
        }
    }
    return dictionaries;
}

/// In the order of their names, so that equals are decided alike on every machine.
QStringList GlossaryStore::Shelf::installedSources(const QString& targetBase) const
{
    const QString suffix = u'-' + targetBase + ending;
    QStringList sources;
    const QStringList names = QDir(m_folder).entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        if (name.endsWith(suffix) && name.size() > suffix.size()) {
            sources += name.chopped(suffix.size());
        }
    }
    return sources;
}

GlossaryStore::Shelf::Dictionary
GlossaryStore::Shelf::dictionary(const GlossaryDirection& direction)
{
    const QString key = direction.key();
    const QString path = m_folder + u'/' + key + ending;
    if (!QFileInfo::exists(path)) {
        m_cache.erase(key); // another process may have deleted it
        return nullptr;
    }
    if (const auto kept = m_cache.find(key); kept != m_cache.end()) {
        return kept->second;
    }
    try {
        const auto loaded = std::make_shared<const GlossaryDictionary>(m_load(path, m_end));
        m_cache.emplace(key, loaded);
        return loaded;
    } catch (const std::exception&) { // a lack of memory is one as well
        return nullptr;
    }
}

} // namespace zelvane
