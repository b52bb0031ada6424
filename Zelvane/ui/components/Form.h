#pragma once

#include "ui/components/Buttons.h"
#include "ui/components/Indicators.h"
#include "ui/components/RowLayout.h"
#include "ui/components/SymbolLines.h"
#include "ui/components/ThemedLabel.h"

#include <QWidget>

#include <optional>

class QHBoxLayout;
class QVBoxLayout;

namespace zelvane {

class SlimScrollBar;

/// A hairline between rows.
class Divider final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the divider.
    explicit Divider(const Theme& theme, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override { return {1, 1}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
};

/// A raised, rounded ground for rows, with a hairline between those that show.
class Card final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the card.
    explicit Card(const Theme& theme, QWidget* parent = nullptr);

    /// Adds `row` below the others and takes it over.
    void addRow(QWidget* row);
    /// Puts `row` at `index`, counted over the rows that there are, and takes it over.
    void insertRow(int index, QWidget* row);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    const Theme& m_theme;
    QVBoxLayout* m_layout; ///< owned by Qt's tree
};

/// A part of a form: a title, a card with rows, and a note below it. Screen readers know it as a
/// group of that name.
class Section final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the section.
    explicit Section(const Theme& theme, QWidget* parent = nullptr);

    void setTitle(const QString& title);
    /// An explanation; none if it is empty.
    void setNote(const QString& note);

    [[nodiscard]] Card& card() { return *m_card; }

private:
    // All owned by Qt's tree.
    QVBoxLayout* m_layout;
    ThemedLabel* m_title;
    Card* m_card;
    ThemedLabel* m_note;
};

/// A row of a form: what it is about at its beginning, the control at its end. A control without a
/// name of its own is named after the row; a click on the row's text presses a switch.
class FormRow final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the row.
    explicit FormRow(const Theme& theme, QWidget* parent = nullptr);

    void setTitle(const QString& title);
    /// A second, smaller line under the title; none if it is empty.
    void setNote(const QString& note, TextTone tone = TextTone::secondary);
    /// A name of the icon set, before the title; empty for none.
    void setSymbol(const QString& name, TextTone tone = TextTone::secondary);
    /// Puts `control` at the end of the row and takes it over. The first one that isn't a mere text
    /// gets the row's name.
    void addControl(QWidget* control);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void restyle();
    void nameControl();

    const Theme& m_theme;
    // All owned by Qt's tree.
    RowLayout* m_layout;
    QHBoxLayout* m_words;
    QLabel* m_symbolLabel;
    ThemedLabel* m_title;
    ThemedLabel* m_note;
    QWidget* m_control = nullptr;
    QString m_symbol;
    TextTone m_symbolTone = TextTone::secondary;
    /// The name that the control was given here, which may be replaced.
    QString m_givenName;
};

/// How far something has come: a headline, a note and a button to end it, a bar, and details below.
class ProgressRow final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the row.
    explicit ProgressRow(const Theme& theme, QWidget* parent = nullptr);

    /// The headline, which is the bar's name as well.
    void setMessage(const QString& message);
    /// A smaller line below the headline; none if it is empty.
    void setNote(const QString& note);
    /// 0 to 1; nothing for work without a known end.
    void setFraction(std::optional<double> fraction);
    /// What stands beside the bar: the fraction in percent unless this says something else.
    void setPercentage(const QString& text);
    void setDetails(const QList<SymbolLine>& lines);
    /// What the button says; without a text there is none.
    void setCancelText(const QString& text);

    [[nodiscard]] TextButton& cancelButton() { return *m_cancel; }

Q_SIGNALS:
    void cancelRequested();

private:
    // All owned by Qt's tree.
    FormRow* m_head;
    ProgressBar* m_bar;
    ThemedLabel* m_percentage;
    SymbolLines* m_details;
    TextButton* m_cancel;
};

/// Something that the user ought to know of, with a symbol and a button to do something about it.
class Banner final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the banner.
    explicit Banner(const Theme& theme, QWidget* parent = nullptr);

    void setTexts(const QString& title, const QString& body);
    /// Puts `button` at the end and takes it over.
    void addButton(QWidget* button);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    // All owned by Qt's tree.
    RowLayout* m_layout;
    QHBoxLayout* m_words;
    QLabel* m_symbol;
    ThemedLabel* m_title;
    ThemedLabel* m_body;
};

} // namespace zelvane
