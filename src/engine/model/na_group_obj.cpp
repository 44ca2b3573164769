#include "model/na_group_obj.h"

#include <algorithm>

namespace sysmend {
namespace {

// Sets `item` without letting it recompute what lies above it.
void setWithoutUpward(NAObject& item, std::int64_t isChecked) {
    item.setIsNeedChangeGroupOrSuperState(false);
    item.setIsChecked(isChecked);
    item.setIsNeedChangeGroupOrSuperState(true);
}

void printItems(std::ostream& out, const NAFileobjArray& items, const char*& separator) {
    for (const std::shared_ptr<NAFileobj>& item : items) {
        out << separator << *item;
        separator = " ";
    }
}

}  // namespace

NAGroupObj::NAGroupObj() {
    enablePropagation();
}

NAGroupObj::NAGroupObj(std::string title, ImageRef attachImage)
    : NAObject(std::move(title), std::move(attachImage)) {
    enablePropagation();
}

void NAGroupObj::addFileObj(const std::shared_ptr<NAFileobj>& file) {
    contents_.push_back(file);
    size_ += file->fileSize();
    file->setGroup(std::static_pointer_cast<NAGroupObj>(shared_from_this()));
}

void NAGroupObj::addFileObjs(const NAFileobjArray& files) {
    for (const std::shared_ptr<NAFileobj>& file : files)
        addFileObj(file);
}

void NAGroupObj::removeFileObj(const std::shared_ptr<NAFileobj>& file) {
    contents_.erase(std::remove(contents_.begin(), contents_.end(), file), contents_.end());
    size_ -= file->fileSize();
}

void NAGroupObj::addGroupObj(const std::shared_ptr<NAGroupObj>& group) {
    subGroups_.push_back(group);
    group->superGroup_ = std::static_pointer_cast<NAGroupObj>(shared_from_this());
}

void NAGroupObj::addGroupObjs(const NAGroupObjArray& groups) {
    for (const std::shared_ptr<NAGroupObj>& group : groups)
        addGroupObj(group);
}

void NAGroupObj::setIsChecked(std::int64_t isChecked) {
    NAObject::setIsChecked(isChecked);
    if (isNeedChangeSubGroupsOrChirenState()) {
        willChangeContentCheckStateTo(static_cast<std::int8_t>(isChecked));
        willChangeSubGroupObjCheckStateTo(static_cast<std::int8_t>(isChecked));
        // Stored only: the items already hold the mark.
        NAObject::setIsChecked(isChecked);
    }
    if (isNeedChangeGroupOrSuperState() && superGroup())
        willChangeSuperGroupCheckState();
}

void NAGroupObj::willChangeContentCheckStateTo(std::int8_t isChecked) {
    for (const std::shared_ptr<NAFileobj>& item : contents_)
        setWithoutUpward(*item, isChecked);
    for (const std::shared_ptr<NAFileobj>& item : cache_contents_) {
        setWithoutUpward(*item, isChecked);
    }
}

void NAGroupObj::willChangeSubGroupObjCheckStateTo(std::int8_t isChecked) {
    for (const std::shared_ptr<NAGroupObj>& group : subGroups_)
        setWithoutUpward(*group, isChecked);
}

void NAGroupObj::willChangeSuperGroupCheckState() {
    std::shared_ptr<NAGroupObj> parent = superGroup();
    if (!parent)
        return;
    CheckTally tally;
    for (const std::shared_ptr<NAGroupObj>& group : parent->subGroups_) {
        if (group->contents_.empty() && group->subGroups_.empty())
            continue;
        if (tally.add(group->isChecked()))
            break;
    }
    tally.applyTo(*parent);
}

void NAGroupObj::print(std::ostream& out) const {
    NAObject::print(out);
    out << '{';
    const char* separator = "";
    printItems(out, contents_, separator);
    if (!cache_contents_.empty()) {
        out << separator << "cache{";
        const char* inner = "";
        printItems(out, cache_contents_, inner);
        out << '}';
        separator = " ";
    }
    for (const std::shared_ptr<NAGroupObj>& group : subGroups_) {
        out << separator << *group;
        separator = " ";
    }
    out << '}';
}

}  // namespace sysmend
