#include "ui/onboarding/HeroDrawing.h"

#include "settings/Localization.h"
#include "ui/style/Symbols.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <cmath>

namespace zelvane {

namespace {

constexpr double cardRadius = 14;
const QColor ink(0x22, 0x26, 0x36);
const QColor paleInk(0x5a, 0x60, 0x74);

QColor white(double opacity)
{
    return QColor::fromRgbF(1, 1, 1, float(opacity));
}

/// The system's typeface in a size of the drawing's own: the drawing has no room to grow.
QFont font(int pixels, QFont::Weight weight = QFont::Medium)
{
    QFont result = QGuiApplication::font();
    result.setPixelSize(pixels);
    result.setWeight(weight);
    return result;
}

double widthOf(const QString& text, const QFont& font)
{
    return std::ceil(QFontMetricsF(font).horizontalAdvance(text));
}

QRectF around(QPointF centre, QSizeF size)
{
    return {centre.x() - (size.width() / 2), centre.y() - (size.height() / 2), size.width(),
            size.height()};
}

/// Where the tail of a speech bubble points.
enum class Tail { left, right };

/// The strokes that all drawings are made of.
class Brush
{
public:
    Brush(QPainter& painter, double ratio)
        : m_painter(painter)
        , m_ratio(ratio)
    {
    }

    void glow(QPointF centre, double radius) const
    {
        QRadialGradient light(centre, radius);
        light.setColorAt(0, white(0.16));
        light.setColorAt(1, white(0));
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(light);
        m_painter.drawEllipse(centre, radius, radius);
    }

