#include "app/na_main_window.h"

#include <QCloseEvent>

namespace sysmend {

NAMainWindow::NAMainWindow(QWidget* parent) : QWidget(parent) {
    setWindowFlag(Qt::FramelessWindowHint);
    // The corners outside the drawn title bar's rounding stay see-through.
    setAttribute(Qt::WA_TranslucentBackground);
}

void NAMainWindow::closeEvent(QCloseEvent* event) {
    emit windowWillClose();
    QWidget::closeEvent(event);
}

}  // namespace sysmend
