#pragma once

#include "settings/LanguagePair.h"

#include <QCoroTask>
#include <QString>

#include <stop_token>

namespace zelvane {

/// Translates a text for a language pair, with whatever engine the settings name.
class TextTranslator
{
public:
    TextTranslator() = default;
    virtual ~TextTranslator() = default;
    Q_DISABLE_COPY_MOVE(TextTranslator)

    /// Called on the main thread, which it leaves free and on which it ends. Throws
    /// `TranslationError` or what the engine fails with.
    [[nodiscard]] virtual QCoro::Task<QString> translateText(QString text, LanguagePair pair,
                                                             std::stop_token stop) = 0;
};

} // namespace zelvane
