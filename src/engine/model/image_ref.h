// What an item's picture is, without drawing it: the engine has no images, the GUI turns an
// ImageRef into a pixmap (and the CLI ignores it).
#pragma once

#include <string>

namespace sysmend {

struct ImageRef {
    enum class Kind {
        None,          // no picture
        FileIcon,      // the file viewer's icon for the volume path in `value` (a bundle's own icon
                       // for an application bundle)
        NamedImage,    // an image resource of the application by name ("malware_icon", "crashes")
        FileTypeIcon,  // the generic icon of a file type given by extension ("app", "safariextz")
        ImageFile,     // the picture stored in the image file at the volume path in `value`
    };

    Kind kind = Kind::None;
    std::string value;

    static ImageRef none() { return {}; }
    static ImageRef fileIcon(std::string volumePath) { return {Kind::FileIcon, std::move(volumePath)}; }
    static ImageRef named(std::string name) { return {Kind::NamedImage, std::move(name)}; }
    static ImageRef fileTypeIcon(std::string ext) { return {Kind::FileTypeIcon, std::move(ext)}; }
    static ImageRef imageFile(std::string volumePath) { return {Kind::ImageFile, std::move(volumePath)}; }

    bool isNone() const { return kind == Kind::None; }
    bool operator==(const ImageRef&) const = default;
};

}  // namespace sysmend
