#include "app/na_window_content_view_super_view.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWindow>

namespace sysmend {

namespace {

constexpr qreal kCornerRadius = 3;

// A rectangle rounded only on the corners asked for.
QPainterPath roundedRect(const QRectF& r, bool topLeft, bool topRight, bool bottomRight,
                         bool bottomLeft) {
    const qreal d = 2 * kCornerRadius;
    QPainterPath path;
    path.moveTo(r.left() + (topLeft ? kCornerRadius : 0), r.top());
    if (topRight) {
        path.lineTo(r.right() - kCornerRadius, r.top());
        path.arcTo(r.right() - d, r.top(), d, d, 90, -90);
    } else {
        path.lineTo(r.topRight());
    }
    if (bottomRight) {
        path.lineTo(r.right(), r.bottom() - kCornerRadius);
        path.arcTo(r.right() - d, r.bottom() - d, d, d, 0, -90);
    } else {
        path.lineTo(r.bottomRight());
    }
    if (bottomLeft) {
        path.lineTo(r.left() + kCornerRadius, r.bottom());
        path.arcTo(r.left(), r.bottom() - d, d, d, 270, -90);
    } else {
        path.lineTo(r.bottomLeft());
    }
    if (topLeft) {
        path.lineTo(r.left(), r.top() + kCornerRadius);
        path.arcTo(r.left(), r.top(), d, d, 180, -90);
    }
    path.closeSubpath();
    return path;
}

}  // namespace

NAWindowContentViewSuperView::NAWindowContentViewSuperView(QWidget* parent) : QWidget(parent) {}

void NAWindowContentViewSuperView::setSplitX(int x) {
    splitX_ = x;
    update();
}

void NAWindowContentViewSuperView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF all = rect();
    painter.fillPath(roundedRect(QRectF(0, 0, splitX_, all.height()), true, false, false, true),
                     QColor(45, 57, 71));
    painter.fillPath(roundedRect(QRectF(splitX_, 0, all.width() - splitX_, all.height()), false,
                                 true, true, false),
                     QColor(255, 255, 255));
}

void NAWindowContentViewSuperView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    // The window manager moves the window when it can, which also snaps and clamps it.
    if (QWindow* handle = window()->windowHandle(); handle && handle->startSystemMove())
        return;
    dragging_ = true;
    dragOffset_ = event->globalPosition().toPoint() - window()->frameGeometry().topLeft();
}

void NAWindowContentViewSuperView::mouseMoveEvent(QMouseEvent* event) {
    if (dragging_)
        window()->move(event->globalPosition().toPoint() - dragOffset_);
}

void NAWindowContentViewSuperView::mouseReleaseEvent(QMouseEvent*) {
    dragging_ = false;
}

NAWindowCloseButton::NAWindowCloseButton(QWidget* parent) : QAbstractButton(parent) {
    setFixedSize(sizeHint());
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);  // repaint on enter and leave for the cross
    setToolTip(tr("Close"));
    setAccessibleName(tr("Close"));
}

void NAWindowCloseButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF r = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(QColor(224, 68, 62), 0.8));
    painter.setBrush(isDown() ? QColor(191, 64, 58) : QColor(255, 95, 87));
    painter.drawEllipse(r);
    if (underMouse()) {
        // The cross appears under the pointer, as on the platform's own buttons.
        painter.setPen(QPen(QColor(77, 0, 0), 1.2, Qt::SolidLine, Qt::RoundCap));
        const QPointF c = r.center();
        constexpr qreal a = 2.6;
        painter.drawLine(c + QPointF(-a, -a), c + QPointF(a, a));
        painter.drawLine(c + QPointF(-a, a), c + QPointF(a, -a));
    }
}

}  // namespace sysmend
