// Thumbnails of image files for the file lists.
#pragma once

#include <QImage>
#include <QUrl>

namespace sysmend {

// The image at the local file `url` (a host path, see Volume::hostPath), its orientation tag
// applied, decoded at most max(width, height) pixels on its longer side and centred, aspect
// kept, in a transparent image of width x height pixels (both truncated). Images smaller than
// that are not enlarged. A null image when the file cannot be read as an image or the size is
// empty. Reads only the file; safe on any thread.
QImage thumbnailCreatWithUrl(const QUrl& url, qreal width, qreal height);

}  // namespace sysmend
