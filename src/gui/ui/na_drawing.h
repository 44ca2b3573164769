// Colours, fonts and path shapes that the pages and controls draw with.
//
// Colours take 0-255 components as the designs give them. Fonts are the Helvetica family at a
// size in pixels (the designs' points); where Helvetica is not installed the closest sans-serif
// stands in with the same weight and slant. Inside a widget's member functions the font
// helpers must be called qualified (sysmend::font), because QWidget::font hides them.
//
// Angles are in degrees, counter-clockwise as seen on the screen starting from the positive x
// axis, in widget coordinates (y grows downwards), the convention QPainterPath::arcTo uses.
#pragma once

#include <QColor>
#include <QFont>
#include <QLinearGradient>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

namespace sysmend {

// Opaque grey with all three components `grey` / 255.
QColor NAColor(int grey);
// The colour red / 255, green / 255, blue / 255 with alpha `alpha` (0 to 1).
QColor NAMakeColor(int red, int green, int blue, qreal alpha);

// `color` at rising alpha (0.1, 0.3, 0.5, 0.7, 0.9, 1.0) from left to right, in object
// bounding coordinates, so it fills whatever it is drawn into.
QLinearGradient gradientWithTargetColor(const QColor& color);

// The complementary colour, alpha kept.
QColor inverseColor(const QColor& color);
// The same colour with alpha `alpha` (0 to 1).
QColor colorWithAlpa(const QColor& color, qreal alpha);
// Red, green and blue multiplied by `factor` and kept within range (below 1 darker, above
// lighter); alpha kept.
QColor colorWithMulx(const QColor& color, qreal factor);

// Helvetica Light.
QFont font(int size);
QFont font_light(int size);
// Helvetica regular.
QFont font_r(int size);
// Helvetica Bold.
QFont font_blod(int size);
// Helvetica Bold Oblique (slanted on purpose).
QFont fontBold(int size);

// Polar coordinates around a centre.
class FLPolar {
  public:
    static QPointF pointWithPolarCenter(QPointF center, qreal radius, qreal angle);
    // The distance from `center` to `point` and its angle in [0, 360); the angle is 0 when the
    // point is the centre. Either out-parameter may be null.
    static void coordsForPoint(QPointF point, QPointF center, qreal* radius, qreal* angle);
};

// The part of a ring between two radii from `startAngle` to `endAngle` (counter-clockwise),
// closed: the outer arc, then the inner arc back.
QPainterPath circleSegmentWithCenter(QPointF center, qreal startAngle, qreal endAngle,
                                     qreal smallRadius, qreal bigRadius);

// A rectangle with all four corners rounded (the radius is limited to half the shorter side).
QPainterPath bezierPathWithRoundedRect(const QRectF& rect, qreal cornerRadius);
void appendBezierPathWithRoundedRect(QPainterPath& path, const QRectF& rect, qreal cornerRadius);
// A rectangle whose left-bottom, left-top, right-bottom and right-top corners are rounded where
// their flag is true and square elsewhere (top and bottom as seen on the screen).
QPainterPath bezierPathWithRoundedRect(bool haslb, bool haslt, bool hasrb, bool hasrt,
                                       const QRectF& rect, qreal cornerRadius);

}  // namespace sysmend
