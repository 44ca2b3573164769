// Pausing and resuming a repeating timer the way the pages do: a paused timer keeps its
// interval and its target but does not fire; a resumed one fires at once and then at its
// interval again. A null timer is left alone.
#pragma once

#include <QTimer>

namespace sysmend {

void pauseTimer(QTimer* timer);
void resumeTimer(QTimer* timer);

}  // namespace sysmend
