#include "ui/na_buttons.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "ui/na_drawing.h"

namespace sysmend {

namespace {

const QColor kAccent(11, 80, 208);
constexpr int kTallButton = 40;
constexpr int kIconTitleGap = 6;

}  // namespace

NAOnOffButton::NAOnOffButton(QWidget* parent) : QAbstractButton(parent) {
    setCheckable(true);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
}

void NAOnOffButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // The switch keeps its proportions and sits centred in whatever space it is given.
    const QSizeF track = QSizeF(sizeHint()).scaled(QSizeF(size()), Qt::KeepAspectRatio);
    const QRectF trackRect(QPointF((width() - track.width()) / 2, (height() - track.height()) / 2),
                           track);
    const qreal radius = trackRect.height() / 2;
    QColor trackColor = isChecked() ? kAccent : NAColor(206);
    if (isDown())
        trackColor = colorWithMulx(trackColor, 0.88);
    if (!isEnabled())
        trackColor = colorWithAlpa(trackColor, 0.45);
    painter.setPen(Qt::NoPen);
    painter.setBrush(trackColor);
    painter.drawRoundedRect(trackRect, radius, radius);

    const qreal inset = 2;
    const qreal knob = trackRect.height() - 2 * inset;
    const qreal knobX = isChecked() ? trackRect.right() - inset - knob : trackRect.left() + inset;
    const QRectF knobRect(knobX, trackRect.top() + inset, knob, knob);
    painter.setBrush(QColor(0, 0, 0, 40));  // a soft shadow under the knob
    painter.drawEllipse(knobRect.translated(0, 0.75));
    painter.setBrush(isEnabled() ? QColor(Qt::white) : NAColor(248));
    painter.drawEllipse(knobRect);
}

NAColorFillButton::NAColorFillButton(QWidget* parent)
    : QAbstractButton(parent), fillColor_(kAccent), titleColor_(Qt::white) {
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
}

void NAColorFillButton::setFillColor(const QColor& color) {
    fillColor_ = color;
    update();
}

void NAColorFillButton::setTitleColor(const QColor& color) {
    titleColor_ = color;
    update();
}

void NAColorFillButton::setCornerRadius(qreal radius) {
    cornerRadius_ = radius;
    update();
}

QFont NAColorFillButton::titleFont() const {
    return height() >= kTallButton ? font_light(std::min(height() / 2, 22)) : font_r(14);
}

QSize NAColorFillButton::sizeHint() const {
    const int textWidth = QFontMetrics(font_r(14)).horizontalAdvance(text());
    return {std::max(textWidth + 36, 80), 30};
}

void NAColorFillButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = isDown() ? colorWithMulx(fillColor_, 0.85) : fillColor_;
    QColor title = titleColor_;
    if (!isEnabled()) {
        fill = colorWithAlpa(fill, fill.alphaF() * 0.45);
        title = colorWithAlpa(title, title.alphaF() * 0.7);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawPath(bezierPathWithRoundedRect(QRectF(rect()), cornerRadius_));
    painter.setPen(title);
    painter.setFont(titleFont());
    painter.drawText(rect(), Qt::AlignCenter, text());
}

NAButton::NAButton(QWidget* parent) : QAbstractButton(parent) {
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
    setFont(font_r(13));
}

QSize NAButton::sizeHint() const {
    const QFontMetrics metrics(font());
    int width = metrics.horizontalAdvance(text());
    if (!icon().isNull())
        width += iconSize().width() + (text().isEmpty() ? 0 : kIconTitleGap);
    return {width + 8, std::max(metrics.height(), icon().isNull() ? 0 : iconSize().height()) + 6};
}

void NAButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor color = isDown() ? colorWithMulx(kAccent, 0.75) : kAccent;
    if (!isEnabled())
        color = NAColor(170);
    const QFontMetrics metrics(font());
    const bool hasIcon = !icon().isNull();
    const int contentWidth =
        metrics.horizontalAdvance(text()) +
        (hasIcon ? iconSize().width() + (text().isEmpty() ? 0 : kIconTitleGap) : 0);
    int x = (width() - contentWidth) / 2;
    if (hasIcon) {
        const QRect iconRect(x, (height() - iconSize().height()) / 2, iconSize().width(),
                             iconSize().height());
        icon().paint(&painter, iconRect, Qt::AlignCenter,
                     isEnabled() ? QIcon::Normal : QIcon::Disabled);
        x += iconSize().width() + kIconTitleGap;
    }
    painter.setPen(color);
    painter.setFont(font());
    painter.drawText(QRect(x, 0, width() - x, height()), Qt::AlignLeft | Qt::AlignVCenter, text());
}

}  // namespace sysmend
