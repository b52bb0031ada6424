#pragma once

#include "foundation/TaskScope.h"
#include "pipeline/TranslationTrace.h"
#include "settings/AppSettings.h"

#include <QObject>
#include <QProperty>
#include <QSize>

#include <functional>
#include <stop_token>

namespace zelvane {

/// The size of the window's content in device-independent pixels.
[[nodiscard]] QSize manualWindowContentSize(TranslationWindowSize size);

/// The language into which a new window translates: that of the first pair that names one.
[[nodiscard]] QString defaultManualTarget(const QList<LanguagePair>& enabledPairs);

/// The translator into which the user types. Needs no display. Main thread.
///
/// The text itself stays in the editor, which may hold megabytes: the model is told whether there
/// is any, and takes it when it is to be translated.
class ManualTranslationModel final : public QObject
{
    Q_OBJECT

public:
    /// What the window asks of the rest of the program.
    struct Services
    {
        /// Translates with the prompt of the settings, whatever a pair has of its own.
        std::function<QCoro::Task<QString>(QString text, QString source, QString target,
                                           std::stop_token stop)>
            translate;
        std::function<void(const QString&)> writeToClipboard;
    };

    /// `settings` and `trace` must outlive this object. A translation that is on its way when the
    /// object goes is cancelled, which the trace notes.
    ManualTranslationModel(const AppSettings& settings, TranslationTrace& trace, Services services);
    ~ManualTranslationModel() override;

    [[nodiscard]] QString sourceLanguage() const { return m_sourceLanguage; }
    void setSourceLanguage(const QString& language) { m_sourceLanguage = language; }
    [[nodiscard]] QBindable<QString> bindableSourceLanguage() const { return &m_sourceLanguage; }

    [[nodiscard]] QString targetLanguage() const { return m_targetLanguage; }
    void setTargetLanguage(const QString& language) { m_targetLanguage = language; }
    [[nodiscard]] QBindable<QString> bindableTargetLanguage() const { return &m_targetLanguage; }

    /// Whether the editor holds nothing but white space.
    [[nodiscard]] bool isSourceBlank() const { return m_isSourceBlank; }
    void setSourceBlank(bool blank) { m_isSourceBlank = blank; }
    [[nodiscard]] QBindable<bool> bindableIsSourceBlank() const { return &m_isSourceBlank; }

    [[nodiscard]] QString translatedText() const { return m_translatedText; }
    [[nodiscard]] QBindable<QString> bindableTranslatedText() const { return &m_translatedText; }

    /// Empty while nothing is wrong.
    [[nodiscard]] QString errorText() const { return m_errorText; }
    [[nodiscard]] QBindable<QString> bindableErrorText() const { return &m_errorText; }

    [[nodiscard]] bool isTranslating() const { return m_isTranslating; }
    [[nodiscard]] QBindable<bool> bindableIsTranslating() const { return &m_isTranslating; }

    [[nodiscard]] bool isPinned() const { return m_isPinned; }
    void setPinned(bool pinned) { m_isPinned = pinned; }
    [[nodiscard]] QBindable<bool> bindableIsPinned() const { return &m_isPinned; }

    /// Whether the translation on show has been copied from here.
    [[nodiscard]] bool copied() const { return m_copied; }
    [[nodiscard]] QBindable<bool> bindableCopied() const { return &m_copied; }

    [[nodiscard]] bool canTranslate() const { return !m_isTranslating && !m_isSourceBlank; }
    [[nodiscard]] bool canCopy() const { return !translatedText().isEmpty(); }

    /// Does nothing while a translation is on its way.
    void translate(const QString& text);
    void copy();

    /// The line at the bottom, in the interface language.
    [[nodiscard]] QString statusText() const;

private:
    [[nodiscard]] QCoro::Task<void> run(QString text, QString source, QString target,
                                        std::stop_token stop);
    void beginTrace(const QString& text);

    const AppSettings& m_settings;
    TranslationTrace& m_trace;
    Services m_services;
    TaskScope m_translation;
    Q_OBJECT_BINDABLE_PROPERTY(ManualTranslationModel, QString, m_sourceLanguage)
    Q_OBJECT_BINDABLE_PROPERTY(ManualTranslationModel, QString, m_targetLanguage)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ManualTranslationModel, bool, m_isSourceBlank, true)
    Q_OBJECT_BINDABLE_PROPERTY(ManualTranslationModel, QString, m_translatedText)
    Q_OBJECT_BINDABLE_PROPERTY(ManualTranslationModel, QString, m_errorText)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ManualTranslationModel, bool, m_isTranslating, false)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ManualTranslationModel, bool, m_isPinned, false)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ManualTranslationModel, bool, m_copied, false)
};

} // namespace zelvane
