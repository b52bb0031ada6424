#pragma once

#include "ui/style/Theme.h"

#include <QPlainTextEdit>
#include <QWidget>

namespace zelvane {

class SlimScrollBar;

/// A text area on an inset, rounded background, as high as its text up to a limit.
class TextWell final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the well.
    explicit TextWell(const Theme& theme, QWidget* parent = nullptr);

    /// Shows a text that can be selected and copied, but not changed.
    void setReadOnlyText(const QString& text);

    /// Beyond this height of the whole well the text scrolls.
    void setMaximumSectionHeight(int height);

    /// What a screen reader says of the text area.
    void setLabel(const QString& label);

    [[nodiscard]] QPlainTextEdit& editor() const { return *m_editor; }
    [[nodiscard]] SlimScrollBar& scrollBar() const { return *m_scrollBar; }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void connectScrollBar();
    void restyle();

    const Theme& m_theme;
    // Both are owned by Qt's tree.
    QPlainTextEdit* m_editor;
    SlimScrollBar* m_scrollBar;
    QString m_text;
    int m_maximumHeight = QWIDGETSIZE_MAX;
};

} // namespace zelvane
