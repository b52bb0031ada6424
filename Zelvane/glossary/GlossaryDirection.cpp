#include "glossary/GlossaryDirection.h"

namespace zelvane {

QString glossaryEdition()
{
    return QStringLiteral("wikdict-2_2026-06");
}

QString GlossaryDirection::key() const
{
    return languageBase(from.code) + u'-' + languageBase(to.code);
}

QString glossaryFolder(const QString& applicationSupport)
{
    return applicationSupport + QStringLiteral("/glossaries/") + glossaryEdition();
}

QString glossaryFile(const QString& applicationSupport, const QString& directionKey)
{
    return glossaryFolder(applicationSupport) + u'/' + directionKey + QStringLiteral(".tsv");
}

} // namespace zelvane
