#include "ui/na_no_content_view.h"

#include <QPainter>

#include "ui/na_empty_state.h"

namespace sysmend {

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
    QFont textFont = font();
    textFont.setPointSize(13);
    painter.setFont(textFont);
    painter.setPen(QColor(140, 140, 140));
    drawEmptyState(painter, rect(), devicePixelRatioF(), QStringLiteral("No Items"));
}

}  // namespace sysmend
