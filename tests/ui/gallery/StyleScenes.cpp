#include "ui/gallery/StyleScenes.h"

#include "settings/LanguageNames.h"
#include "ui/components/Buttons.h"
#include "ui/components/FocusRing.h"
#include "ui/components/Form.h"
#include "ui/components/Indicators.h"
#include "ui/components/ListRow.h"
#include "ui/components/Picker.h"
#include "ui/components/SegmentedControl.h"
#include "ui/components/Sheet.h"
#include "ui/components/Switch.h"
#include "ui/components/TextField.h"
#include "ui/components/TextWell.h"
#include "ui/gallery/Texts.h"
#include "ui/language/SearchableLanguagePicker.h"
#include "ui/style/Symbols.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QPainter>

namespace zelvane::gallery {

namespace {

/// How a control is on show.
enum class Look {
    normal,
    hovered,
    pressed,
    focused,
    disabled,
};

struct Column
{
    Look look;
    QString title;
};

QList<Column> columns()
{
    return {{Look::normal, QStringLiteral("Normal")},
            {Look::hovered, QStringLiteral("Pointer")},
            {Look::pressed, QStringLiteral("Pressed")},
            {Look::focused, QStringLiteral("Keyboard")},
            {Look::disabled, QStringLiteral("Disabled")}};
}

/// The ground of a table.
class Page final : public QWidget
{
public:
    explicit Page(const Theme& theme)
        : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
        , m_theme(theme)
        , m_rings(*this)
    {
        move(160, 40);
    }

    void ring(QWidget* widget) { m_ringed.append(widget); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter(this).fillRect(rect(), m_theme.colors().window);
    }

    void resizeEvent(QResizeEvent*) override
    {
        m_rings.setGeometry(rect());
        m_rings.raise();
    }

private:
    /// A window has one ring at a time; a table shows many.
    class Rings final : public QWidget
    {
    public:
        explicit Rings(Page& page)
            : QWidget(&page)
            , m_page(page)
        {
            setAttribute(Qt::WA_TransparentForMouseEvents);
        }

    protected:
        void paintEvent(QPaintEvent*) override
        {
            QPainter painter(this);
            for (const QWidget* widget : std::as_const(m_page.m_ringed)) {
                paintFocusRing(painter, QRect(widget->mapTo(&m_page, QPoint(0, 0)), widget->size()),
                               focusRadius(*widget, m_page.m_theme), m_page.m_theme);
            }
        }

    private:
        Page& m_page;
    };

    const Theme& m_theme;
    QList<QWidget*> m_ringed;
    Rings m_rings;
};

void putInto(Look look, QWidget& control, Page& page)
{
    auto* button = qobject_cast<QAbstractButton*>(&control);
    switch (look) {
    case Look::normal:
        break;
    case Look::hovered:
        control.setAttribute(Qt::WA_UnderMouse);
        if (auto* row = qobject_cast<ListRow*>(&control)) {
            QEnterEvent enter({}, {}, {});
            QCoreApplication::sendEvent(row, &enter);
        }
        break;
    case Look::pressed:
        if (button) {
            control.setAttribute(Qt::WA_UnderMouse);
            button->setDown(true);
        }
        break;
    case Look::focused:
        page.ring(&control);
        break;
    case Look::disabled:
        control.setEnabled(false);
        break;
    }
}

class PageExhibit final : public Exhibit
{
public:
    explicit PageExhibit(std::unique_ptr<Page> page)
        : m_page(std::move(page))
    {
        m_page->adjustSize();
        if (const int fixed = m_page->maximumWidth(); fixed < QWIDGETSIZE_MAX) {
            m_page->setFixedHeight(m_page->layout()->totalHeightForWidth(fixed));
        }
        m_page->show();
        m_page->raise();
    }

