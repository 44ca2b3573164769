#include "ui/na_drawing.h"

#include <QStringList>
#include <QtMath>
#include <algorithm>
#include <cmath>

namespace sysmend {

QColor NAColor(int grey) {
    return QColor(grey, grey, grey);
}

QColor NAMakeColor(int red, int green, int blue, qreal alpha) {
    QColor color(red, green, blue);
    color.setAlphaF(static_cast<float>(std::clamp<qreal>(alpha, 0.0, 1.0)));
    return color;
}

QLinearGradient gradientWithTargetColor(const QColor& color) {
    QLinearGradient gradient(0.0, 0.5, 1.0, 0.5);
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    constexpr qreal kAlphas[] = {0.1, 0.3, 0.5, 0.7, 0.9, 1.0};
    constexpr int kSteps = static_cast<int>(std::size(kAlphas));
    for (int i = 0; i < kSteps; ++i)
        gradient.setColorAt(qreal(i) / (kSteps - 1), colorWithAlpa(color, kAlphas[i]));
    return gradient;
}

QColor inverseColor(const QColor& color) {
    const QColor rgb = color.toRgb();
    QColor inverse(255 - rgb.red(), 255 - rgb.green(), 255 - rgb.blue());
    inverse.setAlpha(rgb.alpha());
    return inverse;
}

QColor colorWithAlpa(const QColor& color, qreal alpha) {
    QColor result = color.toRgb();
    result.setAlphaF(static_cast<float>(std::clamp<qreal>(alpha, 0.0, 1.0)));
    return result;
}

QColor colorWithMulx(const QColor& color, qreal factor) {
    const QColor rgb = color.toRgb();
    const auto scale = [factor](float component) {
        return static_cast<float>(std::clamp<qreal>(component * factor, 0.0, 1.0));
    };
    return QColor::fromRgbF(scale(rgb.redF()), scale(rgb.greenF()), scale(rgb.blueF()),
                            rgb.alphaF());
}

namespace {

QFont helvetica(int size, QFont::Weight weight, bool italic) {
    QFont result;
    // Helvetica where it exists (the Mac); elsewhere its metric twins, then any sans-serif.
    result.setFamilies({QStringLiteral("Helvetica"), QStringLiteral("Helvetica Neue"),
                        QStringLiteral("Nimbus Sans"), QStringLiteral("Nimbus Sans L"),
                        QStringLiteral("Liberation Sans"), QStringLiteral("Arial"),
                        QStringLiteral("DejaVu Sans")});
    result.setStyleHint(QFont::SansSerif);
    result.setPixelSize(std::max(size, 1));
    result.setWeight(weight);
    result.setItalic(italic);
    return result;
}

}  // namespace

QFont font(int size) {
    return helvetica(size, QFont::Light, false);
}

QFont font_light(int size) {
    return helvetica(size, QFont::Light, false);
}

QFont font_r(int size) {
    return helvetica(size, QFont::Normal, false);
}

QFont font_blod(int size) {
    return helvetica(size, QFont::Bold, false);
}

QFont fontBold(int size) {
    return helvetica(size, QFont::Bold, true);
}

QPointF FLPolar::pointWithPolarCenter(QPointF center, qreal radius, qreal angle) {
    const qreal radians = qDegreesToRadians(angle);
    // Screen y grows downwards, so counter-clockwise means subtracting the sine.
    return {center.x() + radius * std::cos(radians), center.y() - radius * std::sin(radians)};
}

void FLPolar::coordsForPoint(QPointF point, QPointF center, qreal* radius, qreal* angle) {
    const qreal dx = point.x() - center.x();
    const qreal dy = center.y() - point.y();
    if (radius)
        *radius = std::hypot(dx, dy);
    if (angle) {
        qreal degrees = (dx == 0.0 && dy == 0.0) ? 0.0 : qRadiansToDegrees(std::atan2(dy, dx));
        if (degrees < 0.0)
            degrees += 360.0;
        *angle = degrees >= 360.0 ? 0.0 : degrees;
    }
}

QPainterPath circleSegmentWithCenter(QPointF center, qreal startAngle, qreal endAngle,
                                     qreal smallRadius, qreal bigRadius) {
    const qreal sweep = endAngle - startAngle;
    const QRectF outer(center.x() - bigRadius, center.y() - bigRadius, 2 * bigRadius,
                       2 * bigRadius);
    const QRectF inner(center.x() - smallRadius, center.y() - smallRadius, 2 * smallRadius,
                       2 * smallRadius);
    QPainterPath path;
    path.arcMoveTo(outer, startAngle);
    path.arcTo(outer, startAngle, sweep);
    path.arcTo(inner, endAngle, -sweep);
    path.closeSubpath();
    return path;
}

QPainterPath bezierPathWithRoundedRect(const QRectF& rect, qreal cornerRadius) {
    return bezierPathWithRoundedRect(true, true, true, true, rect, cornerRadius);
}

void appendBezierPathWithRoundedRect(QPainterPath& path, const QRectF& rect, qreal cornerRadius) {
    path.addPath(bezierPathWithRoundedRect(rect, cornerRadius));
}

QPainterPath bezierPathWithRoundedRect(bool haslb, bool haslt, bool hasrb, bool hasrt,
                                       const QRectF& rect, qreal cornerRadius) {
    const QRectF r = rect.normalized();
    const qreal radius = std::clamp<qreal>(cornerRadius, 0.0, std::min(r.width(), r.height()) / 2);
    const qreal d = 2 * radius;
    QPainterPath path;
    // Clockwise on the screen from the top-left corner.
    if (haslt && radius > 0) {
        path.arcMoveTo(QRectF(r.left(), r.top(), d, d), 180);
        path.arcTo(QRectF(r.left(), r.top(), d, d), 180, -90);
    } else {
        path.moveTo(r.topLeft());
    }
    if (hasrt && radius > 0)
        path.arcTo(QRectF(r.right() - d, r.top(), d, d), 90, -90);
    else
        path.lineTo(r.topRight());
    if (hasrb && radius > 0)
        path.arcTo(QRectF(r.right() - d, r.bottom() - d, d, d), 0, -90);
    else
        path.lineTo(r.bottomRight());
    if (haslb && radius > 0)
        path.arcTo(QRectF(r.left(), r.bottom() - d, d, d), 270, -90);
    else
        path.lineTo(r.bottomLeft());
    path.closeSubpath();
    return path;
}

}  // namespace sysmend
