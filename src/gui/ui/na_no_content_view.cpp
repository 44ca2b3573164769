#include "ui/na_no_content_view.h"

#include <QPainter>

#include "ui/named_image.h"

namespace sysmend {

namespace {

constexpr int kImageSide = 128;
constexpr int kImageTopAboveCentre = 94;
constexpr int kTextGap = 8;
constexpr int kTextWidth = 100;
constexpr int kTextHeight = 22;

}  // namespace

NANoContentView::NANoContentView(QWidget* parent) : QWidget(parent) {}

void NANoContentView::setHiddenSubviews(bool hidden) {
    if (hidden == hiddenSubviews_)
        return;
    hiddenSubviews_ = hidden;
    if (hidden) {
        for (QWidget* child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
            if (child->isWindow() || child->isHidden())
                continue;
            child->hide();
            hiddenByUs_.append(child);
        }
    } else {
        for (const QPointer<QWidget>& child : std::as_const(hiddenByUs_)) {
            if (child)
                child->show();
        }
        hiddenByUs_.clear();
    }
    update();
}

void NANoContentView::paintEvent(QPaintEvent*) {
    if (!hiddenSubviews_)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const QPoint centre = rect().center();
    const QRect imageRect(centre.x() - kImageSide / 2, centre.y() - kImageTopAboveCentre,
                          kImageSide, kImageSide);
    painter.drawPixmap(
        imageRect, namedImage(QStringLiteral("sysmend"), imageRect.size(), devicePixelRatioF()));
    const QRect textRect(centre.x() - kTextWidth / 2, imageRect.bottom() + 1 + kTextGap, kTextWidth,
                         kTextHeight);
    QFont textFont = font();
    textFont.setPointSize(13);
    painter.setFont(textFont);
    painter.setPen(QColor(140, 140, 140));
    painter.drawText(textRect, Qt::AlignCenter, QStringLiteral("No Items"));
}

}  // namespace sysmend
