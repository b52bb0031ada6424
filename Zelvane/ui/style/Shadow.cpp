#include "ui/style/Shadow.h"

#include <QImage>
#include <QPixmapCache>
#include <qdrawutil.h>

#include <cmath>
#include <vector>

namespace zelvane {

namespace {

constexpr double shadowOpacity = 0.38;
constexpr int shadowRadius = 18;
constexpr int shadowOffset = 7;
/// How far the blur below reaches: three boxes of this radius come close to a Gaussian bell.
constexpr int boxRadius = shadowRadius * 3 / 4;
constexpr int shadowReach = 3 * boxRadius;

/// One pass of a box blur over `count` bytes that lie `stride` apart.
void blurLine(uchar* line, int count, qsizetype stride, int radius, std::vector<int>& scratch)
{
    const int width = 2 * radius + 1;
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        scratch[size_t(i)] = line[i * stride];
    }
    const auto at = [&](int i) { return i < 0 || i >= count ? 0 : scratch[size_t(i)]; };
    for (int i = -radius; i < radius; ++i) {
        sum += at(i);
    }
    for (int i = 0; i < count; ++i) {
        sum += at(i + radius);
        line[i * stride] = uchar(sum / width);
        sum -= at(i - radius);
    }
}

void blur(QImage& alpha, int radius)
{
    std::vector<int> scratch(size_t(std::max(alpha.width(), alpha.height())));
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < alpha.height(); ++y) {
            blurLine(alpha.scanLine(y), alpha.width(), 1, radius, scratch);
        }
        for (int x = 0; x < alpha.width(); ++x) {
            blurLine(alpha.bits() + x, alpha.height(), alpha.bytesPerLine(), radius, scratch);
        }
    }
}

/// The shadow of the smallest panel with these corners: the corners are all that differs between
/// panels, and the rest is stretched.
QPixmap cornerShadow(int corner, double devicePixelRatio)
{
    const QString key = QStringLiteral("zelvane/shadow/%1/%2").arg(corner).arg(devicePixelRatio);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) {
        return pixmap;
    }
    const int panel = 2 * (corner + shadowReach) + 1;
    const int side = panel + 2 * shadowReach;
    const auto scaled = [&](int length) { return int(std::lround(length * devicePixelRatio)); };

    QImage alpha(scaled(side), scaled(side), QImage::Format_Alpha8);
    alpha.fill(0);
    QPainter shape(&alpha);
    shape.setRenderHint(QPainter::Antialiasing);
    shape.scale(devicePixelRatio, devicePixelRatio);
    shape.setPen(Qt::NoPen);
    shape.setBrush(Qt::black);
    shape.drawRoundedRect(QRect(shadowReach, shadowReach, panel, panel), corner, corner);
    shape.end();
    blur(alpha, scaled(boxRadius));

    QImage image(alpha.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    for (int y = 0; y < image.height(); ++y) {
        const uchar* from = alpha.constScanLine(y);
        auto* to = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            to[x] = qRgba(0, 0, 0, int(std::lround(from[x] * shadowOpacity)));
        }
    }
    image.setDevicePixelRatio(devicePixelRatio);
    pixmap = QPixmap::fromImage(image);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

} // namespace

QMargins shadowMargins()
{
    return {shadowReach, shadowReach - shadowOffset, shadowReach, shadowReach + shadowOffset};
}

void paintShadow(QPainter& painter, const QRect& panel, double cornerRadius)
{
    const int corner = qRound(cornerRadius);
    const double ratio = painter.device()->devicePixelRatioF();
    const QPixmap pixmap = cornerShadow(corner, ratio);
    const int reach = shadowReach;
    const QRect target = panel.translated(0, shadowOffset).adjusted(-reach, -reach, reach, reach);
    const int edge = corner + 2 * reach;
    const int sourceEdge = int(std::lround(edge * ratio));
    qDrawBorderPixmap(&painter, target, QMargins(edge, edge, edge, edge), pixmap,
                      QRect(QPoint(0, 0), pixmap.size()),
                      QMargins(sourceEdge, sourceEdge, sourceEdge, sourceEdge));
}

} // namespace zelvane