    [[nodiscard]] QWidget* window() override { return m_page.get(); }

private:
    std::unique_ptr<Page> m_page;
};

using MakeControl = std::function<QWidget*(const Theme&)>;

struct TableRow
{
    QString title;
    MakeControl make;
    /// Whether being pressed has a look of its own.
    bool canBePressed = true;
};

/// A table with one row for each kind of control, and one column for each state.
Scene table(const QString& name, const QList<TableRow>& rows)
{
    return {QStringLiteral("style-") + name, [rows](const Stage& stage) {
                auto page = std::make_unique<Page>(stage.theme);
                auto* grid = new QGridLayout(page.get());
                grid->setContentsMargins(24, 20, 24, 24);
                grid->setHorizontalSpacing(24);
                grid->setVerticalSpacing(16);
                const auto label = [&](const QString& text, TextTone tone) {
                    auto* words = new ThemedLabel(stage.theme, StyleFontRole::caption, tone);
                    words->setText(text);
                    return words;
                };
                int column = 1;
                for (const Column& state : columns()) {
                    grid->addWidget(label(state.title, TextTone::secondary), 0, column++);
                }
                int line = 1;
                for (const TableRow& row : rows) {
                    grid->addWidget(label(row.title, TextTone::secondary), line, 0);
                    column = 1;
                    for (const Column& state : columns()) {
                        if (state.look != Look::pressed || row.canBePressed) {
                            QWidget* control = row.make(stage.theme);
                            grid->addWidget(control, line, column, Qt::AlignVCenter);
                            putInto(state.look, *control, *page);
                        }
                        ++column;
                    }
                    ++line;
                }
                return std::make_unique<PageExhibit>(std::move(page));
            }};
}

MakeControl textButton(ControlKind kind, const QString& text, const QString& symbol = {},
                       const QString& hint = {})
{
    return [=](const Theme& theme) {
        auto* button = new TextButton(theme, kind);
        button->setText(text);
        button->setSymbol(symbol);
        button->setKeyHint(hint);
        return button;
    };
}

Scene buttons()
{
    const auto iconButton = [](const QString& symbol, ControlKind kind, bool checked) {
        return [=](const Theme& theme) {
            auto* button = new IconButton(theme, symbol, nullptr, kind);
            button->setCheckable(checked);
            button->setChecked(checked);
            return button;
        };
    };
    return table(
        QStringLiteral("buttons"),
        {{QStringLiteral("Prominent"),
          textButton(ControlKind::prominent, QStringLiteral("Translate"), {},
                     QStringLiteral("⌃⏎"))},
         {QStringLiteral("Bordered"),
          textButton(ControlKind::bordered, QStringLiteral("Copy"), QStringLiteral("doc.on.doc"))},
         {QStringLiteral("Destructive"),
          textButton(ControlKind::destructive, QStringLiteral("Delete"))},
         {QStringLiteral("Plain"), textButton(ControlKind::plain, QStringLiteral("Website"),
                                              QStringLiteral("arrow.up.right"))},
         {QStringLiteral("Icon"),
          iconButton(QStringLiteral("xmark"), ControlKind::bordered, false)},
         {QStringLiteral("Icon, checked"),
          iconButton(QStringLiteral("pin.fill"), ControlKind::bordered, true)},
         {QStringLiteral("Icon, plain"),
          iconButton(QStringLiteral("minus.circle.fill"), ControlKind::plain, false)}});
}

Scene choices()
{
    const auto aSwitch = [](bool on) {
        return [on](const Theme& theme) {
            auto* control = new Switch(theme);
            control->setChecked(on);
            return control;
        };
    };
    const auto picker = [](const Theme& theme) {
        auto* control = new Picker(theme);
        control->setItems({QStringLiteral("Medium"), QStringLiteral("Extra large")});
        control->setCurrentIndex(0);
        return control;
    };
    const auto languagePicker = [](const Theme& theme) {
        auto* control = new SearchableLanguagePicker(theme, {offeredLanguages()}, 150);
        control->setSelection(QStringLiteral("Portuguese"));
        return control;
    };
    const auto segments = [](const Theme& theme) {
        auto* control = new SegmentedControl(theme);
        control->setSegments({QStringLiteral("Smart"), QStringLiteral("Fast")});
        return control;
    };
    return table(QStringLiteral("choices"), {{QStringLiteral("Switch, on"), aSwitch(true)},
                                             {QStringLiteral("Switch, off"), aSwitch(false)},
                                             {QStringLiteral("Picker"), picker},
                                             {QStringLiteral("Languages"), languagePicker},
                                             {QStringLiteral("Segments"), segments, false}});
}

Scene fields()
{
    const auto field = [](const QString& text, bool monospaced) {
        return [=](const Theme& theme) {
            auto* control = new TextField(theme);
            control->setMonospaced(monospaced);
            control->setText(text);
            control->setPlaceholderText(QStringLiteral("Custom model ID"));
            control->setFixedWidth(140);
            return control;
        };
    };
    const auto search = [](const QString& text) {
        return [=](const Theme& theme) {
            auto* control = new SearchField(theme);
            control->setPrompt(QStringLiteral("Search"));
            control->setText(text);
            control->setFixedWidth(140);
            return control;
        };
    };
    const auto well = [](const Theme& theme) {
        auto* control = new TextWell(theme);
        control->setReadOnlyText(QStringLiteral("The tide came in."));
        control->setFixedSize(140, 64);
        return control;
    };
    return table(QStringLiteral("fields"),
                 {{QStringLiteral("Text field"), field(QStringLiteral("gpt-5-mini"), true), false},
                  {QStringLiteral("Empty"), field({}, false), false},
                  {QStringLiteral("Search"), search({}), false},
                  {QStringLiteral("Searching"), search(QStringLiteral("Port")), false},
                  {QStringLiteral("Text well"), well, false}});
}

Scene rows()
{
    const auto row = [](bool selected) {
        return [selected](const Theme& theme) {
            auto* control = new ListRow(theme, QStringLiteral("Languages"));
            control->setSymbol(QStringLiteral("globe"));
            control->setCheckable(true);
            control->setChecked(selected);
            control->setFixedWidth(140);
            return control;
        };
    };
    const auto trailing = [](const Theme& theme) {
        auto* control = new ListRow(theme, QStringLiteral("German"));
        control->setTrailing({}, QStringLiteral("checkmark"));
        control->setFixedWidth(140);
        return control;
    };
    return table(QStringLiteral("rows"), {{QStringLiteral("Row"), row(false)},
                                          {QStringLiteral("Selected"), row(true)},
                                          {QStringLiteral("With a mark"), trailing}});
}

QWidget* labelled(const Theme& theme, QWidget* what, const QString& text)
{
    auto* holder = new QWidget;
    auto* line = new QHBoxLayout(holder);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(8);
    line->addWidget(what);
    auto* words = new ThemedLabel(theme, StyleFontRole::callout, TextTone::primary);
    words->setText(text);
    line->addWidget(words, 1);
    return holder;
}

/// What shows a state rather than takes a click.
Scene indicators()
{
    return {QStringLiteral("style-indicators"), [](const Stage& stage) {
                const Theme& theme = stage.theme;
                auto page = std::make_unique<Page>(theme);
                auto* grid = new QGridLayout(page.get());
                grid->setContentsMargins(24, 24, 24, 24);
                grid->setHorizontalSpacing(28);
                grid->setVerticalSpacing(16);
                int column = 0;
                const auto badge = [&](TextTone tone, const QString& text) {
                    auto* mark = new Badge(theme, tone);
                    mark->setText(text);
                    grid->addWidget(mark, 0, column++);
                };
                badge(TextTone::secondary, QStringLiteral("Offline"));
                badge(TextTone::link, QStringLiteral("New"));
                badge(TextTone::success, QStringLiteral("Ready"));
                badge(TextTone::warning, QStringLiteral("Waiting"));
                badge(TextTone::danger, QStringLiteral("Failed"));
                column = 0;
                const auto light = [&](StatusLight::State state, const QString& text) {
                    auto* lamp = new StatusLight(theme);
                    lamp->setState(state, text);
                    grid->addWidget(labelled(theme, lamp, text), 1, column++);
                };
                light(StatusLight::State::off, QStringLiteral("Off"));
                light(StatusLight::State::busy, QStringLiteral("Busy"));
                light(StatusLight::State::ready, QStringLiteral("Ready"));
                light(StatusLight::State::warning, QStringLiteral("Waiting"));
                light(StatusLight::State::failed, QStringLiteral("Failed"));
                grid->addWidget(labelled(theme, new Spinner(theme), QStringLiteral("Translating…")),
                                2, 0, 1, 2);
                auto* bar = new ProgressBar(theme);
                bar->setFraction(0.62);
                grid->addWidget(bar, 2, 2, 1, 2);
                auto* endless = new ProgressBar(theme);
                endless->setFraction(std::nullopt);
                grid->addWidget(endless, 2, 4);
                return std::make_unique<PageExhibit>(std::move(page));
            }};
}

QWidget* sampleForm(const Theme& theme)
{
    auto* form = new QWidget;
    auto* column = new QVBoxLayout(form);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(qRound(theme.tokens().spacing().lg));

    auto* banner = new Banner(theme);
    banner->setTexts(QStringLiteral("Accessibility permission required"),
                     QStringLiteral("Hotkeys and in-place translation need Accessibility before "
                                    "they can read selected text."));
    auto* request = new TextButton(theme, ControlKind::bordered);
    request->setText(QStringLiteral("Open"));
    banner->addButton(request);
    column->addWidget(banner);

    auto* section = new Section(theme);
    section->setTitle(QStringLiteral("Behavior"));
    section->setNote(QStringLiteral(
        "Press once to replace the selected text; press twice within 1 second to replace it and "
        "also open the translation window."));
    auto* replace = new FormRow(theme);
    replace->setTitle(QStringLiteral("Auto-replace translated text"));
    auto* on = new Switch(theme);
    on->setChecked(true);
    replace->addControl(on);
    section->card().addRow(replace);
    auto* menu = new FormRow(theme);
    menu->setTitle(QStringLiteral("⌥ + right-click translation menu"));
    menu->setNote(QStringLiteral("Ordinary right-click is unchanged."));
    menu->addControl(new Switch(theme));
    section->card().addRow(menu);
    auto* size = new FormRow(theme);
    size->setTitle(QStringLiteral("Translation Result Popup Size"));
    auto* picker = new Picker(theme);
    picker->setItems({QStringLiteral("Extra Small"), QStringLiteral("Medium")});
    picker->setCurrentIndex(1);
    size->addControl(picker);
    section->card().addRow(size);
    column->addWidget(section);

    auto* engine = new Section(theme);
    engine->setTitle(QStringLiteral("Offline engine"));
    auto* progress = new ProgressRow(theme);
    progress->setMessage(QStringLiteral("Installing offline engine…"));
    progress->setFraction(0.41);
    progress->setNote(QStringLiteral("Downloading Hy-MT2 model…"));
    progress->setDetails(
        {{QStringLiteral("arrow.down.circle"), QStringLiteral("1.9 GB of 4.6 GB downloaded")},
         {QStringLiteral("speedometer"), QStringLiteral("24.1 MB/s")}});
    progress->setCancelText(QStringLiteral("Cancel"));
    engine->card().addRow(progress);
    column->addWidget(engine);
    return form;
}

Scene form()
{
    return {QStringLiteral("style-form"), [](const Stage& stage) {
                auto page = std::make_unique<Page>(stage.theme);
                auto* column = new QVBoxLayout(page.get());
                column->setContentsMargins(24, 24, 24, 24);
                column->addWidget(sampleForm(stage.theme));
                page->setFixedWidth(600);
                return std::make_unique<PageExhibit>(std::move(page));
            }};
}

Scene sheet()
{
    return {QStringLiteral("style-sheet"), [](const Stage& stage) {
                const Theme& theme = stage.theme;
                auto page = std::make_unique<Page>(theme);
                auto* column = new QVBoxLayout(page.get());
                column->setContentsMargins(24, 24, 24, 24);
                column->addWidget(sampleForm(theme));
                page->setFixedWidth(600);
                auto* over = new Sheet(theme, *page);
                over->setTitle(QStringLiteral("API Key"));
                over->setSubtitle(QStringLiteral("Mistral"));
                auto* field = new TextField(theme);
                field->setPlaceholderText(QStringLiteral("Paste API key"));
                over->setContent(field);
                auto* cancel = over->addButton();
                cancel->setText(QStringLiteral("Cancel"));
                auto* save = over->addButton(ControlKind::prominent);
                save->setText(QStringLiteral("Save"));
                over->setCancelButton(cancel);
                over->setDefaultButton(save);
                auto exhibit = std::make_unique<PageExhibit>(std::move(page));
                over->present();
                return exhibit;
            }};
}

/// A list of languages with its picker.
class PickerExhibit final : public Exhibit
{
public:
    PickerExhibit(const Stage& stage, QString query)
        : m_page(stage.theme)
        , m_query(std::move(query))
    {
        auto* column = new QVBoxLayout(&m_page);
        column->setContentsMargins(24, 24, 24, 340);
        m_picker = new SearchableLanguagePicker(
            stage.theme, {.options = offeredLanguages(), .allowsCustom = true}, 220);
        m_picker->setSelection(QStringLiteral("German"));
        m_picker->setAccessibleName(QStringLiteral("Target"));
        column->addWidget(m_picker, 0, Qt::AlignLeft);
        m_page.setFixedWidth(320);
        m_page.adjustSize();
        m_page.show();
        m_page.raise();
    }

