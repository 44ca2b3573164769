#include "ui/na_thumbnail.h"

#include <QImageReader>
#include <QPainter>
#include <algorithm>

namespace sysmend {

QImage thumbnailCreatWithUrl(const QUrl& url, qreal width, qreal height) {
    const QSize box(static_cast<int>(width), static_cast<int>(height));
    if (box.isEmpty() || !url.isLocalFile())
        return {};
    QImageReader reader(url.toLocalFile());
    reader.setAutoTransform(true);
    // Decode straight to the thumbnail's size where the format allows (JPEG does), rather than
    // reading a camera-sized picture in full. The stored size is before the orientation turn,
    // but fitting into a square leaves either turn inside it.
    const int maxPixelSize = std::max(box.width(), box.height());
    const QSize stored = reader.size();
    if (stored.isValid() && std::max(stored.width(), stored.height()) > maxPixelSize)
        reader.setScaledSize(stored.scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio));
    QImage image = reader.read();
    if (image.isNull())
        return {};
    if (image.width() > box.width() || image.height() > box.height())
        image = image.scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation);

    QImage thumbnail(box, QImage::Format_ARGB32_Premultiplied);
    thumbnail.fill(Qt::transparent);
    QPainter painter(&thumbnail);
    painter.drawImage((box.width() - image.width()) / 2, (box.height() - image.height()) / 2,
                      image);
    painter.end();
    return thumbnail;
}

}  // namespace sysmend
