#include "ui/na_line_view.h"

#include <QPainter>

namespace sysmend {

NALineView::NALineView(QWidget* parent) : QWidget(parent) {}

void NALineView::setLinePosition(int position) {
    linePosition_ = position;
    update();
}

void NALineView::setLineColor(const QColor& color) {
    lineColor_ = color;
    update();
}

void NALineView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const int y = height() - 1;
    if (linePosition_ == 1) {
        painter.fillRect(0, y, width(), 1, lineColor_);
    } else if (linePosition_ == 2) {
        const int inset = width() / 4;
        painter.fillRect(inset, y, width() - 2 * inset, 1, lineColor_);
    }
}

}  // namespace sysmend
