#pragma once

#include <QString>

namespace zelvane {

/// The draft of an engine's key while it is edited. Needs no display.
class APIKeyEditModel
{
public:
    APIKeyEditModel(QString providerName, QString initial);

    [[nodiscard]] const QString& providerName() const { return m_providerName; }
    [[nodiscard]] const QString& draft() const { return m_draft; }
    void setDraft(const QString& draft) { m_draft = draft; }

    /// What saving hands on: the draft without white space at its ends. Empty clears the key.
    [[nodiscard]] QString keyToSave() const;

private:
    QString m_providerName;
    QString m_draft;
};

/// A key as it is shown: no more of it than its last four characters. `key` may have white space at
/// its ends.
[[nodiscard]] QString maskedKey(const QString& key);

} // namespace zelvane
