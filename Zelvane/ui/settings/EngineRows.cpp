#include "ui/settings/EngineRows.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"
#include "ui/settings/EngineProgressLines.h"
#include "ui/settings/SettingsPage.h"

#include <QEvent>
#include <QVBoxLayout>

#include <utility>

namespace zelvane {

namespace {

constexpr int rowGap = 8;

} // namespace

EngineHeadline engineHeadline(const EngineStatus& status, qint64 sizeBytes)
{
    if (std::holds_alternative<engine_status::Installing>(status)) {
        return {localizedText(QStringLiteral("Installing offline engine…")), {}};
    }
    if (const auto* failed = std::get_if<engine_status::Failed>(&status)) {
        return {localizedText(QStringLiteral("Offline install failed")), failed->text};
    }
    if (std::holds_alternative<engine_status::Ready>(status)) {
        return {localizedText(QStringLiteral("Offline engine ready")), byteCountText(sizeBytes)};
    }
    return {localizedText(QStringLiteral("Offline engine not installed")),
            byteCountText(sizeBytes)};
}

EngineRows::EngineRows(const Theme& theme, EngineControls controls)
    : m_controls(std::move(controls))
    , m_headline(new FormRow(theme))
    , m_install(new TextButton(theme, ControlKind::bordered))
    , m_delete(new TextButton(theme, ControlKind::destructive))
    , m_progress(new ProgressRow(theme))
    , m_failure(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::danger))
{
    m_headline->addControl(m_install);
    m_headline->addControl(m_delete);
    m_failure->setWordWrap(true);
    m_failure->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(rowGap);
    column->addWidget(m_headline);
    column->addWidget(m_failure);
    column->addWidget(m_progress);
    connect(m_install, &QAbstractButton::clicked, this, [this] { m_controls.install(); });
    connect(m_delete, &QAbstractButton::clicked, this, [this] { m_controls.deleteEngine(); });
    connect(m_progress, &ProgressRow::cancelRequested, this,
            [this] { m_controls.cancelInstall(); });
    keepTranslated(*this, [this] { update(); });
    watch();
}

bool EngineRows::event(QEvent* event)
{
    // Commands install and delete engines as well.
    if (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate) {
        m_controls.refresh();
    }
    return QWidget::event(event);
}

void EngineRows::watch()
{
    const EngineState& state = *m_controls.state;
    observe(this, QBindable<EngineStatus>(&state.status),
            [this](const EngineStatus&) { update(); });
    observe(this, QBindable<qint64>(&state.diskUsageBytes), [this](qint64) { update(); });
    observe(this, QBindable<std::optional<EngineDownloadProgress>>(&state.downloadProgress),
            [this](const std::optional<EngineDownloadProgress>&) { showProgress(); });
}

void EngineRows::update()
{
    const EngineState& state = *m_controls.state;
    const EngineStatus status = state.status;
    const bool installing = std::holds_alternative<engine_status::Installing>(status);
    const bool ready = std::holds_alternative<engine_status::Ready>(status);
    const bool failed = std::holds_alternative<engine_status::Failed>(status);
    const EngineHeadline shown = engineHeadline(status, m_controls.displaySizeBytes());
    m_headline->setVisible(!installing);
    m_headline->setTitle(shown.headline);
    m_headline->setNote(failed ? QString() : shown.detail);
    m_failure->setText(shown.detail);
    m_failure->setVisible(failed);
    setButtonText(*m_install, localizedText(ready ? QStringLiteral("Reinstall")
                                                  : QStringLiteral("Install Offline Engine…")));
    m_install->setSymbol(ready ? QString() : QStringLiteral("externaldrive.badge.plus"));
    m_delete->setVisible(ready);
    setButtonText(*m_delete, localizedText(QStringLiteral("Delete Offline Engine")));
    m_progress->setVisible(installing);
    m_progress->setMessage(shown.headline);
    m_progress->setCancelText(localizedText(QStringLiteral("Cancel")));
    m_progress->cancelButton().setAccessibleName(localizedText(QStringLiteral("Cancel")));
    showProgress();
}

void EngineRows::showProgress()
{
    const EngineStatus status = m_controls.state->status;
    const auto* installing = std::get_if<engine_status::Installing>(&status);
    if (!installing) {
        return;
    }
    m_progress->setNote(installing->message);
    m_progress->setFraction(installing->fraction);
    // The bar has room for other steps than the download; only that one is counted.
    const auto download = m_controls.state->downloadProgress.value();
    m_progress->setPercentage(download ? engineProgressPercentage(*download) : QString());
    m_progress->setDetails(download ? engineProgressLines(*download) : QList<SymbolLine>());
}

} // namespace zelvane
