// The application's images by name (":/images/<name>.svg"), drawn at the screen's pixel density
// so that they stay sharp on high-density displays.
#pragma once

#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

namespace sysmend {

// The image `name` drawn into `size` device-independent pixels at `devicePixelRatio`; a null
// pixmap when no image has that name.
QPixmap namedImage(const QString& name, QSize size, qreal devicePixelRatio);

// The application's icon: the one the application set for its windows, else the bundled one
// (tests and benchmarks set none).
QIcon applicationIconImage();

// Registers the images, icons and cell layouts compiled into sysmend_gui_lib. Call once before
// the first image or cell is loaded (the static library's resources are not registered on
// their own).
void initGuiResources();

}  // namespace sysmend