    /// A pane of frosted glass.
    void glass(const QRectF& rect, double radius = cardRadius, double opacity = 0.13) const
    {
        m_painter.setPen(QPen(white(0.24), 1));
        m_painter.setBrush(white(opacity));
        m_painter.drawRoundedRect(rect.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    }

    /// A sheet of white paper that lies a little above the ground.
    void paper(const QRectF& rect, double radius = cardRadius) const
    {
        QPainterPath shape;
        shape.addRoundedRect(rect, radius, radius);
        shadow(shape);
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(white(0.96));
        m_painter.drawPath(shape);
    }

    void bubble(QPointF centre, const QString& words, Tail tail) const
    {
        const QFont face = font(18, QFont::DemiBold);
        const QRectF body = around(centre, {widthOf(words, face) + 40, 44});
        const double side = tail == Tail::left ? -1 : 1;
        const double foot = centre.x() + (side * ((body.width() / 2) - 24));
        QPainterPath point(QPointF(foot - 9, body.bottom() - 2));
        point.lineTo(foot + (side * 9), body.bottom() + 11);
        point.lineTo(foot + 9, body.bottom() - 2);
        QPainterPath outline;
        outline.addRoundedRect(body, 20, 20);
        const QPainterPath shape = outline.united(point);
        if (tail == Tail::right) {
            shadow(shape);
        }
        m_painter.setPen(tail == Tail::left ? QPen(white(0.24), 1) : QPen(Qt::NoPen));
        m_painter.setBrush(tail == Tail::left ? white(0.2) : white(0.96));
        m_painter.drawPath(shape);
        text(body, words, face, tail == Tail::left ? white(1) : ink);
    }

    void symbol(QPointF centre, int size, const QString& name, double opacity = 1) const
    {
        picture(centre, size, symbolPixmap(name, white(opacity), size, pixelRatio()));
    }

    void darkSymbol(QPointF centre, int size, const QString& name) const
    {
        picture(centre, size, symbolPixmap(name, paleInk, size, pixelRatio()));
    }

    void applicationIcon(QPointF centre, int size) const
    {
        picture(centre, size,
                picturePixmap(QStringLiteral("org.zelvane.desk"), size, pixelRatio()));
    }

    /// One line, which becomes smaller where a language needs more room than there is.
    void text(const QRectF& rect, const QString& words, QFont face, const QColor& color,
              Qt::Alignment alignment = Qt::AlignCenter) const
    {
        while (widthOf(words, face) > rect.width() && face.pixelSize() > 9) {
            face.setPixelSize(face.pixelSize() - 1);
        }
        m_painter.setFont(face);
        m_painter.setPen(color);
        m_painter.drawText(rect, int(alignment | Qt::AlignVCenter) | Qt::TextSingleLine, words);
    }

    /// A line of a text that isn't there to be read.
    void line(const QRectF& rect, const QColor& color) const
    {
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(color);
        m_painter.drawRoundedRect(rect, rect.height() / 2, rect.height() / 2);
    }

    /// A circle on which satellites go.
    void orbit(QPointF centre, double radius, double opacity) const
    {
        m_painter.setPen(QPen(white(opacity), 1.2));
        m_painter.setBrush(Qt::NoBrush);
        m_painter.drawEllipse(centre, radius, radius);
    }

    /// A small disc of paper with a symbol on it.
    void satellite(QPointF centre, const QString& name) const
    {
        paper(around(centre, {42, 42}), 21);
        darkSymbol(centre, 24, name);
    }

    /// The ground of a selected text.
    void selection(const QRectF& rect) const
    {
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(QColor(77, 163, 255, 165));
        m_painter.drawRoundedRect(rect, 6, 6);
    }

    void disc(QPointF centre, double radius, double opacity) const
    {
        m_painter.setPen(QPen(white(opacity * 1.6), 1));
        m_painter.setBrush(white(opacity));
        m_painter.drawEllipse(centre, radius, radius);
    }

private:
    /// What lies a little above the ground darkens it.
    void shadow(const QPainterPath& shape) const
    {
        constexpr int depth = 12;
        const QPainterPath below = shape.translated(0, 5);
        m_painter.setBrush(Qt::NoBrush);
        for (int i = depth; i > 0; --i) {
            m_painter.setPen(QPen(QColor::fromRgbF(0, 0, 0, 0.022F), 2 * i, Qt::SolidLine,
                                  Qt::RoundCap, Qt::RoundJoin));
            m_painter.drawPath(below);
        }
    }

    /// On whole pixels of the device, so that thin lines stay sharp.
    void picture(QPointF centre, int size, const QPixmap& pixmap) const
    {
        const QPointF corner = centre - QPointF(size / 2.0, size / 2.0);
        const QTransform transform = m_painter.transform();
        const QPointF sharp = QPointF((transform.map(corner) * m_ratio).toPoint()) / m_ratio;
        m_painter.drawPixmap(transform.inverted().map(sharp), pixmap);
    }

    /// The pixels that a picture has for each unit of the drawing.
    [[nodiscard]] double pixelRatio() const { return m_painter.transform().m11() * m_ratio; }

    QPainter& m_painter;
    double m_ratio;
};

void drawAiOnline(const Brush& brush)
{
    brush.glow({0, 0}, 150);
    brush.orbit({0, 0}, 126, 0.1);
    brush.orbit({0, 0}, 94, 0.2);
    brush.disc({0, 0}, 62, 0.14);
    brush.symbol({2, 3}, 76, QStringLiteral("brain.head.profile"));
    brush.satellite({-70, 63}, QStringLiteral("globe"));
    brush.satellite({70, -63}, QStringLiteral("sparkles"));
    brush.bubble({-128, -54}, QStringLiteral("Hello"), Tail::left);
    brush.bubble({126, 52}, QStringLiteral("Bonjour"), Tail::right);
}

void drawOffline(const Brush& brush)
{
    brush.glow({0, -26}, 130);
    brush.disc({0, -26}, 62, 0.12);
    brush.symbol({0, -26}, 68, QStringLiteral("wifi.slash"));

    const QFont face = font(15, QFont::DemiBold);
    // Names of engines, the same in every language.
    const std::array names{QStringLiteral("Smart"), QStringLiteral("Balanced"),
                           QStringLiteral("Fast")};
    constexpr double gap = 10;
    constexpr double padding = 36;
    double total = gap * (double(names.size()) - 1);
    for (const QString& name : names) {
        total += widthOf(name, face) + padding;
    }
    double x = -total / 2;
    for (const QString& name : names) {
        const QRectF chip(std::round(x), 64, widthOf(name, face) + padding, 34);
        brush.glass(chip, 17, 0.17);
        brush.text(chip, name, face, white(1));
        x += chip.width() + gap;
    }
}

void drawReplaceSelection(const Brush& brush)
{
    const QFont face = font(18);
    brush.glow({0, 0}, 150);
    const QString before = QStringLiteral("Selecciona esto");
    const QRectF top = around({0, -62}, {296, 58});
    brush.glass(top);
    brush.selection(around(top.center(), {widthOf(before, face) + 14, 32}));
    brush.text(top, before, face, white(1));

    brush.symbol({0, 0}, 30, QStringLiteral("arrow.down"));

    const QRectF bottom = around({0, 62}, {296, 58});
    brush.paper(bottom);
    brush.text(bottom.adjusted(16, 0, -16, 0), localizedText(QStringLiteral("Replace with this")),
               font(18, QFont::DemiBold), ink);
}

void drawResultWindow(const Brush& brush)
{
    // The document that the window floats over.
    const QRectF page = around({0, -6}, {380, 190});
    brush.glass(page, 18, 0.07);
    for (int i = 0; i < 8; ++i) {
        const double lengths[] = {330, 290, 318, 250, 326, 300, 312, 190};
        brush.line({page.left() + 24, page.top() + 26 + (i * 20.0), lengths[i], 6}, white(0.14));
    }

    const QRectF card = around({14, 12}, {296, 118});
    brush.paper(card, 16);
    const double left = card.left() + 20;
    brush.text({left, card.top() + 14, 210, 26}, localizedText(QStringLiteral("Translation")),
               font(15, QFont::Bold), ink, Qt::AlignLeft);
    brush.darkSymbol({card.right() - 29, card.top() + 27}, 20, QStringLiteral("doc.on.doc"));
    brush.line({left, card.top() + 48, card.width() - 40, 1}, QColor(0, 0, 0, 26));
    brush.text({left, card.top() + 58, card.width() - 40, 26},
               QStringLiteral("The quick brown fox…"), font(17), ink, Qt::AlignLeft);
    brush.line({left, card.top() + 94, 150, 6}, QColor(0, 0, 0, 26));
}

void drawClassicTranslator(const Brush& brush)
{
    brush.glow({0, 0}, 150);
    const QRectF source = around({0, -60}, {316, 72});
    brush.glass(source);
    brush.text({source.left() + 20, source.top() + 12, source.width() - 40, 26},
               localizedText(QStringLiteral("Text to translate")), font(16), white(0.95),
               Qt::AlignLeft);
    brush.line({source.left() + 20, source.top() + 49, 190, 6}, white(0.2));

    const QRectF target = around({0, 60}, {316, 72});
    brush.paper(target);
    brush.text({target.left() + 20, target.top() + 12, target.width() - 40, 26},
               localizedText(QStringLiteral("Translation")), font(16, QFont::DemiBold), ink,
               Qt::AlignLeft);
    brush.line({target.left() + 20, target.top() + 49, 220, 6}, QColor(0, 0, 0, 30));

    brush.symbol({0, 0}, 40, QStringLiteral("arrow.down.circle.fill"));
}

void drawMenuBar(const Brush& brush)
{
    const QRectF screen = around({0, 0}, {420, 196});
    brush.glass(screen, 18, 0.05);
    const QRectF bar(screen.left() + 10, screen.top() + 10, screen.width() - 20, 38);
    brush.glass(bar, 10, 0.16);
    const double middle = bar.center().y();

    // Some window on that screen.
    const QRectF window(screen.left() + 34, screen.top() + 70, 190, 102);
    brush.glass(window, 12, 0.06);
    for (int i = 0; i < 3; ++i) {
        brush.line({window.left() + 16, window.top() + 24 + (i * 20.0), i < 2 ? 150.0 : 96.0, 6},
                   white(0.13));
    }

    brush.symbol({bar.left() + 24, middle}, 20, QStringLiteral("applelogo"));
    double x = bar.left() + 50;
    const std::array menus{localizedText(QStringLiteral("File")),
                           localizedText(QStringLiteral("Edit"))};
    for (const QString& menu : menus) {
        const QFont face = font(14, QFont::DemiBold);
        const QRectF place(x, bar.top(), widthOf(menu, face), bar.height());
        brush.text(place, menu, face, white(0.92));
        x += place.width() + 20;
    }

    brush.symbol({bar.right() - 28, middle}, 22, QStringLiteral("battery.100"));
    brush.symbol({bar.right() - 66, middle}, 20, QStringLiteral("wifi"));
    const QPointF icon(bar.right() - 106, middle);
    brush.glow(icon, 54);
    brush.line(around(icon, {38, 30}), white(0.26));
    brush.applicationIcon(icon, 22);

    brush.symbol({icon.x(), middle + 50}, 32, QStringLiteral("arrow.up"));
    brush.text(around({icon.x(), middle + 86}, {200, 28}),
               localizedText(QStringLiteral("Menu bar")), font(17, QFont::DemiBold), white(1));
}

void drawAccessibility(const Brush& brush)
{
    brush.glow({0, -26}, 140);
    brush.disc({0, -26}, 72, 0.07);
    brush.disc({0, -26}, 56, 0.12);
    brush.symbol({0, -26}, 72, QStringLiteral("accessibility"));
    const QString path = localizedText(QStringLiteral("Privacy & Security → Accessibility"));
    const QFont face = font(15, QFont::DemiBold);
    constexpr double padding = 20;
    constexpr double widest = 404;
    constexpr double lineHeight = 22;
    QStringList lines{path};
    if (const qsizetype arrow = path.indexOf(u'→');
        arrow > 0 && widthOf(path, face) + 2 * padding > widest) {
        lines = {path.first(arrow + 1), path.sliced(arrow + 1).trimmed()};
    }
    double width = 0;
    for (const QString& line : lines) {
        width = std::max(width, widthOf(line, face));
    }
    const QRectF chip = around(
        {0, 84}, {std::min(width + 2 * padding, widest), 14 + (lineHeight * double(lines.size()))});
    brush.glass(chip, 18, 0.17);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        brush.text({chip.left() + padding, chip.top() + 7 + (lineHeight * double(i)),
                    chip.width() - 2 * padding, lineHeight},
                   lines[i], face, white(1));
    }
}

} // namespace

void drawHero(QPainter& painter, OnboardingIllustration illustration, double devicePixelRatio)
{
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const Brush brush(painter, devicePixelRatio);
    switch (illustration) {
    case OnboardingIllustration::aiOnline:
        return drawAiOnline(brush);
    case OnboardingIllustration::offline:
        return drawOffline(brush);
    case OnboardingIllustration::replaceSelection:
        return drawReplaceSelection(brush);
    case OnboardingIllustration::resultWindow:
        return drawResultWindow(brush);
    case OnboardingIllustration::classicTranslator:
        return drawClassicTranslator(brush);
    case OnboardingIllustration::menuBar:
        return drawMenuBar(brush);
    case OnboardingIllustration::accessibility:
        return drawAccessibility(brush);
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
