// The pictures of result rows: an item's or group's ImageRef drawn as a pixmap.
#pragma once

#include <QPixmap>
#include <QSize>

#include "model/image_ref.h"

namespace sysmend {

// The picture `image` stands for, drawn into `size` device-independent pixels at
// `devicePixelRatio`: an application resource by name, an application bundle's own icon (its
// Info.plist's CFBundleIconFile in Contents/Resources, read from the current volume), an
// image file, or the style's generic file, folder or application picture when there is
// nothing better. A null pixmap only for ImageRef::none(). Pictures are cached by reference
// and size, so rows made again cost no decoding. GUI thread only.
QPixmap itemImage(const ImageRef& image, QSize size, qreal devicePixelRatio);

}  // namespace sysmend
