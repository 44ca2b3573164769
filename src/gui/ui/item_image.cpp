#include "ui/item_image.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QImageReader>
#include <QPixmapCache>
#include <QStyle>
#include <optional>

#include "platform/path.h"
#include "platform/plist.h"
#include "platform/volume.h"
#include "ui/named_image.h"

namespace sysmend {

namespace {

bool isAppBundlePath(const std::string& volumePath) {
    return path::lowercased(path::pathExtension(volumePath)) == "app";
}

// The bundle's icon file (host path), or "" when the bundle names none that exists. A link to
// a bundle is followed inside the volume, never on the host.
QString bundleIconFile(const std::string& linkOrBundle) {
    const Volume& volume = Volume::current();
    const std::optional<std::string> resolved = volume.resolvingLinks(linkOrBundle);
    if (!resolved)
        return {};
    const std::string& bundleVolumePath = *resolved;
    const auto info =
        plist::readFile(volume.hostPath(path::appending(bundleVolumePath, "Contents/Info.plist")));
    const plist::Value* name = info ? info->find("CFBundleIconFile") : nullptr;
    if (!name || !name->asString() || name->asString()->empty())
        return {};
    std::string file =
        path::appending(path::appending(bundleVolumePath, "Contents/Resources"), *name->asString());
    if (path::pathExtension(file).empty())
        file += ".icns";
    const QString host = QString::fromStdString(volume.hostPath(file));
    return QFileInfo(host).isFile() ? host : QString();
}

QPixmap imageFromFile(const QString& hostPath, QSize size, qreal dpr) {
    QImageReader reader(hostPath);
    // An icns holds several sizes; take the smallest that is not smaller than asked for.
    QImage best;
    const QSize wanted = size * dpr;
    do {
        QImage frame = reader.read();
        if (frame.isNull())
            break;
        const bool bigEnough = frame.width() >= wanted.width() && frame.height() >= wanted.height();
        if (best.isNull() ||
            (bigEnough && (frame.width() < best.width() || best.width() < wanted.width())) ||
            (!bigEnough && frame.width() > best.width()))
            best = frame;
    } while (reader.jumpToNextImage());
    if (best.isNull())
        return {};
    QPixmap pixmap =
        QPixmap::fromImage(best.scaled(wanted, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(dpr);
    return pixmap;
}

QPixmap styleIcon(QStyle::StandardPixmap which, QSize size, qreal dpr) {
    return QApplication::style()->standardIcon(which).pixmap(size, dpr);
}

QPixmap genericAppImage(QSize size, qreal dpr) {
    return namedImage(QStringLiteral("appviewer"), size, dpr);
}

QPixmap draw(const ImageRef& image, QSize size, qreal dpr) {
    switch (image.kind) {
        case ImageRef::Kind::None:
            return {};
        case ImageRef::Kind::NamedImage: {
            QPixmap named = namedImage(QString::fromStdString(image.value), size, dpr);
            return named.isNull() ? styleIcon(QStyle::SP_FileIcon, size, dpr) : named;
        }
        case ImageRef::Kind::FileIcon: {
            if (isAppBundlePath(image.value)) {
                const QString icon = bundleIconFile(image.value);
                QPixmap pixmap = icon.isEmpty() ? QPixmap() : imageFromFile(icon, size, dpr);
                return pixmap.isNull() ? genericAppImage(size, dpr) : pixmap;
            }
            const QFileInfo info(QString::fromStdString(Volume::current().hostPath(image.value)));
            return styleIcon(info.isDir() ? QStyle::SP_DirIcon : QStyle::SP_FileIcon, size, dpr);
        }
        case ImageRef::Kind::FileTypeIcon:
            if (path::lowercased(image.value) == "app")
                return genericAppImage(size, dpr);
            return styleIcon(QStyle::SP_FileIcon, size, dpr);
        case ImageRef::Kind::ImageFile: {
            QPixmap pixmap = imageFromFile(
                QString::fromStdString(Volume::current().hostPath(image.value)), size, dpr);
            return pixmap.isNull() ? styleIcon(QStyle::SP_FileIcon, size, dpr) : pixmap;
        }
    }
    return {};
}

}  // namespace

QPixmap itemImage(const ImageRef& image, QSize size, qreal devicePixelRatio) {
    if (image.isNone())
        return {};
    const QString key = QStringLiteral("sysmend-item:%6:%1:%2:%3x%4@%5")
                            .arg(static_cast<int>(image.kind))
                            .arg(QString::fromStdString(image.value))
                            .arg(size.width())
                            .arg(size.height())
                            .arg(devicePixelRatio)
                            .arg(QString::fromStdString(Volume::current().root()));
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = draw(image, size, devicePixelRatio);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

}  // namespace sysmend
