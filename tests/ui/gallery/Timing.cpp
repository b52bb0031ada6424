#include "ui/gallery/Timing.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

#include <ctime>

namespace zelvane::gallery {

namespace {

/// For the desktop to be done with a window that has come or gone.
constexpr int settlingTime = 150;
constexpr int warmRuns = 7;
constexpr int frameLength = 16;
/// One notch of a mouse wheel, in eighths of a degree.
constexpr int notch = 120;

double milliseconds(clockid_t clock)
{
    timespec now = {};
    ::clock_gettime(clock, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

/// Time by the wall and of a processor.
struct Span
{
    double wall = 0;
    double processor = 0;
};

/// Runs from its making on.
class Stopwatch
{
public:
    explicit Stopwatch(clockid_t processor)
        : m_processor(processor)
        , m_start(now())
    {
    }

    [[nodiscard]] Span elapsed() const
    {
        const Span end = now();
        return {end.wall - m_start.wall, end.processor - m_start.processor};
    }

private:
    [[nodiscard]] Span now() const
    {
        return {milliseconds(CLOCK_MONOTONIC), milliseconds(m_processor)};
    }

    clockid_t m_processor;
    Span m_start;
};

/// Notes when something has been painted.
class FirstPaint final : public QObject
{
public:
    FirstPaint() { qApp->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && watched->isWidgetType() && !m_seen) {
            m_seen = true;
            // A window is painted in one turn, and the picture is handed over at its end.
            QTimer::singleShot(0, this, [this] { m_painted = true; });
        }
        return false;
    }

    void await() const
    {
        QElapsedTimer limit;
        limit.start();
        while (!m_painted && limit.elapsed() < 5000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

private:
    bool m_seen = false;
    bool m_painted = false;
};

Span appear(const Scene& scene, const Stage& stage)
{
    std::unique_ptr<Exhibit> exhibit;
    if (scene.hasStep) {
        exhibit = scene.show(stage);
        QTest::qWait(settlingTime);
    }
    const FirstPaint paint;
    const Stopwatch watch(CLOCK_PROCESS_CPUTIME_ID);
    if (scene.hasStep) {
        exhibit->takeStep();
    } else {
        exhibit = scene.show(stage);
    }
    paint.await();
    const Span span = watch.elapsed();
    QTest::qWait(settlingTime);
    return span;
}

QJsonObject toJson(const Span& span)
{
    return {{QStringLiteral("wall"), span.wall}, {QStringLiteral("processor"), span.processor}};
}

/// Takes `input` at the beginning of each of `count` frames and notes what each frame costs.
template <typename Input>
QJsonArray framesWith(int count, Input input)
{
    QJsonArray frames;
    for (int i = 0; i < count; ++i) {
        const Stopwatch frame(CLOCK_THREAD_CPUTIME_ID);
        input(i);
        QCoreApplication::processEvents();
        const double answered = frame.elapsed().wall;
        // What moves or loads by itself counts as well.
        QTest::qWait(std::max(0, frameLength - int(answered)));
        frames.append(toJson({answered, frame.elapsed().processor}));
    }
    return frames;
}

QJsonArray scroll(QAbstractScrollArea& area)
{
    const QScrollBar& bar = *area.verticalScrollBar();
    const int there = (bar.maximum() - bar.minimum()) / (3 * bar.singleStep()) + 2;
    const QPointF middle = QRectF(area.viewport()->rect()).center();
    return framesWith(2 * there, [&](int frame) {
        const QPoint turn(0, frame < there ? -notch : notch);
        QWheelEvent event(middle, area.viewport()->mapToGlobal(middle), {}, turn, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(area.viewport(), &event);
    });
}

QJsonArray type(QLineEdit& field)
{
    const QString typed = QStringLiteral("e\bger\b\b\b\bportu\b\b\b\b\bzzz\b\b\b");
    return framesWith(int(typed.size()), [&](int frame) {
        if (typed[frame] == u'\b') {
            QTest::keyClick(&field, Qt::Key_Backspace);
        } else {
            QTest::keyClick(&field, typed[frame].toLatin1());
        }
    });
}

QAbstractScrollArea* scrollingPart(const QWidget& window)
{
    for (auto* area : window.findChildren<QAbstractScrollArea*>()) {
        if (area->isVisible() &&
            area->verticalScrollBar()->maximum() > area->verticalScrollBar()->minimum()) {
            return area;
        }
    }
    return nullptr;
}

} // namespace

QJsonObject timeAppearance(const Scene& scene, const Stage& stage)
{
    QTest::qWait(settlingTime);
    const QJsonObject cold = toJson(appear(scene, stage));
    QJsonArray warm;
    for (int i = 0; i < warmRuns; ++i) {
        warm.append(toJson(appear(scene, stage)));
    }
    return {{QStringLiteral("cold"), cold}, {QStringLiteral("warm"), warm}};
}

QJsonObject timeFrames(const Scene& scene, const Stage& stage)
{
    const std::unique_ptr<Exhibit> exhibit = scene.show(stage);
    QTest::qWait(settlingTime);
    exhibit->takeStep();
    QTest::qWait(settlingTime);
    const QWidget* open = QApplication::activePopupWidget();
    const QWidget& window = open ? *open : *exhibit->window();
    QJsonObject frames;
    if (QAbstractScrollArea* area = scrollingPart(window)) {
        frames.insert(QStringLiteral("scrolling"), scroll(*area));
    }
    if (auto* field = open ? window.findChild<QLineEdit*>() : nullptr) {
        frames.insert(QStringLiteral("typing"), type(*field));
    }
    return frames;
}

} // namespace zelvane::gallery
