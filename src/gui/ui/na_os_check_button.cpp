#include "ui/na_os_check_button.h"

#include <QPainter>
#include <QPixmapCache>

#include "ui/named_image.h"

namespace sysmend {

namespace {

constexpr int kImageInset = 5;
constexpr int kDefaultImageSize = 16;

Qt::CheckState checkStateFor(int state) {
    if (state == 0)
        return Qt::Unchecked;
    return state == 1 ? Qt::Checked : Qt::PartiallyChecked;
}

int stateFor(Qt::CheckState state) {
    switch (state) {
        case Qt::Unchecked:
            return 0;
        case Qt::Checked:
            return 1;
        case Qt::PartiallyChecked:
            break;
    }
    return -1;
}

// The SVG is rendered once per name, size and density; tables repaint their boxes often.
QPixmap cachedImage(const QString& name, QSize size, qreal dpr) {
    const QString key = QStringLiteral("sysmend-check:%1:%2x%3@%4")
                            .arg(name)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(dpr);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = namedImage(name, size, dpr);
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}

void setUpBox(QCheckBox* box) {
    box->setTristate(true);
    // Mac check boxes do not take the keyboard focus when clicked.
    box->setFocusPolicy(Qt::TabFocus);
}

}  // namespace

NAOSCheckButton::NAOSCheckButton(QWidget* parent) : QCheckBox(parent) {
    setUpBox(this);
}

int NAOSCheckButton::state() const {
    return stateFor(checkState());
}

void NAOSCheckButton::setState(int state) {
    setCheckState(checkStateFor(state));
}

QSize NAOSCheckButton::sizeHint() const {
    const int side = kDefaultImageSize + 2 * kImageInset;
    return {side, side};
}

QString NAOSCheckButton::imageNameToDraw() const {
    if (!isEnabled())
        return offImage();
    switch (state()) {
        case 1:
            return onImage();
        case 0:
            return offImage();
        default:
            return mixImage();
    }
}

void NAOSCheckButton::paintEvent(QPaintEvent*) {
    const QRect target = rect().adjusted(kImageInset, kImageInset, -kImageInset, -kImageInset);
    if (target.isEmpty())
        return;
    QPainter painter(this);
    painter.drawPixmap(target, cachedImage(imageNameToDraw(), target.size(), devicePixelRatioF()));
}

void NAOSCheckButton::nextCheckState() {
    setCheckState(checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
}

bool NAOSCheckButton::hitButton(const QPoint& pos) const {
    return rect().contains(pos);
}

QString NAOSCheckButton_WebShield::imageNameToDraw() const {
    return isEnabled() ? NAOSCheckButton::imageNameToDraw() : mustCheckedImage();
}

NAOSCheckButton_Normal::NAOSCheckButton_Normal(QWidget* parent) : QCheckBox(parent) {
    setUpBox(this);
}

int NAOSCheckButton_Normal::state() const {
    return stateFor(checkState());
}

void NAOSCheckButton_Normal::setState(int state) {
    setCheckState(checkStateFor(state));
}

void NAOSCheckButton_Normal::nextCheckState() {
    setCheckState(checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
}

}  // namespace sysmend
