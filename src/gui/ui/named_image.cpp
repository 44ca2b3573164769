#include "ui/named_image.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>

// Q_INIT_RESOURCE must be expanded outside any namespace.
static void initSysmendResources() {
    Q_INIT_RESOURCE(sysmend);
}

namespace sysmend {

QPixmap namedImage(const QString& name, QSize size, qreal devicePixelRatio) {
    QSvgRenderer renderer(QStringLiteral(":/images/%1.svg").arg(name));
    if (!renderer.isValid())
        return {};
    QPixmap pixmap(size * devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

QIcon applicationIconImage() {
    QIcon icon = QGuiApplication::windowIcon();
    return icon.isNull() ? QIcon(QStringLiteral(":/icons/sysmend.svg")) : icon;
}

void initGuiResources() {
    initSysmendResources();
}

}  // namespace sysmend
