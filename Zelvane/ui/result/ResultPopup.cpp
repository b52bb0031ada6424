#include "ui/result/ResultPopup.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QWindow>

#include <utility>

namespace zelvane {

namespace {

/// The panel's height until its content has been laid out.
constexpr int initialHeight = 420;

void writeToClipboard(const QString& text)
{
    QGuiApplication::clipboard()->setText(text);
}

/// The widget window that an event's receiver belongs to; null for objects without one.
QWidget* windowOf(QObject* receiver)
{
    if (auto* widget = qobject_cast<QWidget*>(receiver)) {
        return widget->window();
    }
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->windowHandle() == receiver) {
            return widget;
        }
    }
    return nullptr;
}

} // namespace

ResultPopup::ResultPopup(const Theme& theme, WindowSystem& windows, WindowOrigins& origins,
                         const AppSettings& settings)
    : m_theme(theme)
    , m_windows(windows)
    , m_origins(origins)
    , m_settings(settings)
{
    m_sizeChange = settings.bindableResultWindowSize().addNotifier([this] {
        // In a later turn, so that all that hangs on the setting sees the same popup.
        QMetaObject::invokeMethod(this, &ResultPopup::resizeTranslationResult,
                                  Qt::QueuedConnection);
    });
}

ResultPopup::~ResultPopup() = default;

void ResultPopup::presentTranslationResult(const QString& original, const QString& translated,
                                           const QString& diagnostics)
{
    // A popup that replaces another owes the keyboard to the program that lent it to the first.
    const bool replacesActive = m_panel && m_panel->isActiveWindow();
    const std::optional<FocusLoan> loan = replacesActive ? m_loan : FocusLoan(m_windows);
    dismiss();
    m_loan = loan;

    build({original, translated, diagnostics});
    const QSize size = m_panel->panelFrame().size();
    if (const auto origin =
            m_origins.loadWindowOrigin(WindowKind::result, size.width(), size.height())) {
        m_panel->setPanelOrigin(origin->toPoint());
    } else {
        centre();
    }
    m_panel->presentInFront();
    m_view->focusTranslation();
    qApp->installEventFilter(this);
}

void ResultPopup::closeTranslationResult()
{
    const bool hasKeyboard = m_panel && m_panel->isActiveWindow();
    dismiss();
    if (hasKeyboard && m_loan) {
        m_loan->giveBack();
    }
    m_loan.reset();
}

void ResultPopup::resizeTranslationResult()
{
    if (m_panel) {
        fitContent();
        centre();
    }
}

bool ResultPopup::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress ||
        static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) {
        return false;
    }
    // Menus and dialogs in front of the popup answer the key themselves.
    const QWidget* window = windowOf(watched);
    if (QApplication::activePopupWidget() || !window || window->windowType() == Qt::Dialog) {
        return false;
    }
    closeTranslationResult();
    return true;
}

void ResultPopup::build(TranslationResult result)
{
    m_panel = new TranslatorKeyablePanel(m_theme, m_windows, PanelRole::floating);
    m_panels.add(m_panel);
    m_model = new TranslationResultModel(std::move(result), writeToClipboard);
    m_model->setParent(m_panel);
    m_view = new TranslationResultView(*m_model, m_theme);
    m_panel->setContent(m_view);
    m_panel->setWindowTitle(localizedText(QStringLiteral("Translation")));
    connect(m_panel, &TranslatorKeyablePanel::closeRequested, this,
            &ResultPopup::closeTranslationResult);
    connect(m_view, &TranslationResultView::closeRequested, this,
            &ResultPopup::closeTranslationResult);
    keepStyled(*m_view, m_theme, [this] { fitContent(); });
}

void ResultPopup::dismiss()
{
    qApp->removeEventFilter(this);
    if (!m_panel) {
        return;
    }
    const QPoint origin = m_panel->panelFrame().topLeft();
    m_origins.saveWindowOrigin(WindowKind::result, origin.x(), origin.y());
    m_panel->hide();
    // The panel may be the one whose key press is being handled.
    m_panel->deleteLater();
    m_panel.clear();
    m_model.clear();
    m_view.clear();
}

void ResultPopup::fitContent()
{
    if (!m_panel) {
        return;
    }
    const TranslationWindowSize size = m_settings.resultWindowSize();
    const int width = resultWidth(size, m_theme.tokens().sheets());
    m_view->setSectionHeight(resultSectionHeight(size));
    m_panel->setContentSize({width, initialHeight});
    int height = std::max(fittingHeight(*m_view, width), minimalResultHeight);
    if (const auto available = m_origins.availableSize()) {
        height = std::min(height, qRound(available->height()));
    }
    m_panel->setContentSize({width, height});
}

void ResultPopup::centre()
{
    const QSize size = m_panel->panelFrame().size();
    m_panel->setPanelOrigin(m_origins.centre(size.width(), size.height()).toPoint());
}

} // namespace zelvane
