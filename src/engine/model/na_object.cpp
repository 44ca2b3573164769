#include "model/na_object.h"

#include <sstream>

namespace sysmend {

NAObject::NAObject(std::string title, ImageRef attachImage)
    : title_(std::move(title)), attachImage_(std::move(attachImage)) {}

void NAObject::enablePropagation() {
    isNeedChangeGroupOrSuperState_ = true;
    isNeedChangeSubGroupsOrChirenState_ = true;
}

void NAObject::print(std::ostream& out) const {
    out << title_ << '[' << isChecked_ << ']';
}

std::ostream& operator<<(std::ostream& out, const NAObject& object) {
    object.print(out);
    return out;
}

std::string toString(const NAObject& object) {
    std::ostringstream out;
    out << object;
    return out.str();
}

bool CheckTally::add(std::int64_t isChecked) {
    if (isChecked == 1) {
        ++checked_;
    } else if (isChecked == 0) {
        ++unchecked_;
    } else if (isChecked == -1) {
        ++mixed_;
    }
    return (checked_ > 0 && unchecked_ > 0) || mixed_ > 0;
}

std::optional<std::int64_t> CheckTally::result() const {
    if (mixed_ > 0)
        return -1;
    if (unchecked_ == 0 && checked_ > 0)
        return 1;
    if (unchecked_ > 0 && checked_ == 0)
        return 0;
    if (unchecked_ > 0 && checked_ > 0)
        return -1;
    return std::nullopt;
}

void CheckTally::applyTo(NAObject& parent) const {
    const std::optional<std::int64_t> value = result();
    if (!value)
        return;
    parent.setIsNeedChangeSubGroupsOrChirenState(false);
    parent.setIsChecked(*value);
    parent.setIsNeedChangeSubGroupsOrChirenState(true);
}

}  // namespace sysmend
