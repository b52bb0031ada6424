#pragma once

#include <QObject>
#include <QProperty>
#include <QString>

namespace zelvane {

/// The draft of a prompt while it is edited. Needs no display.
class PromptEditModel final : public QObject
{
    Q_OBJECT

public:
    /// `pairLabel` names what the prompt is for. A blank `initial` starts with the default prompt.
    PromptEditModel(QString pairLabel, const QString& initial);

    [[nodiscard]] const QString& pairLabel() const { return m_pairLabel; }

    /// Saved exactly as it stands.
    [[nodiscard]] QString draft() const { return m_draft; }
    void setDraft(const QString& draft) { m_draft = draft; }
    [[nodiscard]] QBindable<QString> bindableDraft() const { return &m_draft; }

    void resetToDefault();
    [[nodiscard]] bool canSave() const;

private:
    QString m_pairLabel;
    Q_OBJECT_BINDABLE_PROPERTY(PromptEditModel, QString, m_draft)
};

} // namespace zelvane
