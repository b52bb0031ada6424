#include "ui/language/SearchableLanguagePicker.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include <cmath>

namespace zelvane {

namespace {

constexpr int contentInset = 8;
constexpr int rowsOfAPage = 7;

} // namespace

SearchableLanguagePicker::SearchableLanguagePicker(const Theme& theme, LanguagePickerChoice choice,
                                                   int width, QWidget* parent)
    : PickerButton(theme, parent)
    , m_choice(std::move(choice))
{
    setPreferredWidth(width);
    keepTranslated(*this, [this] { valueChanged(); });
}

SearchableLanguagePicker::~SearchableLanguagePicker() = default;

void SearchableLanguagePicker::setSelection(const QString& language)
{
    if (m_selection != language) {
        m_selection = language;
        valueChanged();
    }
}

void SearchableLanguagePicker::setChoice(const LanguagePickerChoice& choice)
{
    m_choice = choice;
    valueChanged();
}

QString SearchableLanguagePicker::valueText() const
{
    return m_choice.displayText(m_selection);
}

int SearchableLanguagePicker::widestText() const
{
    return int(std::ceil(QFontMetricsF(font()).horizontalAdvance(valueText())));
}

bool SearchableLanguagePicker::isOpen() const
{
    return m_popover && m_popover->isVisible();
}

void SearchableLanguagePicker::togglePopup()
{
    if (isOpen()) {
        closePopup();
    } else {
        open();
    }
}

void SearchableLanguagePicker::open()
{
    const SheetLayoutTokens sheets = theme().tokens().sheets();
    m_popover = new Popover(theme(), this, theme().tokens().wellRadius());
    m_popover->setAttribute(Qt::WA_DeleteOnClose);
    m_popover->setAccessibleName(accessibleName());
    m_popover->setWindowTitle(accessibleName());
    m_popover->setContent(makeContent());
    m_popover->setContentSize({qRound(sheets.pickerWidth), qRound(sheets.pickerHeight)});
    m_popover->openAt(QRect(mapToGlobal(QPoint(0, 0)), size()));
    showRows();
    m_search->setFocus(Qt::PopupFocusReason);
}

void SearchableLanguagePicker::closePopup()
{
    if (m_popover) {
        m_popover->close();
    }
}

QWidget* SearchableLanguagePicker::makeContent()
{
    auto* content = new QWidget;
    m_search = new SearchField(theme());
    m_search->setPrompt(localizedText(QStringLiteral("Search or type custom…")));
    m_search->installEventFilter(this);
    m_list = new OptionList(theme());
    m_list->setAccessibleName(accessibleName());
    m_nothing = new ThemedLabel(theme(), &TypographyTokens::bodyHint, TextTone::secondary);
    m_nothing->setText(localizedText(QStringLiteral("No matches")));
    m_nothing->setAlignment(Qt::AlignHCenter);

    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(contentInset, contentInset, contentInset, contentInset);
    layout->setSpacing(contentInset - 2);
    layout->addWidget(m_search);
    layout->addWidget(m_nothing, 0, Qt::AlignTop);
    layout->addWidget(m_list, 1);
    connect(m_search, &QLineEdit::textChanged, this, &SearchableLanguagePicker::showRows);
    connect(m_list, &OptionList::chosen, this, [this](int row) { choose(m_rows[row].value); });
    return content;
}

void SearchableLanguagePicker::showRows()
{
    m_rows = m_choice.rows(m_search->text());
    m_walked = false;
    QList<ListOption> options;
    int selected = -1;
    for (const LanguagePickerRow& row : std::as_const(m_rows)) {
        const bool isSelection = !row.isCustom && row.value == m_selection;
        if (isSelection) {
            selected = int(options.size());
        }
        options.append({row.text, row.isCustom ? QStringLiteral("plus.circle") : QString(),
                        isSelection ? QStringLiteral("checkmark") : QString()});
    }
    m_list->setOptions(options);
    m_list->setVisible(!options.isEmpty());
    m_nothing->setVisible(options.isEmpty());
    if (selected >= 0) {
        m_list->setCurrentRow(selected);
    }
}

bool SearchableLanguagePicker::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_search || event->type() != QEvent::KeyPress) {
        return PickerButton::eventFilter(watched, event);
    }
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Down:
        moveCurrent(1);
        return true;
    case Qt::Key_Up:
        moveCurrent(-1);
        return true;
    case Qt::Key_PageDown:
        moveCurrent(rowsOfAPage);
        return true;
    case Qt::Key_PageUp:
        moveCurrent(-rowsOfAPage);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        chooseByReturn();
        return true;
    default:
        return false;
    }
}

void SearchableLanguagePicker::moveCurrent(int rows)
{
    if (m_list->count() == 0) {
        return;
    }
    const int next = std::clamp(m_list->currentRow() + rows, 0, m_list->count() - 1);
    m_list->setCurrentRow(next);
    m_walked = true;
}

void SearchableLanguagePicker::chooseByReturn()
{
    if (m_walked && m_list->currentRow() >= 0) {
        choose(m_rows[m_list->currentRow()].value);
        return;
    }
    if (const QString value = m_choice.valueForReturn(m_search->text()); !value.isEmpty()) {
        choose(value);
    } else if (m_search->text().isEmpty()) {
        closePopup();
    }
}

void SearchableLanguagePicker::choose(const QString& value)
{
    const bool changes = value != m_selection;
    setSelection(value);
    closePopup();
    if (changes) {
        Q_EMIT selectionChosen(value);
    }
}

} // namespace zelvane
