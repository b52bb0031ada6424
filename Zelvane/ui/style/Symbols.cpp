#include "ui/style/Symbols.h"

#include <QDir>
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

QString iconFolder()
{
    [[maybe_unused]] static const bool loaded = (loadIconResources(), true);
    return QStringLiteral(":/zelvane/icons/");
}

QPixmap rendered(const QString& name, int size, double devicePixelRatio)
{
    QSvgRenderer renderer(iconFolder() + name + QStringLiteral(".svg"));
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

QStringList symbolNames()
{
    QStringList names;
    for (const QString& file : QDir(iconFolder()).entryList(QDir::Files, QDir::Name)) {
        const QString name = file.chopped(4); // ".svg"
        const bool isPicture = name.contains(QStringLiteral("zelvane")) || name[0].isUpper();
        if (!isPicture) {
            names.append(name);
        }
    }
    return names;
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
