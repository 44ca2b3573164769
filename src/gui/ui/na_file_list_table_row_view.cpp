#include "ui/na_file_list_table_row_view.h"

#include <QPainter>

#include "ui/na_drawing.h"

namespace sysmend {

NAFileListTableRowView::NAFileListTableRowView(QObject* parent)
    : NAFileListTableRowView(NAMakeColor(11, 80, 208, 0.12), parent) {}

NAFileListTableRowView::NAFileListTableRowView(const QColor& selectedBgColor, QObject* parent)
    : NATableRowView(selectedBgColor, parent) {}

void NAFileListTableRowView::drawSelectionInRect(QPainter* painter, const QRect& rect) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(selectedBgColor());
    painter->drawPath(bezierPathWithRoundedRect(QRectF(rect).adjusted(4, 1, -4, -1), 5));
    painter->restore();
}

}  // namespace sysmend
