#include "ui/components/SegmentedControl.h"

#include "ui/components/Styling.h"
#include "ui/style/ViewStyles.h"

#include <QEvent>
#include <QRadioButton>

#include <cmath>

namespace zelvane {

namespace {

using namespace std::chrono_literals;

constexpr int textPadding = 14;
constexpr double inset = 2;

/// One of the values. The control below paints what is raised; this paints the text.
class Segment final : public QRadioButton
{
public:
    Segment(const Theme& theme, const QString& text, QWidget* parent)
        : QRadioButton(text, parent)
        , m_theme(theme)
    {
        prepareControl(*this, theme, [&theme] { return theme.tokens().controlRadius() - inset; });
        keepStyled(*this, theme, [this] { setFont(m_theme.font(StyleFontRole::body)); });
    }

protected:
    [[nodiscard]] bool hitButton(const QPoint& position) const override
    {
        return rect().contains(position);
    }

    void paintEvent(QPaintEvent*) override
    {
        const ThemeColors& colors = m_theme.colors();
        QPainter painter(this);
        QColor color = isChecked() || underMouse() ? colors.text : colors.secondaryText;
        if (!isEnabled()) {
            color = colors.disabledText;
        }
        painter.setPen(color);
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine,
                         fontMetrics().elidedText(text(), Qt::ElideRight, width()));
    }

private:
    const Theme& m_theme;
};

} // namespace

SegmentedControl::SegmentedControl(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_place(*this, theme, 180ms)
{
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] {
        setFont(m_theme.font(StyleFontRole::body));
        updateGeometry();
        arrange();
        update();
    });
}

void SegmentedControl::setSegments(const QStringList& texts)
{
    qDeleteAll(m_segments);
    m_segments.clear();
    for (const QString& text : texts) {
        auto* segment = new Segment(m_theme, text, this);
        const int index = int(m_segments.size());
        connect(segment, &QRadioButton::toggled, this, [this, index](bool on) {
            if (on) {
                choose(index);
            }
        });
        m_segments.append(segment);
        segment->show();
    }
    m_current = -1;
    setCurrentIndex(0);
    m_place.jumpTo(0);
    updateGeometry();
    arrange();
}

void SegmentedControl::setTexts(const QStringList& texts)
{
    for (qsizetype i = 0; i < std::min(texts.size(), m_segments.size()); ++i) {
        m_segments[i]->setText(texts[i]);
    }
    updateGeometry();
}

void SegmentedControl::setCurrentIndex(int index)
{
    if (index < 0 || index >= count() || index == m_current) {
        return;
    }
    m_current = index;
    m_place.moveTo(index);
    m_segments[index]->setChecked(true);
}

void SegmentedControl::choose(int index)
{
    if (index != m_current) {
        m_current = index;
        m_place.moveTo(index);
        Q_EMIT activated(index);
    }
}

QSize SegmentedControl::sizeHint() const
{
    double widest = 0;
    for (const QRadioButton* segment : m_segments) {
        widest = std::max(widest, QFontMetricsF(font()).horizontalAdvance(segment->text()));
    }
    const int segmentWidth = int(std::ceil(widest)) + 2 * textPadding;
    return {segmentWidth * std::max(1, count()) + int(2 * inset), controlHeight(m_theme)};
}

QSize SegmentedControl::minimumSizeHint() const
{
    return {40 * std::max(1, count()), controlHeight(m_theme)};
}

QRectF SegmentedControl::segmentRect(double place) const
{
    const double segmentWidth = (width() - 2 * inset) / std::max(1, count());
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const double fromLeft = mirrored ? count() - 1 - place : place;
    return {inset + segmentWidth * fromLeft, inset, segmentWidth, height() - 2 * inset};
}

void SegmentedControl::arrange()
{
    for (qsizetype i = 0; i < m_segments.size(); ++i) {
        m_segments[i]->setGeometry(segmentRect(double(i)).toRect());
    }
}

void SegmentedControl::resizeEvent(QResizeEvent*)
{
    arrange();
}

void SegmentedControl::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange) {
        arrange();
        update();
    }
}

void SegmentedControl::paintEvent(QPaintEvent*)
{
    const ThemeColors& colors = m_theme.colors();
    const double radius = m_theme.tokens().controlRadius();
    QColor track = colors.rowHovered;
    QPainter painter(this);
    paintRounded(painter, rect(), radius, track, colors.controlBorder);
    if (m_current >= 0) {
        const bool dark = m_theme.appearance().colorScheme() == ColorScheme::dark;
        const QColor raised = dark ? colors.track : colors.control;
        paintRounded(painter, segmentRect(m_place.value()), std::max(0.0, radius - inset),
                     isEnabled() ? raised : colors.window, colors.controlBorder);
    }
}

} // namespace zelvane
