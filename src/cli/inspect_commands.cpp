// startup, crashes [--remove], firewall: the inspection tools of the "System" and "Security"
// rows, as tables or as one JSON document each.
//
// JSON shapes (scripts rely on them):
//   startup:  {"tool":"startup","groups":[{"title","checked","items":[{"title","item_id",
//              "loaded_using","full_path"}]}]}
//   crashes:  {"tool":"crashes","groups":[{"title","checked","size","items":[{"name","path",
//              "size","checked"}]}],"summary"} and, with --remove, "removed" and "failed"
//   firewall: {"tool":"firewall","on","text"}
// Groups come in the category's order; "checked" is the mark (1, 0 or -1). A crash item's
// "name" is the report's file name (the last path component), its "size" the bytes it takes
// on disk. "summary" is the result page's line for the checked items, "" when none is checked.
// --remove is the Crashes page's Remove: every checked report is deleted; "groups" and
// "summary" then describe what is left.
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "adware/groups_removal.h"
#include "app/check_summary.h"
#include "app/na_category_obj.h"
#include "cli.h"
#include "crashes/crash_scan.h"
#include "model/tool_records.h"
#include "network/firewall.h"
#include "platform/path.h"
#include "startup/startup_scan.h"
#include "tools/na_tools.h"

namespace sysmend::cli {
namespace {

using Json = nlohmann::ordered_json;
using Row = std::vector<std::string>;

// Columns padded to their widest cell; the last one is not padded.
void printTable(std::ostream& out, const std::vector<Row>& rows) {
    std::vector<std::size_t> widths;
    for (const Row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            if (i + 1 < row.size())
                line += std::string(widths[i] - row[i].size() + 2, ' ');
        }
        out << line << "\n";
    }
}

void takeNoArguments(Invocation& inv, const char* command) {
    rejectUnknownOptions(inv.args);
    if (!inv.args.empty())
        throw UsageError(std::string(command) + " takes no arguments");
}

int runStartup(Invocation& inv) {
    takeNoArguments(inv, "startup");
    NACategoryObj category;
    NAStartupItemsScan().loadStartusItems(category);

    if (inv.options.json) {
        Json groups = Json::array();
        for (const auto& group : category.groups()) {
            Json items = Json::array();
            for (const auto& file : group->contents()) {
                const auto& job = dynamic_cast<const NAStartupItemObj&>(*file);
                items.push_back({{"title", job.title()},
                                 {"item_id", job.item_id()},
                                 {"loaded_using", job.loaded_using()},
                                 {"full_path", job.full_path()}});
            }
            groups.push_back(
                {{"title", group->title()}, {"checked", group->isChecked()}, {"items", items}});
        }
        inv.out << Json{{"tool", "startup"}, {"groups", groups}}.dump(2) << "\n";
        return 0;
    }

    std::vector<Row> rows{{"TITLE", "LABEL", "JOB FILE", "APPLICATION"}};
    for (const auto& group : category.groups()) {
        for (const auto& file : group->contents()) {
            const auto& job = dynamic_cast<const NAStartupItemObj&>(*file);
            rows.push_back({group->title(), job.item_id(), job.loaded_using(), job.full_path()});
        }
    }
    if (rows.size() == 1)
        inv.out << "no startup items\n";
    else
        printTable(inv.out, rows);
    return 0;
}

int runCrashes(Invocation& inv) {
    const bool remove = takeFlag(inv.args, "--remove");
    takeNoArguments(inv, "crashes");
    auto category = std::make_shared<NACategoryObj>();
    scanCrashedApplications(category);
    GroupsRemoval removal;
    if (remove)
        removal = remove_normal_objects_action(*category);
    const std::string summary = updateCheckState(*category).infromation;

    if (inv.options.json) {
        Json groups = Json::array();
        for (const auto& group : category->groups()) {
            Json items = Json::array();
            for (const auto& item : group->contents()) {
                items.push_back({{"name", path::lastPathComponent(item->filePath())},
                                 {"path", item->filePath()},
                                 {"size", item->fileSize()},
                                 {"checked", item->isChecked()}});
            }
            groups.push_back({{"title", group->title()},
                              {"checked", group->isChecked()},
                              {"size", group->size()},
                              {"items", items}});
        }
        Json doc{{"tool", "crashes"}, {"groups", groups}, {"summary", summary}};
        if (remove) {
            doc["removed"] = removal.removed;
            doc["failed"] = removal.failed;
        }
        inv.out << doc.dump(2) << "\n";
    } else {
        std::vector<Row> rows{{"APPLICATION", "CHECKED", "SIZE", "REPORT"}};
        for (const auto& group : category->groups()) {
            for (const auto& item : group->contents()) {
                rows.push_back({group->title(), std::to_string(item->isChecked()),
                                recal_size(item->fileSize()), item->filePath()});
            }
        }
        if (rows.size() == 1)
            inv.out << "no crash reports\n";
        else
            printTable(inv.out, rows);
        if (!summary.empty())
            inv.out << summary << "\n";
        for (const std::string& p : removal.removed)
            inv.out << "removed " << p << "\n";
        for (const std::string& p : removal.failed)
            inv.out << "failed to remove " << p << "\n";
    }
    return removal.failed.empty() ? 0 : 1;
}

int runFirewall(Invocation& inv) {
    takeNoArguments(inv, "firewall");
    const bool on = getFirewallStatus();
    const std::string text(firewallStatusText(on));
    if (inv.options.json)
        inv.out << Json{{"tool", "firewall"}, {"on", on}, {"text", text}}.dump(2) << "\n";
    else
        inv.out << text << "\n";
    return 0;
}

const CommandRegistrar kStartup({"startup",
                                 "startup          launchd jobs that start installed applications",
                                 &runStartup});
const CommandRegistrar kCrashes(
    {"crashes",
     "crashes [--remove]  crash reports by application; --remove deletes the checked ones",
     &runCrashes});
const CommandRegistrar kFirewall({"firewall", "firewall         whether the firewall is on",
                                  &runFirewall});

}  // namespace
}  // namespace sysmend::cli
