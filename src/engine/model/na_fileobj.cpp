#include "model/na_fileobj.h"

#include "model/na_group_obj.h"
#include "platform/metadata.h"
#include "platform/path.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

// Disk space in use rather than the logical size: what removing the item frees.
constexpr int kAllocatedSize = 1;

std::string nameFromPath(std::string_view volumePath) {
    return path::deletingPathExtension(path::lastPathComponent(volumePath));
}

}  // namespace

NAFileobj::NAFileobj() {
    enablePropagation();
}

NAFileobj::NAFileobj(std::string_view volumePath)
    : filePath_(volumePath),
      fileIcon_(ImageRef::fileIcon(filePath_)),
      fileSize_(sizeAtPath(volumePath, kAllocatedSize)) {
    enablePropagation();
}

NAFileobj::NAFileobj(std::string_view volumePath, bool getSize)
    : fileName_(nameFromPath(volumePath)),
      filePath_(volumePath),
      fileIcon_(ImageRef::fileIcon(filePath_)),
      fileSize_(getSize ? sizeAtPath(volumePath, kAllocatedSize) : 0) {
    enablePropagation();
}

std::shared_ptr<NAFileobj> NAFileobj::initWithURl(std::string_view volumePath) {
    std::optional<MetadataItem> item = metadataItemForPath(volumePath);
    if (!item || !item->path)
        return nullptr;
    auto file = std::make_shared<NAFileobj>();
    file->setFileName(item->displayName ? *item->displayName : nameFromPath(*item->path));
    file->setCreateTime(item->contentCreationDate);
    file->setFileSize(item->fsSize.value_or(0));
    file->setFileIcon(ImageRef::fileIcon(*item->path));
    file->setFilePath(*item->path);
    return file;
}

std::shared_ptr<NAGroupObj> NAFileobj::group() const {
    const NAFileobj* item = this;
    std::shared_ptr<const NAFileobj> ancestor;  // keeps `item` alive while the walk looks at it
    while (item != nullptr) {
        if (std::shared_ptr<NAGroupObj> owner = item->group_.lock())
            return owner;
        ancestor = item->superObj();
        item = ancestor.get();
    }
    return nullptr;
}

void NAFileobj::addChilren(const std::shared_ptr<NAFileobj>& child) {
    if (std::shared_ptr<NAFileobjArray> list = chilren())
        list->push_back(child);
    child->superObj_ = std::static_pointer_cast<NAFileobj>(shared_from_this());
}

void NAFileobj::addChilrens(const NAFileobjArray& children) {
    for (const std::shared_ptr<NAFileobj>& child : children)
        addChilren(child);
}

void NAFileobj::setIsChecked(std::int64_t isChecked) {
    NAObject::setIsChecked(isChecked);
    if (isNeedChangeSubGroupsOrChirenState()) {
        willChangeChilrenCheckStateTo(static_cast<std::int8_t>(isChecked));
    }
    if (isNeedChangeGroupOrSuperState()) {
        if (superObj())
            willChangeSuperCheckState();
        if (group())
            willChangeGroupCheckState();
    }
}

void NAFileobj::willChangeChilrenCheckStateTo(std::int8_t isChecked) {
    std::shared_ptr<NAFileobjArray> list = chilren();
    if (!list)
        return;
    // Each child also recomputes this item and the group on its way up; with every child
    // holding the same mark that gives the same result, and the group stays consistent.
    for (const std::shared_ptr<NAFileobj>& child : *list)
        child->setIsChecked(isChecked);
}

void NAFileobj::willChangeSuperCheckState() {
    std::shared_ptr<NAFileobj> parent = superObj();
    if (!parent)
        return;
    std::shared_ptr<NAFileobjArray> siblings = parent->chilren();
    if (!siblings)
        return;
    CheckTally tally;
    for (const std::shared_ptr<NAFileobj>& item : *siblings) {
        if (tally.add(item->isChecked()))
            break;
    }
    tally.applyTo(*parent);
}

void NAFileobj::willChangeGroupCheckState() {
    std::shared_ptr<NAGroupObj> owner = group();
    if (!owner)
        return;
    CheckTally tally;
    for (const NAFileobjArray* list : {&owner->contents(), &owner->cache_contents()}) {
        for (const std::shared_ptr<NAFileobj>& item : *list) {
            if (tally.add(item->isChecked()))
                break;
        }
    }
    tally.applyTo(*owner);
}

void NAFileobj::print(std::ostream& out) const {
    out << (fileName().empty() ? title() : fileName()) << '[' << isChecked() << ']';
    std::shared_ptr<NAFileobjArray> list = chilren();
    if (!list || list->empty())
        return;
    out << '{';
    const char* separator = "";
    for (const std::shared_ptr<NAFileobj>& child : *list) {
        out << separator << *child;
        separator = " ";
    }
    out << '}';
}

}  // namespace sysmend
