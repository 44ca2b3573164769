#include "app/na_category_obj.h"

namespace sysmend {

NACategoryObj::NACategoryObj(std::string title, ImageRef attachImage)
    : NAObject(std::move(title), std::move(attachImage)) {}

std::int64_t NACategoryObj::size() const {
    std::int64_t total = 0;
    if (!groups_.empty()) {
        for (const std::shared_ptr<NAGroupObj>& group : groups_)
            total += group->size();
    } else {
        for (const std::shared_ptr<NAFileobj>& file : contents_)
            total += file->fileSize();
    }
    return total;
}

}  // namespace sysmend
