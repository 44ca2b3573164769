#include "model/tool_records.h"

namespace sysmend {

std::int64_t NABrowserObj::someItems_count() const {
    if (someItems_count_ != 0 || !ownedChilren_ || ownedChilren_->empty()) {
        return someItems_count_;
    }
    std::int64_t sum = 0;
    for (const std::shared_ptr<NAFileobj>& child : *ownedChilren_) {
        if (const auto* entry = dynamic_cast<const NABrowserObj*>(child.get())) {
            sum += entry->someItems_count();
        }
    }
    someItems_count_ = sum;
    return sum;
}

}  // namespace sysmend
