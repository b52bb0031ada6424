#pragma once

#include "ui/components/Buttons.h"
#include "ui/components/ThemedLabel.h"
#include "ui/onboarding/OnboardingControls.h"
#include "ui/onboarding/OnboardingHero.h"
#include "ui/onboarding/OnboardingModel.h"

#include <QVariantAnimation>
#include <QWidget>

class QGraphicsOpacityEffect;
class QGridLayout;
class QVBoxLayout;

namespace zelvane {

/// The introduction: a drawing, a title and a text for each slide, and the way from one to the
/// next by pointer, Left, Right and Esc.
class OnboardingView final : public QWidget
{
    Q_OBJECT

public:
    /// The size of the view in device-independent pixels.
    static constexpr QSize contentSize{480, 520};

    /// Both must outlive the view. The model's `finished` ends the introduction.
    OnboardingView(OnboardingModel& model, const Theme& theme, QWidget* parent = nullptr);

    /// Gives the keyboard to what leads on.
    void focusForward();

    [[nodiscard]] const OnboardingHero& hero() const { return *m_hero; }
    [[nodiscard]] const ThemedLabel& title() const { return *m_title; }
    [[nodiscard]] const ThemedLabel& body() const { return *m_body; }
    [[nodiscard]] const PageDots& dots() const { return *m_dots; }
    [[nodiscard]] ChevronButton& backButton() const { return *m_back; }
    [[nodiscard]] ChevronButton& forwardButton() const { return *m_forward; }
    [[nodiscard]] TextButton& gotItButton() const { return *m_gotIt; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// The title's text has changed, with the slide or with the language.
    void titleChanged(const QString& title);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void layOut();
    void restyle();
    /// How high the texts of `slide` are in a view of that width.
    [[nodiscard]] int textHeight(const OnboardingSlide& slide, int width) const;
    void fitHero();
    void showSlide();
    void showTexts();
    void updateNavigation();
    void fadeTextsIn();
    /// Whether the key was one that the slides answer to.
    bool handleKey(const QKeyEvent& event);

    OnboardingModel& m_model;
    const Theme& m_theme;
    // All owned by Qt's tree.
    OnboardingHero* m_hero;
    QWidget* m_texts;
    ThemedLabel* m_title;
    ThemedLabel* m_body;
    PageDots* m_dots;
    ChevronButton* m_back;
    ChevronButton* m_forward;
    TextButton* m_gotIt;
    QVBoxLayout* m_textLayout;
    QGridLayout* m_navigation;
    QGraphicsOpacityEffect* m_veil;
    QVariantAnimation m_fade;
};

} // namespace zelvane
