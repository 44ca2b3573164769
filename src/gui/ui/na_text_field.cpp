#include "ui/na_text_field.h"

#include "ui/na_drawing.h"

namespace sysmend {

namespace {

void applyTextStyle(QLabel* label, const QFont& textFont, const QColor& color) {
    label->setFont(textFont);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setPalette(palette);
}

}  // namespace

NATextField::NATextField(QWidget* parent) : QLabel(parent) {
    applyTextStyle(this, font_r(13), NAColor(80));
}

NATextField_Title::NATextField_Title(QWidget* parent) : NATextField(parent) {
    applyTextStyle(this, font_light(26), NAColor(34));
}

NATextField_SubTitle::NATextField_SubTitle(QWidget* parent) : NATextField(parent) {
    applyTextStyle(this, font_light(15), NAColor(128));
    setWordWrap(true);
}

}  // namespace sysmend
