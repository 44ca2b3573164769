#include "ui/na_outline_view.h"

#include <QPainter>

#include "ui/na_empty_state.h"
#include "ui/named_image.h"

namespace sysmend {

namespace {

constexpr int kDisclosureSize = 10;

}  // namespace

NAOutLineView::NAOutLineView(QWidget* parent) : QTreeView(parent) {
    setHeaderHidden(true);
    setFrameShape(QFrame::NoFrame);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setIndentation(18);
    const QSize size(kDisclosureSize, kDisclosureSize);
    collapseImage_ = namedImage(QStringLiteral("collapse"), size, devicePixelRatioF());
    expendImage_ = namedImage(QStringLiteral("expend"), size, devicePixelRatioF());
}

void NAOutLineView::reloadData() {
    reset();
    viewport()->update();
}

bool NAOutLineView::isEmpty() const {
    return !model() || model()->rowCount(rootIndex()) == 0;
}

void NAOutLineView::paintEvent(QPaintEvent* event) {
    if (!isEmpty()) {
        QTreeView::paintEvent(event);
        return;
    }
    QPainter painter(viewport());
    setListEmptyCaptionStyle(painter);
    drawEmptyState(painter, viewport()->rect(), devicePixelRatioF(), QStringLiteral("No Items"));
}

void NAOutLineView::drawBranches(QPainter* painter, const QRect& rect,
                                 const QModelIndex& index) const {
    // Only rows that hold others get a triangle, in the indentation just left of the row.
    if (!model() || !model()->hasChildren(index))
        return;
    const QPixmap& image = isExpanded(index) ? expendImage_ : collapseImage_;
    const int x = rect.right() - indentation() + (indentation() - kDisclosureSize) / 2;
    const int y = rect.center().y() - kDisclosureSize / 2;
    painter->drawPixmap(QRect(x, y, kDisclosureSize, kDisclosureSize), image);
}

}  // namespace sysmend
