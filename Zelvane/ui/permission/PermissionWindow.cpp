#include "ui/permission/PermissionWindow.h"

#include "desktop/SettingsWindow.h"
#include "settings/Localization.h"
#include "ui/components/FocusRing.h"
#include "ui/components/Styling.h"
#include "ui/components/ThemedLabel.h"
#include "ui/permission/PermissionView.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

namespace zelvane {

namespace {

constexpr int pageWidth = 560;

} // namespace

PermissionWindow::PermissionWindow(PermissionModel& model, const Theme& theme)
    : m_theme(theme)
    , m_page(new QWidget)
    , m_area(new ScrollArea(theme))
{
    setObjectName(SettingsWindow::identifier());
    setAttribute(Qt::WA_QuitOnClose, false);

    auto* title = new ThemedLabel(theme, StyleFontRole::title2, TextTone::primary);
    auto* subtitle = new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary);
    subtitle->setWordWrap(true);
    auto* page = new QVBoxLayout(m_page);
    page->addWidget(title);
    page->addWidget(subtitle);
    page->addWidget(new PermissionView(model, theme));
    m_area->setContent(m_page);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_area);
    new FocusRing(theme, *this);

    keepTranslated(*this, [this, title, subtitle] {
        title->setText(localizedText(QStringLiteral("Accessibility")));
        subtitle->setText(
            localizedText(QStringLiteral("Permissions needed to read and replace selected text.")));
        setWindowTitle(title->text());
    });
    keepStyled(*this, theme, [this, page, subtitle] {
        const SpacingTokens spacing = m_theme.tokens().spacing();
        const int margin = qRound(spacing.xxl);
        page->setContentsMargins(margin, margin, margin, margin);
        page->setSpacing(qRound(spacing.xs));
        subtitle->setContentsMargins(0, 0, 0, qRound(spacing.md));
        followContent();
    });
    m_page->installEventFilter(this);
}

void PermissionWindow::fit()
{
    setMinimumWidth(pageWidth);
    ensurePolished();
    m_page->layout()->invalidate();
    m_page->layout()->activate();
    const int most = screen()->availableGeometry().height() - 80; // room for a title bar
    m_fittedHeight = std::min(m_page->layout()->totalHeightForWidth(width()), most);
    resize(width(), m_fittedHeight);
}

/// A user who has made the window higher or lower keeps it so.
void PermissionWindow::followContent()
{
    if (isVisible() && height() == m_fittedHeight) {
        fit();
    }
}

bool PermissionWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_page && event->type() == QEvent::LayoutRequest) {
        // Later, when the content has its new size.
        QMetaObject::invokeMethod(this, &PermissionWindow::followContent, Qt::QueuedConnection);
    }
    return QWidget::eventFilter(watched, event);
}

void PermissionWindow::showEvent(QShowEvent* event)
{
    if (m_fittedHeight == 0 && !event->spontaneous()) {
        resize(pageWidth, height());
        fit();
    }
    QWidget::showEvent(event);
}

void PermissionWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape || event->matches(QKeySequence::Close)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void PermissionWindow::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous()) {
        Q_EMIT disappeared();
    }
}

void PermissionWindow::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), m_theme.colors().window);
}

} // namespace zelvane
