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

TextTone toneFor(Availability availability)
{
    switch (availability) {
    case Availability::unknown:
        return TextTone::secondary;
    case Availability::available:
        return TextTone::success;
    case Availability::missing:
        return TextTone::warning;
    }
    Q_UNREACHABLE();
}

} // namespace

PermissionView::PermissionView(PermissionModel& model, const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_model(model)
    , m_theme(theme)
    , m_layout(new QVBoxLayout(this))
    , m_grantedCard(new Card(theme))
    , m_granted(new FormRow(theme))
    , m_banner(new Banner(theme))
    , m_request(new TextButton(theme, ControlKind::bordered))
    , m_relaunch(new TextButton(theme, ControlKind::prominent))
    , m_capabilities(new Section(theme))
    , m_commandSection(new Section(theme))
    , m_command(new FormRow(theme))
    , m_copy(new TextButton(theme, ControlKind::bordered))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->addWidget(m_grantedCard);
    m_layout->addWidget(m_banner);
    m_layout->addWidget(m_capabilities);
    m_layout->addWidget(m_commandSection);
    m_layout->addStretch(1);
    m_grantedCard->addRow(m_granted);
    m_granted->setSymbol(QStringLiteral("checkmark.circle.fill"), TextTone::success);
    auto* buttons = new QWidget;
    auto* column = new QVBoxLayout(buttons);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_relaunch);
    column->addWidget(m_request);
    m_banner->addButton(buttons);
    makeRows();
    makeCommand();

    connect(m_request, &QAbstractButton::clicked, &model, &PermissionModel::request);
    connect(m_relaunch, &QAbstractButton::clicked, &model, &PermissionModel::relaunch);
    connect(m_copy, &QAbstractButton::clicked, &model, &PermissionModel::copyCommand);
    connect(&model, &PermissionModel::changed, this, &PermissionView::update);
    keepStyled(*this, theme,
               [this] { m_layout->setSpacing(qRound(m_theme.tokens().spacing().xl)); });
    keepTranslated(*this, [this] { update(); });
}

void PermissionView::makeRows()
{
    for (qsizetype i = 0; i < m_model.rows().size(); ++i) {
        const Row row{new FormRow(m_theme), new Badge(m_theme, TextTone::secondary)};
        row.form->addControl(row.badge);
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
    updateState();
    updateRows();
    updateCommand();
}

void PermissionView::updateState()
{
    const bool granted = m_model.state() == AccessibilityPermission::State::granted;
    m_grantedCard->setVisible(granted);
    m_granted->setTitle(m_model.headline());
    m_granted->setNote(m_model.explanation());
    m_banner->setVisible(!granted);
    m_banner->setTexts(m_model.headline(), m_model.explanation());
    setButtonText(*m_relaunch, localizedText(QStringLiteral("Relaunch Zelvane Desk")));
    m_relaunch->setVisible(m_model.offersRelaunch());
    setButtonText(*m_request, localizedText(QStringLiteral("Request Permission…")));
    m_request->setVisible(m_model.offersRequest());
}

void PermissionView::updateRows()
{
    m_capabilities->setTitle(localizedText(QStringLiteral("What this session offers")));
    const QList<CapabilityRow> rows = m_model.rows();
    for (qsizetype i = 0; i < rows.size(); ++i) {
        m_rows[i].form->setTitle(rows[i].title);
        m_rows[i].form->setNote(rows[i].advice);
        m_rows[i].badge->setText(rows[i].state);
        m_rows[i].badge->setTone(toneFor(rows[i].availability));
    }
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
