#include "ui/na_empty_state.h"

#include "ui/named_image.h"

namespace sysmend {

namespace {

constexpr int kImageSide = 128;
constexpr int kImageTopAboveCentre = 94;
constexpr int kCaptionGap = 10;
constexpr int kCaptionWidth = 100;
constexpr int kCaptionHeight = 22;

}  // namespace

void drawEmptyState(QPainter& painter, const QRect& bounds, qreal devicePixelRatio,
                    const QString& caption) {
    const QPoint centre = bounds.center();
    const QRect imageRect(centre.x() - kImageSide / 2, centre.y() - kImageTopAboveCentre,
                          kImageSide, kImageSide);
    painter.drawPixmap(imageRect,
                       namedImage(QStringLiteral("sysmend"), imageRect.size(), devicePixelRatio));
    const QRect captionRect(centre.x() - kCaptionWidth / 2, imageRect.bottom() + kCaptionGap,
                            kCaptionWidth, kCaptionHeight);
    painter.drawText(captionRect, Qt::AlignCenter, caption);
}

void setListEmptyCaptionStyle(QPainter& painter) {
    QFont font = painter.font();
    font.setPixelSize(13);
    painter.setFont(font);
    painter.setPen(QColor(140, 148, 160));
}

}  // namespace sysmend
