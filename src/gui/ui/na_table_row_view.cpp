#include "ui/na_table_row_view.h"

#include <QPainter>

namespace sysmend {

NATableRowView::NATableRowView(const QColor& selectedBgColor, QObject* parent)
    : QStyledItemDelegate(parent), selectedBgColor_(selectedBgColor) {}

void NATableRowView::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex&) const {
    // The cell view on top draws the content; the style's focus frame and hover tint would
    // show through it, so the row draws only its selection.
    if (option.state & QStyle::State_Selected)
        drawSelectionInRect(painter, option.rect);
}

void NATableRowView::drawSelectionInRect(QPainter* painter, const QRect& rect) const {
    painter->fillRect(rect, selectedBgColor_);
}

}  // namespace sysmend
