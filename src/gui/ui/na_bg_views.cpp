#include "ui/na_bg_views.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

#include "ui/na_drawing.h"

namespace sysmend {

namespace {

const QColor kBorderColor(226, 229, 234);

}  // namespace

NABgView::NABgView(QWidget* parent)
    : QWidget(parent), fillColor_(Qt::white), borderColor_(kBorderColor) {}

void NABgView::setFillColor(const QColor& color) {
    fillColor_ = color;
    update();
}

void NABgView::setBorder(int edges, qreal cornerRadius) {
    edges_ = edges;
    cornerRadius_ = cornerRadius;
    update();
}

void NABgView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRectF bounds = rect();
    if (edges_ & AllEdges) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(borderColor_, 1));
        painter.setBrush(fillColor_);
        painter.drawPath(
            bezierPathWithRoundedRect(bounds.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius_));
        return;
    }
    painter.fillRect(rect(), fillColor_);
    painter.setPen(QPen(borderColor_, 1));
    if (edges_ & TopEdge)
        painter.drawLine(QPointF(0, 0.5), QPointF(width(), 0.5));
    if (edges_ & BottomEdge)
        painter.drawLine(QPointF(0, height() - 0.5), QPointF(width(), height() - 0.5));
    if (edges_ & RightEdge)
        painter.drawLine(QPointF(width() - 0.5, 0), QPointF(width() - 0.5, height()));
}

NABgView2::NABgView2(QWidget* parent) : NABgView(parent) {
    setFillColor(NAColor(246));
    setBorder(TopEdge);
}

NABgView3::NABgView3(QWidget* parent) : NABgView(parent) {
    setBorder(AllEdges, 8);
}

NABgColorFill::NABgColorFill(QWidget* parent) : NABgView(parent) {
    setFillColor(Qt::transparent);
}

NABgView_RightBorder::NABgView_RightBorder(QWidget* parent) : NABgView(parent) {
    setBorder(RightEdge);
}

NABgView_ContentView::NABgView_ContentView(QWidget* parent) : NABgView(parent) {
    setBorder(BottomEdge);
}

NABgView_CanMoveWindow::NABgView_CanMoveWindow(QWidget* parent) : NABgView(parent) {}

void NABgView_CanMoveWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        NABgView::mousePressEvent(event);
        return;
    }
    event->accept();
    // The window system moves the window where it can (Wayland allows nothing else);
    // otherwise the window follows the pointer.
    QWindow* handle = window()->windowHandle();
    if (handle && handle->startSystemMove())
        return;
    grabOffset_ = event->globalPosition().toPoint() - window()->frameGeometry().topLeft();
    dragging_ = true;
}

void NABgView_CanMoveWindow::mouseMoveEvent(QMouseEvent* event) {
    if (!dragging_) {
        NABgView::mouseMoveEvent(event);
        return;
    }
    event->accept();
    window()->move(event->globalPosition().toPoint() - grabOffset_);
}

void NABgView_CanMoveWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (dragging_ && event->button() == Qt::LeftButton) {
        dragging_ = false;
        event->accept();
        return;
    }
    NABgView::mouseReleaseEvent(event);
}

}  // namespace sysmend
