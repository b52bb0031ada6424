#pragma once

#include "ui/components/ThemedLabel.h"

#include <QBasicTimer>
#include <QProgressBar>
#include <QWidget>

#include <optional>

namespace zelvane {

/// A share of 1 in whole percent, rounded down: "42%", or "42 %" where languages write it so. Less
/// than nothing is 0, more than everything 100.
[[nodiscard]] QString percentageText(double share);

/// A thin bar: how much of something is done, or, with a maximum of 0, that it goes on. It costs
/// nothing while it can't be seen.
class ProgressBar final : public QProgressBar
{
    Q_OBJECT

public:
    /// `theme` must outlive the bar.
    explicit ProgressBar(const Theme& theme, QWidget* parent = nullptr);

    /// 0 to 1; nothing for work without a known end.
    void setFraction(std::optional<double> fraction);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void animate();

    const Theme& m_theme;
    QBasicTimer m_timer;
    double m_phase = 0;
};

/// A small wheel that turns while something goes on. It costs nothing while it can't be seen.
class Spinner final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the spinner.
    explicit Spinner(const Theme& theme, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void animate();

    const Theme& m_theme;
    QBasicTimer m_timer;
    int m_step = 0;
};

/// A word on a tinted ground.
class Badge final : public QLabel
{
    Q_OBJECT

public:
    /// `theme` must outlive the badge.
    Badge(const Theme& theme, TextTone tone, QWidget* parent = nullptr);

    void setTone(TextTone tone);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    TextTone m_tone;
};

/// A dot in the colour of a state. Its accessible name says the state in words; a text beside it
/// should as well, since not everybody tells colours apart.
class StatusLight final : public QWidget
{
    Q_OBJECT

public:
    enum class State {
        off,
        ready,
        busy,
        warning,
        failed,
    };

    /// `theme` must outlive the light.
    explicit StatusLight(const Theme& theme, QWidget* parent = nullptr);

    void setState(State state, const QString& label);
    [[nodiscard]] State state() const { return m_state; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    State m_state = State::off;
};

} // namespace zelvane
