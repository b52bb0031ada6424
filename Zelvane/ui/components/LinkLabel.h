#pragma once

#include "ui/style/Theme.h"

#include <QAbstractButton>
#include <QUrl>

namespace zelvane {

/// A text that opens a page in the user's browser.
class LinkLabel final : public QAbstractButton
{
    Q_OBJECT

public:
    /// `theme` must outlive the label.
    explicit LinkLabel(const Theme& theme, QWidget* parent = nullptr);

    /// `text` is what a screen reader says as well; the address is in the tool tip.
    void setLink(const QString& text, const QUrl& address);
    [[nodiscard]] const QUrl& address() const { return m_address; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const Theme& m_theme;
    QUrl m_address;
};

} // namespace zelvane
