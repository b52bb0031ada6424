#pragma once

#include "ui/style/Theme.h"

#include <QPlainTextEdit>
#include <QWidget>

namespace zelvane {

class SlimScrollBar;

/// How high a text area is.
enum class WellHeight {
    /// As high as its text, up to a limit.
    text,
    /// As high as there is room.
    fill,
};

/// A text area on an inset, rounded background. Texts of any size stay fluid.
class TextWell final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the well.
    explicit TextWell(const Theme& theme, WellHeight height, QWidget* parent = nullptr);
    explicit TextWell(const Theme& theme, QWidget* parent = nullptr)
        : TextWell(theme, WellHeight::text, parent)
    {
    }

    /// Shows a text that can be selected and copied, but not changed.
    void setReadOnlyText(const QString& text);
    /// Shows a text that the user may change.
    void setEditableText(const QString& text);

    /// The text as it is now. It is put together anew at each call.
    [[nodiscard]] QString text() const;
    /// Whether the text is nothing but white space. Quick, however long the text is.
    [[nodiscard]] bool isBlank() const;

    /// Shown while there is no text.
    void setPlaceholder(const QString& placeholder);

    /// Beyond this height of the whole well the text scrolls.
    void setMaximumSectionHeight(int height);

    /// Stands within a card: as round as a control, since its corners lie inside those of the card.
    void setInCard(bool isInCard);

    /// What a screen reader says of the text area.
    void setLabel(const QString& label);

    [[nodiscard]] QPlainTextEdit& editor() const { return *m_editor; }
    [[nodiscard]] SlimScrollBar& scrollBar() const { return *m_scrollBar; }

    [[nodiscard]] bool hasHeightForWidth() const override { return m_height == WellHeight::text; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user has changed the text, or the program has.
    void textChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void connectScrollBar();
    void restyle();
    [[nodiscard]] double cornerRadius() const;

    const Theme& m_theme;
    WellHeight m_height;
    // Both are owned by Qt's tree.
    QPlainTextEdit* m_editor;
    SlimScrollBar* m_scrollBar;
    QString m_text;
    int m_maximumHeight = QWIDGETSIZE_MAX;
    bool m_isInCard = false;
};

} // namespace zelvane
