// The empty state of a list or a result page: the application's image a little above the
// middle, with a caption under it.
#pragma once

#include <QPainter>
#include <QRect>
#include <QString>

namespace sysmend {

// Draws the "sysmend" image centred across `bounds`, its top 94 pixels above the middle, and
// `caption` centred 10 pixels under it in the painter's current font and pen.
void drawEmptyState(QPainter& painter, const QRect& bounds, qreal devicePixelRatio,
                    const QString& caption);

// The caption's look in empty tables and outlines: 13 pixels, a blue-tinted grey.
void setListEmptyCaptionStyle(QPainter& painter);

}  // namespace sysmend
