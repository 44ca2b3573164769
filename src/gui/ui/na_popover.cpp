#include "ui/na_popover.h"

#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

namespace sysmend {

namespace {
constexpr int kPadding = 14;
}

NAPopover::NAPopover(QWidget* parent) : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint) {
    setAttribute(Qt::WA_TranslucentBackground);
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    applyMargins();
}

void NAPopover::setContentViewController(QWidget* content) {
    if (content_ == content)
        return;
    delete content_;
    content_ = content;
    if (content_)
        layout()->addWidget(content_);
}

void NAPopover::applyMargins() {
    // Room for the arrow on the side that faces the anchor.
    const int top = kPadding + (shownEdge_ == Edge::Bottom ? kArrowHeight : 0);
    const int bottom = kPadding + (shownEdge_ == Edge::Top ? kArrowHeight : 0);
    layout()->setContentsMargins(kPadding, top, kPadding, bottom);
}

void NAPopover::showRelativeToView(QWidget* anchor, Edge edge) {
    if (!anchor)
        return;
    anchor_ = anchor;
    shownEdge_ = edge;
    applyMargins();
    adjustSize();

    const QPoint anchorTop = anchor->mapToGlobal(QPoint(0, 0));
    const int anchorCentre = anchorTop.x() + anchor->width() / 2;
    const QScreen* screen = anchor->screen();
    const QRect room = screen ? screen->availableGeometry() : QRect();
    auto topFor = [&](Edge side) {
        return side == Edge::Bottom ? anchorTop.y() + anchor->height() : anchorTop.y() - height();
    };
    if (room.isValid()) {
        const int y = topFor(edge);
        if (y < room.top() || y + height() > room.bottom() + 1) {
            const Edge other = edge == Edge::Bottom ? Edge::Top : Edge::Bottom;
            const int otherY = topFor(other);
            if (otherY >= room.top() && otherY + height() <= room.bottom() + 1) {
                shownEdge_ = other;
                applyMargins();
                adjustSize();
            }
        }
    }

    int x = anchorCentre - width() / 2;
    if (room.isValid())
        x = std::clamp(x, room.left(), std::max(room.left(), room.right() + 1 - width()));
    arrowX_ = std::clamp(anchorCentre - x, kRadius + kArrowHalfWidth,
                         std::max(kRadius + kArrowHalfWidth, width() - kRadius - kArrowHalfWidth));
    move(x, topFor(shownEdge_));
    show();
    raise();
    activateWindow();
    update();
}

void NAPopover::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    const bool arrowOnTop = shownEdge_ == Edge::Bottom;
    QRectF body = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    if (arrowOnTop)
        body.setTop(body.top() + kArrowHeight);
    else
        body.setBottom(body.bottom() - kArrowHeight);

    QPainterPath path;
    path.addRoundedRect(body, kRadius, kRadius);
    QPainterPath arrow;
    const qreal tipY = arrowOnTop ? 0.5 : height() - 0.5;
    const qreal baseY = arrowOnTop ? body.top() + 1 : body.bottom() - 1;
    arrow.moveTo(arrowX_ - kArrowHalfWidth, baseY);
    arrow.lineTo(arrowX_, tipY);
    arrow.lineTo(arrowX_ + kArrowHalfWidth, baseY);
    arrow.closeSubpath();
    path = path.united(arrow);

    painter.setPen(QPen(QColor(196, 204, 216), 1));
    painter.setBrush(Qt::white);
    painter.drawPath(path);
}

}  // namespace sysmend
