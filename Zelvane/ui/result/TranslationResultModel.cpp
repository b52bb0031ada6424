#include "ui/result/TranslationResultModel.h"

#include "settings/Localization.h"

namespace zelvane {

namespace {

/// The token's value at which the base widths below hold.
constexpr double neutralResultWidth = 500;

struct ResultSize
{
    int baseWidth;
    int sectionHeight;
};

ResultSize resultSize(TranslationWindowSize size)
{
    switch (size) {
    case TranslationWindowSize::extraSmall:
        return {400, 90};
    case TranslationWindowSize::small:
        return {460, 115};
    case TranslationWindowSize::medium:
        return {520, 140};
    case TranslationWindowSize::large:
        return {660, 190};
    case TranslationWindowSize::extraLarge:
        return {800, 250};
    }
    Q_UNREACHABLE();
}

} // namespace

int resultWidth(TranslationWindowSize size, const SheetLayoutTokens& tokens)
{
    return qRound(resultSize(size).baseWidth + tokens.resultWidth - neutralResultWidth);
}

int resultSectionHeight(TranslationWindowSize size)
{
    return resultSize(size).sectionHeight;
}

TranslationResultModel::TranslationResultModel(TranslationResult result,
                                               std::function<void(const QString&)> writeToClipboard)
    : m_result(std::move(result))
    , m_writeToClipboard(std::move(writeToClipboard))
{
}

void TranslationResultModel::copy()
{
    m_writeToClipboard(m_result.translated);
    m_copied = true;
}

QString TranslationResultModel::copyLabel() const
{
    return localizedText(m_copied ? QStringLiteral("Copied") : QStringLiteral("Copy"));
}

QString TranslationResultModel::statusText() const
{
    return m_copied ? localizedText(QStringLiteral("Copied")) : QString();
}

} // namespace zelvane
