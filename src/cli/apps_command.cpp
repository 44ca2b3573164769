// apps: the App Viewer's listing of /Applications, as a readable list or as JSON.
//
// JSON shape (scripts rely on it):
//   {"tool":"apps","groups":[{"title","path","checked","size",
//                             "items":[{"key","value","size"}]}]}
// Groups are the applications the listing keeps, in walk order; "path" is the bundle's volume
// path, "checked" the group's mark, "size" the group's byte total (the size row carries the
// bundle's bytes, the other rows none). Items are the information rows in order, each with its
// own byte count.
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "appviewer/app_information.h"
#include "appviewer/app_listing.h"
#include "cli.h"
#include "tools/na_tools.h"

namespace sysmend::cli {
namespace {

using Json = nlohmann::ordered_json;

const NAAppSingleInformation& rowOf(const std::shared_ptr<NAFileobj>& item) {
    return static_cast<const NAAppSingleInformation&>(*item);
}

Json groupJson(const NAGroupObj& group) {
    Json items = Json::array();
    for (const std::shared_ptr<NAFileobj>& item : group.contents()) {
        const NAAppSingleInformation& row = rowOf(item);
        items.push_back(
            {{"key", row.key_title()}, {"value", row.value_title()}, {"size", row.fileSize()}});
    }
    return {{"title", group.title()},
            {"path", appPathOfGroup(group)},
            {"checked", group.isChecked()},
            {"size", group.size()},
            {"items", std::move(items)}};
}

// "LuLu  v0.9.0  1.2 MB  /Applications/LuLu.app", then the rows with their keys aligned.
void printGroup(std::ostream& out, const NAGroupObj& group) {
    const auto& rows = group.contents();
    // The first row of a kept application is its name with its version.
    const std::string version = rows.empty() ? "" : rowOf(rows.front()).value_title();
    out << group.title() << "  " << version << "  " << recal_size(group.size()) << "  "
        << appPathOfGroup(group) << "\n";
    std::size_t width = 0;
    for (const auto& item : rows)
        width = std::max(width, rowOf(item).key_title().size());
    for (const auto& item : rows) {
        const NAAppSingleInformation& row = rowOf(item);
        out << "    " << row.key_title() << std::string(width - row.key_title().size() + 2, ' ')
            << row.value_title() << "\n";
    }
}

int runApps(Invocation& inv) {
    rejectUnknownOptions(inv.args);
    if (!inv.args.empty())
        throw UsageError("apps takes no arguments");

    // Nothing stops a command-line run half-way.
    const std::atomic<bool> stop{false};
    AppListing listing(stop);
    NAGroupObjArray apps;
    listing.loadAllApps("/Applications", apps);

    if (inv.options.json) {
        Json groups = Json::array();
        for (const auto& group : apps)
            groups.push_back(groupJson(*group));
        inv.out << Json{{"tool", "apps"}, {"groups", std::move(groups)}}.dump(2) << "\n";
        return 0;
    }
    for (const auto& group : apps)
        printGroup(inv.out, *group);
    return 0;
}

const CommandRegistrar kApps({"apps",
                              "apps             applications, their information and entitlements",
                              &runApps});

}  // namespace
}  // namespace sysmend::cli
