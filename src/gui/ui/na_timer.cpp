#include "ui/na_timer.h"

#include <QVariant>

namespace sysmend {

namespace {
const char* const kIntervalProperty = "sysmendTimerInterval";
}

void pauseTimer(QTimer* timer) {
    if (!timer)
        return;
    timer->stop();
}

void resumeTimer(QTimer* timer) {
    if (!timer)
        return;
    // The first tick comes at once; the interval is put back after it (the page's own slot,
    // connected earlier, runs first).
    QVariant saved = timer->property(kIntervalProperty);
    if (!saved.isValid()) {
        saved = timer->interval();
        timer->setProperty(kIntervalProperty, saved);
    }
    const int interval = saved.toInt();
    QObject::connect(
        timer, &QTimer::timeout, timer,
        [timer, interval] {
            timer->setProperty(kIntervalProperty, QVariant());
            timer->setInterval(interval);
        },
        Qt::SingleShotConnection);
    timer->start(0);
}

}  // namespace sysmend
