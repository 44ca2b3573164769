#include "app/check_summary.h"

#include "tools/na_tools.h"

namespace sysmend {

CheckSummary updateCheckState(NACategoryObj& category) {
    CheckSummary summary;
    for (const auto& group : category.groups()) {
        for (const NAFileobjArray* items : {&group->contents(), &group->cache_contents()}) {
            for (const auto& item : *items) {
                if (item->isChecked() == 0)
                    continue;
                ++summary.count;
                // Unsigned, as the page's total: a negative size wraps rather than overflows.
                summary.willCleanSize += static_cast<std::uint64_t>(item->fileSize());
            }
        }
    }
    if (summary.count != 0) {
        summary.infromation = std::to_string(summary.count) + " files | " +
                              recal_size(static_cast<std::int64_t>(summary.willCleanSize));
    }
    category.setInfromation(summary.infromation);
    return summary;
}

}  // namespace sysmend
