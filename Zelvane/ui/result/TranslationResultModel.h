#pragma once

#include "settings/AppSettings.h"
#include "ui/style/StyleTweaker.h"

#include <QObject>
#include <QProperty>
#include <QString>

#include <functional>

namespace zelvane {

/// The outcome of a translation as the result popup shows it.
struct TranslationResult
{
    QString original;
    QString translated;
    /// The timing report. Kept with the result, not shown.
    QString diagnostics;

    friend bool operator==(const TranslationResult&, const TranslationResult&) = default;
};

/// No popup is lower than this, in device-independent pixels.
inline constexpr int minimalResultHeight = 280;

/// The width of the popup in device-independent pixels.
[[nodiscard]] int resultWidth(TranslationWindowSize size, const SheetLayoutTokens& tokens);

/// The height beyond which each of the two texts scrolls.
[[nodiscard]] int resultSectionHeight(TranslationWindowSize size);

/// State and intent of the result popup. Needs no display.
class TranslationResultModel final : public QObject
{
    Q_OBJECT

public:
    /// `writeToClipboard` puts a text on the clipboard on the user's behalf.
    TranslationResultModel(TranslationResult result,
                           std::function<void(const QString&)> writeToClipboard);

    [[nodiscard]] const TranslationResult& result() const { return m_result; }

    /// Whether the translation has been copied from here.
    [[nodiscard]] bool copied() const { return m_copied; }
    [[nodiscard]] QBindable<bool> bindableCopied() { return &m_copied; }

    void copy();

    /// The texts that depend on the state, in the interface language.
    [[nodiscard]] QString copyLabel() const;
    [[nodiscard]] QString statusText() const;

private:
    TranslationResult m_result;
    std::function<void(const QString&)> m_writeToClipboard;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(TranslationResultModel, bool, m_copied, false)
};

} // namespace zelvane
