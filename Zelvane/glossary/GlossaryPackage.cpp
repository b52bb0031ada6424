#include "glossary/GlossaryPackage.h"

#include "foundation/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace zelvane {

namespace {

const QString sourceKey = QStringLiteral("sourceCode");
const QString targetKey = QStringLiteral("targetCode");

std::expected<GlossaryPackage, QString> decodePackage(const QJsonObject& object)
{
    const auto source = resolveGlossaryLanguage(object.value(sourceKey).toString());
    const auto target = resolveGlossaryLanguage(object.value(targetKey).toString());
    if (!source || !target || languageBase(source->code) == languageBase(target->code)) {
        return std::unexpected(QStringLiteral("Invalid glossary package"));
    }
    return GlossaryPackage{*source, *target};
}

QString sortText(const GlossaryPackage& package)
{
    return package.source.name + QStringLiteral(" → ") + package.target.name;
}

} // namespace

QString GlossaryPackage::key() const
{
    const QString from = languageBase(source.code);
    const QString to = languageBase(target.code);
    return std::min(from, to) + u'-' + std::max(from, to);
}

std::array<GlossaryDirection, 2> GlossaryPackage::directions() const
{
    return {GlossaryDirection{source, target}, GlossaryDirection{target, source}};
}

const QStringList& glossarySupportedCodes()
{
    static const QStringList codes =
        QStringLiteral("bg ca cs da de el en es fi fr ga id it ja ku la lt mg nl no pl pt ru sv tr "
                       "zh")
            .split(u' ');
    return codes;
}

bool hasGlossaryData(const GlossaryLanguage& language)
{
    return glossarySupportedCodes().contains(languageBase(language.code));
}

void sortPackages(QList<GlossaryPackage>& packages, const QLocale& locale)
{
    std::ranges::sort(packages, [&](const auto& left, const auto& right) {
        return text::naturalOrder(sortText(left), sortText(right), locale) < 0;
    });
}

QByteArray encodePackages(const QList<GlossaryPackage>& packages)
{
    QJsonArray array;
    for (const GlossaryPackage& package : packages) {
        array.append(
            QJsonObject{{sourceKey, package.source.code}, {targetKey, package.target.code}});
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::expected<QList<GlossaryPackage>, QString> decodePackages(const QByteArray& json)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (!document.isArray()) {
        return std::unexpected(error.error == QJsonParseError::NoError
                                   ? QStringLiteral("Not a list of glossary packages")
                                   : error.errorString());
    }
    QList<GlossaryPackage> packages;
    for (const QJsonValue& element : document.array()) {
        const auto package = decodePackage(element.toObject());
        if (!package) {
            return std::unexpected(package.error());
        }
        packages += *package;
    }
    return packages;
}

} // namespace zelvane
