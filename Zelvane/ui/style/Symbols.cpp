#include "ui/style/Symbols.h"

#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

/// The resources are linked in statically; naming them here keeps the linker from dropping them.
/// Outside every namespace, as Qt's macro requires.
static void loadIconResources()
{
    Q_INIT_RESOURCE(icons);
}

namespace zelvane {

namespace {

QPixmap rendered(const QString& name, int size, double devicePixelRatio)
{
    [[maybe_unused]] static const bool loaded = (loadIconResources(), true);
    QSvgRenderer renderer(QStringLiteral(":/zelvane/icons/%1.svg").arg(name));
    Q_ASSERT_X(renderer.isValid(), "symbol", qPrintable(name));
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

} // namespace

QPixmap symbolPixmap(const QString& name, const QColor& color, int size, double devicePixelRatio)
{
    const QString key = QStringLiteral("zelvane/%1/%2/%3/%4")
                            .arg(name, color.name(QColor::HexArgb))
                            .arg(size)
                            .arg(devicePixelRatio);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = rendered(name, size, devicePixelRatio);
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(QRect(0, 0, size, size), color);
        painter.end();
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}

QPixmap picturePixmap(const QString& name, int size, double devicePixelRatio, double opacity)
{
    QPixmap pixmap = rendered(name, size, devicePixelRatio);
    if (opacity < 1) {
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.fillRect(QRect(0, 0, size, size), QColor::fromRgbF(0, 0, 0, float(opacity)));
    }
    return pixmap;
}

} // namespace zelvane