    [[nodiscard]] QWidget* window() override { return &m_page; }

    void takeStep() override
    {
        m_picker->togglePopup();
        m_picker->searchField()->setText(m_query);
    }

private:
    Page m_page;
    QString m_query;
    SearchableLanguagePicker* m_picker;
};

Scene pickerScene(const QString& name, const QString& query)
{
    return {QStringLiteral("style-languages-") + name,
            [query](const Stage& stage) { return std::make_unique<PickerExhibit>(stage, query); },
            true};
}

/// The roles of the type scale.
Scene type()
{
    return {QStringLiteral("style-type"), [](const Stage& stage) {
                auto page = std::make_unique<Page>(stage.theme);
                auto* grid = new QGridLayout(page.get());
                grid->setContentsMargins(24, 24, 24, 24);
                grid->setHorizontalSpacing(28);
                grid->setVerticalSpacing(8);
                int line = 0;
                for (const StyleFontRole role : allStyleFontRoles) {
                    auto* name = new ThemedLabel(stage.theme, StyleFontRole::monospacedCaption,
                                                 TextTone::secondary);
                    name->setText(rawValue(role));
                    auto* sample = new ThemedLabel(stage.theme, role, TextTone::primary);
                    sample->setText(QStringLiteral("Translation · Übersetzung · Перевод · अनुवाद · "
                                                   "翻译 · ترجمة"));
                    grid->addWidget(name, line, 0);
                    grid->addWidget(sample, line++, 1);
                }
                return std::make_unique<PageExhibit>(std::move(page));
            }};
}

/// Every symbol of the icon set with its name.
Scene symbols()
{
    return {QStringLiteral("style-symbols"), [](const Stage& stage) {
                auto page = std::make_unique<Page>(stage.theme);
                auto* grid = new QGridLayout(page.get());
                grid->setContentsMargins(24, 24, 24, 24);
                grid->setHorizontalSpacing(18);
                grid->setVerticalSpacing(14);
                constexpr int perLine = 4;
                int place = 0;
                for (const QString& name : symbolNames()) {
                    auto* picture = new QLabel;
                    picture->setPixmap(symbolPixmap(name, stage.theme.colors().text, 20,
                                                    page->devicePixelRatio()));
                    auto* words =
                        new ThemedLabel(stage.theme, StyleFontRole::caption, TextTone::secondary);
                    words->setText(name);
                    grid->addWidget(picture, place / perLine, 2 * (place % perLine));
                    grid->addWidget(words, place / perLine, 2 * (place % perLine) + 1);
                    ++place;
                }
                return std::make_unique<PageExhibit>(std::move(page));
            }};
}

} // namespace

QList<Scene> styleScenes()
{
    return {type(),
            symbols(),
            buttons(),
            choices(),
            fields(),
            rows(),
            indicators(),
            form(),
            sheet(),
            pickerScene(QStringLiteral("all"), {}),
            pickerScene(QStringLiteral("search"), QStringLiteral("port"))};
}

} // namespace zelvane::gallery
