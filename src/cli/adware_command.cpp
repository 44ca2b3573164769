// adware [--signatures FILE] [--remove]: the adware scan, and on request the adware page's
// removal of everything the scan checked.
//
// JSON shape (scripts rely on it):
//   {"tool":"adware","scanned":N,"threats":N,"groups":[{"title","checked","size","items":
//    [{"title","name","path","size","checked","type"}]}],"summary"}
// and, with --remove, "removed" and "failed". "scanned" and "threats" are the scan's counters
// as its progress sheet shows them (candidates visited, candidates that gave a new finding).
// Groups are the category's after the removal, if any, in its order; "checked" is the mark
// (1, 0 or -1); an item's "name" is its fileName and "type" its fileType ("" when none).
// "summary" is the result page's line for the checked items, "" when none is checked.
// "removed" and "failed" hold findings' paths only: the browser lists deleted along with
// Safari and Firefox extensions are best effort and listed nowhere.
//
// Exit status 1 when the signature database cannot be loaded, or when a removal failed.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "adware/adware_scan.h"
#include "adware/groups_removal.h"
#include "adware/signature_loader.h"
#include "app/check_summary.h"
#include "app/na_category_obj.h"
#include "cli.h"
#include "platform/named_exception.h"
#include "tools/na_tools.h"

namespace sysmend::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kAdwareCategoryType = 3;

// The database named by --signatures, else the shipped resource. The loader takes a missing
// resource for an empty database, which suits the shipped one; a file named on the command line
// that cannot be read is an error.
std::optional<plist::Value> loadDatabase(const std::string& signatures, std::string& error) {
    if (!signatures.empty()) {
        const int fd = ::open(signatures.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) {
            error = "cannot read " + signatures + ": " + std::strerror(errno);
            return std::nullopt;
        }
        ::close(fd);
    }
    setSignatureFile(signatures);
    try {
        return loadSignatureDatabase();
    } catch (const NamedException& e) {
        error = e.what();
        return std::nullopt;
    }
}

std::string mark(std::int64_t isChecked) {
    switch (isChecked) {
        case 1:
            return "[x]";
        case 0:
            return "[ ]";
        default:
            return "[-]";
    }
}

Json groupsJson(const NACategoryObj& category) {
    Json groups = Json::array();
    for (const auto& group : category.groups()) {
        Json items = Json::array();
        for (const auto& item : group->contents()) {
            items.push_back({{"title", item->title()},
                             {"name", item->fileName()},
                             {"path", item->filePath()},
                             {"size", item->fileSize()},
                             {"checked", item->isChecked()},
                             {"type", item->fileType()}});
        }
        groups.push_back({{"title", group->title()},
                          {"checked", group->isChecked()},
                          {"size", group->size()},
                          {"items", items}});
    }
    return groups;
}

void printTable(std::ostream& out, const NACategoryObj& category) {
    std::vector<std::vector<std::string>> rows{{"THREAT", "CHECKED", "SIZE", "PATH"}};
    for (const auto& group : category.groups()) {
        for (const auto& item : group->contents()) {
            rows.push_back({group->title(), mark(item->isChecked()), recal_size(item->fileSize()),
                            item->filePath()});
        }
    }
    if (rows.size() == 1) {
        out << "no adware found\n";
        return;
    }
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (const auto& row : rows) {
        // The last column is not padded.
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            out << row[i] << std::string(widths[i] - row[i].size() + 2, ' ');
        out << row.back() << "\n";
    }
}

int runAdware(Invocation& inv) {
    const std::string signatures = takeOption(inv.args, "--signatures");
    const bool remove = takeFlag(inv.args, "--remove");
    rejectUnknownOptions(inv.args);
    if (!inv.args.empty())
        throw UsageError("adware takes no arguments besides its options");

    std::string error;
    std::optional<plist::Value> database = loadDatabase(signatures, error);
    if (!database) {
        inv.err << "sysmend-cli: adware: cannot load the signature database: " << error << "\n";
        return 1;
    }

    auto category = std::make_shared<NACategoryObj>();
    category->setCategoryType(kAdwareCategoryType);
    AdwareScan scan(std::move(*database), category);
    scan.initargs();
    scan.analysisAdware();

    GroupsRemoval removal;
    NAFileobjArray removeFaildFiles;
    if (remove)
        removal = remove_adware_action(*category, removeFaildFiles);
    const std::string summary = updateCheckState(*category).infromation;

    if (inv.options.json) {
        Json doc{{"tool", "adware"},
                 {"scanned", scan.scanedFiles()},
                 {"threats", scan.threadFiles()},
                 {"groups", groupsJson(*category)},
                 {"summary", summary}};
        if (remove) {
            doc["removed"] = removal.removed;
            doc["failed"] = removal.failed;
        }
        inv.out << doc.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
    } else {
        printTable(inv.out, *category);
        if (!summary.empty())
            inv.out << summary << "\n";
        inv.out << scan.scanedFiles() << " scanned, " << scan.threadFiles() << " threats\n";
        for (const std::string& p : removal.removed)
            inv.out << "removed " << p << "\n";
        for (const std::string& p : removal.failed)
            inv.out << "could not remove " << p << "\n";
    }
    return removal.failed.empty() ? 0 : 1;
}

const CommandRegistrar kAdware(
    {"adware", "adware [--signatures FILE] [--remove]  known adware by threat; --remove deletes it",
     &runAdware});

}  // namespace
}  // namespace sysmend::cli
