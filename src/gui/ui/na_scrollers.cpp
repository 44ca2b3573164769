#include "ui/na_scrollers.h"

#include "ui/na_drawing.h"

namespace sysmend {

namespace {

constexpr int kThickness = 10;

QString rgba(const QColor& color) {
    return QStringLiteral("rgba(%1,%2,%3,%4)")
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(color.alpha());
}

}  // namespace

NAScroller::NAScroller(QWidget* parent)
    : NAScroller(QColor(0, 0, 0, 80), QColor(0, 0, 0, 130), NAColor(248), parent) {}

NAScroller::NAScroller(const QColor& knob, const QColor& pressedKnob, const QColor& slot,
                       QWidget* parent)
    : QScrollBar(parent), knob_(knob), pressedKnob_(pressedKnob), slot_(slot) {
    applyLook();
}

void NAScroller::applyLook() {
    // A style sheet keeps the drawn knob and the one that answers the mouse the same. Both
    // orientations are styled, since a scroll area may turn the bar after it was made.
    QString css;
    for (const bool vertical : {true, false}) {
        const QString bar = vertical ? QStringLiteral("vertical") : QStringLiteral("horizontal");
        const QString across = vertical ? QStringLiteral("width") : QStringLiteral("height");
        const QString along = vertical ? QStringLiteral("height") : QStringLiteral("width");
        css += QStringLiteral(
                   "QScrollBar:%1 { background: %2; border: none; margin: 0; %3: %4px; }"
                   "QScrollBar::handle:%1 { background: %5; border-radius: 3px; margin: 2px;"
                   " min-%6: 28px; }"
                   "QScrollBar::handle:%1:pressed { background: %7; }"
                   "QScrollBar::add-line:%1, QScrollBar::sub-line:%1 { border: none;"
                   " background: none; width: 0; height: 0; }"
                   "QScrollBar::add-page:%1, QScrollBar::sub-page:%1 { background: none; }")
                   .arg(bar, rgba(slot_), across)
                   .arg(kThickness)
                   .arg(rgba(knob_), along, rgba(pressedKnob_));
    }
    setStyleSheet(css);
}

NAScroller_Model_One::NAScroller_Model_One(QWidget* parent)
    : NAScroller(QColor(11, 80, 208, 150), QColor(11, 80, 208, 220), NAColor(246), parent) {}

NAScroller_DarkModel::NAScroller_DarkModel(QWidget* parent)
    : NAScroller(QColor(255, 255, 255, 110), QColor(255, 255, 255, 170), NAColor(42), parent) {}

NAScroller_NoSlot::NAScroller_NoSlot(QWidget* parent)
    : NAScroller(QColor(0, 0, 0, 80), QColor(0, 0, 0, 130), Qt::transparent, parent) {}

}  // namespace sysmend
