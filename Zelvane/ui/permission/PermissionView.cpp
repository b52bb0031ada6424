#include "ui/permission/PermissionView.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"

#include <QVBoxLayout>

namespace zelvane {

namespace {

/// A button's text is its name as well: a row would name it after what the row is about.
void setButtonText(TextButton& button, const QString& text)
{
    button.setText(text);
    button.setAccessibleName(text);
}

StatusLight::State lightFor(Availability availability)
{
    switch (availability) {
    case Availability::unknown:
        return StatusLight::State::off;
    case Availability::available:
        return StatusLight::State::ready;
    case Availability::missing:
        return StatusLight::State::warning;
    }
    Q_UNREACHABLE();
}

} // namespace

PermissionView::PermissionView(PermissionModel& model, const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_model(model)
    , m_theme(theme)
    , m_layout(new QVBoxLayout(this))
    , m_state(new FormRow(theme))
    , m_relaunch(new TextButton(theme, ControlKind::prominent))
    , m_capabilities(new Section(theme))
    , m_commandSection(new Section(theme))
    , m_command(new FormRow(theme))
    , m_copy(new TextButton(theme, ControlKind::bordered))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->addWidget(makeHeader());
    m_layout->addWidget(m_capabilities);
    m_layout->addWidget(m_commandSection);
    m_layout->addStretch(1);
    makeRows();
    makeCommand();

    connect(m_relaunch, &QAbstractButton::clicked, &model, &PermissionModel::relaunch);
    connect(m_copy, &QAbstractButton::clicked, &model, &PermissionModel::copyCommand);
    connect(&model, &PermissionModel::changed, this, &PermissionView::update);
    keepStyled(*this, theme,
               [this] { m_layout->setSpacing(qRound(m_theme.tokens().spacing().xl)); });
    keepTranslated(*this, [this] { update(); });
}

QWidget* PermissionView::makeHeader()
{
    auto* card = new Card(m_theme);
    card->addRow(m_state);
    m_state->addControl(m_relaunch);
    return card;
}

void PermissionView::makeRows()
{
    for (qsizetype i = 0; i < m_model.rows().size(); ++i) {
        const Row row{new FormRow(m_theme), new StatusLight(m_theme)};
        row.form->addControl(row.light);
        m_capabilities->card().addRow(row.form);
        m_rows.append(row);
    }
}

void PermissionView::makeCommand()
{
    m_command->addControl(m_copy);
    m_commandSection->card().addRow(m_command);
    m_copy->setSymbol(QStringLiteral("doc.on.doc"));
}

void PermissionView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_model.setShown(true);
}

void PermissionView::hideEvent(QHideEvent* event)
{
    m_model.setShown(false);
    QWidget::hideEvent(event);
}

void PermissionView::update()
{
    const bool granted = m_model.state() == AccessibilityPermission::State::granted;
    m_state->setSymbol(granted ? QStringLiteral("checkmark.circle.fill")
                               : QStringLiteral("exclamationmark.triangle.fill"));
    m_state->setTitle(m_model.headline());
    m_state->setNote(m_model.explanation());
    setButtonText(*m_relaunch, localizedText(QStringLiteral("Relaunch Zelvane Desk")));
    m_relaunch->setVisible(m_model.offersRelaunch());

    m_capabilities->setTitle(localizedText(QStringLiteral("What this session offers")));
    const QList<CapabilityRow> rows = m_model.rows();
    for (qsizetype i = 0; i < rows.size(); ++i) {
        m_rows[i].form->setTitle(rows[i].title);
        m_rows[i].form->setNote(rows[i].advice);
        m_rows[i].light->setState(lightFor(rows[i].availability), rows[i].state);
    }
    updateCommand();
}

void PermissionView::updateCommand()
{
    m_commandSection->setVisible(m_model.offersCommand());
    m_commandSection->setTitle(localizedText(QStringLiteral("Bind a key yourself")));
    m_commandSection->setNote(localizedText(QStringLiteral(
        "Have your desktop's keyboard settings run this command at a key of your choice. It does "
        "what the shortcut of your first language pair does.")));
    m_command->setTitle(PermissionModel::command());
    m_copy->setAlternativeText(localizedText(QStringLiteral("Copied")));
    setButtonText(*m_copy, m_model.copied() ? localizedText(QStringLiteral("Copied"))
                                            : localizedText(QStringLiteral("Copy")));
}

} // namespace zelvane
