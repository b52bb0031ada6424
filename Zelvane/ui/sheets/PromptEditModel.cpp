#include "ui/sheets/PromptEditModel.h"

#include "foundation/Text.h"
#include "settings/FactorySettings.h"

#include <utility>

namespace zelvane {

PromptEditModel::PromptEditModel(QString pairLabel, const QString& initial)
    : m_pairLabel(std::move(pairLabel))
    , m_draft(text::isBlank(initial) ? defaultPromptTemplate() : initial)
{
}

void PromptEditModel::resetToDefault()
{
    m_draft = defaultPromptTemplate();
}

bool PromptEditModel::canSave() const
{
    return !text::isBlank(draft());
}

} // namespace zelvane
