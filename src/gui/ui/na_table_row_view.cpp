#include "ui/na_table_row_view.h"

#include <QPainter>

namespace sysmend {

NATableRowView::NATableRowView(const QColor& selectedBgColor, QObject* parent)
    : QStyledItemDelegate(parent), selectedBgColor_(selectedBgColor) {}

void NATableRowView::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex&) const {
    // The style's focus frame, hover tint and the model's texts would show through the cell
    // view, so the row draws only its background and selection.
    drawBackgroundInRect(painter, option.rect);
    if (option.state & QStyle::State_Selected)
        drawSelectionInRect(painter, option.rect);
}

void NATableRowView::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                          const QModelIndex&) const {
    editor->setGeometry(option.rect);
}

bool NATableRowView::editorEvent(QEvent*, QAbstractItemModel*, const QStyleOptionViewItem&,
                                 const QModelIndex&) {
    return false;
}

void NATableRowView::drawBackgroundInRect(QPainter*, const QRect&) const {}

void NATableRowView::drawSelectionInRect(QPainter* painter, const QRect& rect) const {
    painter->fillRect(rect, selectedBgColor_);
}

void NATableRowView2::drawBackgroundInRect(QPainter* painter, const QRect& rect) const {
    painter->fillRect(QRect(rect.left() + 12, rect.bottom(), rect.width() - 12, 1),
                      QColor(234, 237, 242));
}

}  // namespace sysmend
