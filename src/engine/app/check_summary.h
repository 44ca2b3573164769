// The summary line of the result pages: how many items are checked and what they take.
#pragma once

#include <cstdint>
#include <string>

#include "app/na_category_obj.h"

namespace sysmend {

struct CheckSummary {
    // Items whose mark is non-zero, mixed ones included. 32 bits, as the page's counter.
    int count = 0;
    // The sum of their fileSize.
    std::uint64_t willCleanSize = 0;
    // "" when nothing is checked, else "<count> files | <recal_size of willCleanSize>"; the
    // word "files" whatever the tool lists.
    std::string infromation;
};

// Counts every item of contents and then cache_contents of every top-level group, in order;
// group marks and sub-groups are not looked at. Stores the line as the category's infromation
// and returns it with the figures it was made from.
CheckSummary updateCheckState(NACategoryObj& category);

}  // namespace sysmend
