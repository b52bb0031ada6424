#include "ui/glossary/GlossaryDownloadsView.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"
#include "ui/components/TabOrder.h"
#include "ui/settings/SettingsPage.h"
#include "ui/style/Symbols.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zelvane {

namespace {

constexpr int manualPickerWidth = 150;
constexpr int symbolSide = 16;

LanguagePickerChoice publishedLanguages()
{
    return {.options = GlossaryDownloadsModel::glossaryLanguageOptions(),
            .localizesLanguageNames = true,
            .allowsCustom = false};
}

} // namespace

/// One glossary, whatever is going on with it.
class GlossaryDownloadsView::Row final : public QWidget
{
public:
    Row(const Theme& theme, GlossaryDownloadsModel& model)
        : m_model(model)
        , m_form(new FormRow(theme))
        , m_spinner(new Spinner(theme))
        , m_button(new TextButton(theme, ControlKind::bordered))
    {
        m_form->addControl(m_spinner);
        m_form->addControl(m_button);
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, 0, 0);
        column->addWidget(m_form);
        connect(m_button, &QAbstractButton::clicked, this, [this] { press(); });
    }

    void show(const GlossaryRow& row)
    {
        m_row = row;
        m_form->setTitle(row.label);
        m_form->setNote(row.detail, row.isFailure ? TextTone::warning : TextTone::secondary);
        m_spinner->setVisible(row.isBusy);
        m_spinner->setAccessibleName(row.detail);
        m_button->setVisible(row.control != GlossaryRow::Control::none);
        m_button->setKind(row.control == GlossaryRow::Control::remove ? ControlKind::destructive
                                                                      : ControlKind::bordered);
        m_button->setText(buttonText());
        m_button->setAccessibleName(buttonText() + u' ' + row.label);
    }

private:
    [[nodiscard]] QString buttonText() const
    {
        switch (m_row.control) {
        case GlossaryRow::Control::none:
            return {};
        case GlossaryRow::Control::download:
            return localizedText(QStringLiteral("Download"));
        case GlossaryRow::Control::remove:
            return localizedText(QStringLiteral("Delete"));
        case GlossaryRow::Control::retry:
            return localizedText(QStringLiteral("Retry"));
        }
        Q_UNREACHABLE();
    }

    void press()
    {
        if (m_row.control == GlossaryRow::Control::remove) {
            m_model.remove(m_row.package);
        } else {
            m_model.install(m_row.package);
        }
    }

    GlossaryDownloadsModel& m_model;
    GlossaryRow m_row;
    // All owned by Qt's tree.
    FormRow* m_form;
    Spinner* m_spinner;
    TextButton* m_button;
};

GlossaryDownloadsView::GlossaryDownloadsView(const Theme& theme, const AppSettings& settings,
                                             GlossaryManager& manager)
    : m_theme(theme)
    , m_model(settings, manager)
    , m_proposed(new QWidget)
    , m_list(new QVBoxLayout)
    , m_source(new SearchableLanguagePicker(theme, publishedLanguages(), manualPickerWidth))
    , m_target(new SearchableLanguagePicker(theme, publishedLanguages(), manualPickerWidth))
    , m_download(new TextButton(theme, ControlKind::bordered))
    , m_problem(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::warning))
{
    m_problem->setWordWrap(true);
    // In a widget of their own, for screen readers find rows in the order of their making.
    auto* proposed = new QVBoxLayout(m_proposed);
    proposed->setContentsMargins(0, 0, 0, 0);
    proposed->addLayout(m_list);
    proposed->addWidget(new Divider(theme));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_proposed);
    column->addWidget(makeManualRow());
    column->addWidget(m_problem);
    connect(m_source, &SearchableLanguagePicker::selectionChosen, &m_model,
            &GlossaryDownloadsModel::setManualSource);
    connect(m_target, &SearchableLanguagePicker::selectionChosen, &m_model,
            &GlossaryDownloadsModel::setManualTarget);
    connect(m_download, &QAbstractButton::clicked, &m_model,
            &GlossaryDownloadsModel::installManual);
    connect(&m_model, &GlossaryDownloadsModel::changed, this, &GlossaryDownloadsView::update);
    keepStyled(*this, theme, [this, proposed, column] {
        const int gap = qRound(m_theme.tokens().spacing().md);
        proposed->setSpacing(gap);
        column->setSpacing(gap);
        m_list->setSpacing(gap);
    });
    keepTranslated(*this, [this] { retranslate(); });
}

GlossaryDownloadsView::~GlossaryDownloadsView() = default;

bool GlossaryDownloadsView::event(QEvent* event)
{
    if (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate) {
        m_model.refresh();
    }
    return QWidget::event(event);
}

QWidget* GlossaryDownloadsView::makeManualRow()
{
    auto* row = new QWidget;
    auto* line = new RowLayout(row);
    auto* pickers = new QHBoxLayout;
    auto* arrows = new QLabel;
    pickers->addWidget(m_source);
    pickers->addWidget(arrows);
    pickers->addWidget(m_target);
    pickers->addStretch(1);
    line->setContent(pickers);
    line->addWidget(m_download);
    keepStyled(*row, m_theme, [this, line, pickers, arrows] {
        const int gap = qRound(m_theme.tokens().spacing().sm);
        line->setSpacing(gap);
        pickers->setSpacing(gap);
        arrows->setPixmap(symbolPixmap(QStringLiteral("arrow.left.arrow.right"),
                                       m_theme.colors().secondaryText, symbolSide,
                                       devicePixelRatioF()));
    });
    return row;
}

void GlossaryDownloadsView::retranslate()
{
    m_source->setAccessibleName(localizedText(QStringLiteral("Source")));
    m_target->setAccessibleName(localizedText(QStringLiteral("Target")));
    setButtonText(*m_download, localizedText(QStringLiteral("Download")));
    update();
}

void GlossaryDownloadsView::addRows(qsizetype count)
{
    if (m_rows.size() >= count) {
        return;
    }
    while (m_rows.size() < count) {
        m_rows.append(new Row(m_theme, m_model));
        m_list->addWidget(m_rows.last());
    }
    tabInReadingOrder(*this);
}

void GlossaryDownloadsView::update()
{
    const QList<GlossaryRow> rows = m_model.rows();
    addRows(rows.size());
    m_proposed->setVisible(!rows.isEmpty());
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        m_rows[i]->setVisible(i < rows.size());
        if (i < rows.size()) {
            m_rows[i]->show(rows[i]);
        }
    }
    m_source->setSelection(m_model.manualSource());
    m_target->setSelection(m_model.manualTarget());
    m_download->setEnabled(m_model.canDownloadManual());
    m_problem->setText(m_model.manualProblem());
    m_problem->setVisible(!m_model.manualProblem().isEmpty());
}

} // namespace zelvane
