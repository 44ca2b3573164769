// size PATH...: what a path takes on disk, as the item lists count it.
#include <sys/stat.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli.h"
#include "platform/volume.h"
#include "tools/na_tools.h"

namespace sysmend::cli {
namespace {

bool exists(const std::string& volumePath) {
    struct stat st {};
    return ::lstat(Volume::current().hostPath(volumePath).c_str(), &st) == 0;
}

int runSize(Invocation& inv) {
    rejectUnknownOptions(inv.args);
    if (inv.args.empty())
        throw UsageError("size needs at least one PATH");

    nlohmann::ordered_json paths = nlohmann::ordered_json::array();
    int status = 0;
    if (!inv.options.json)
        inv.out << "SIZE         ALLOCATED        LOGICAL  PATH\n";
    for (const std::string& p : inv.args) {
        if (!exists(p)) {
            inv.err << "sysmend-cli: size: no such file or folder: " << p << "\n";
            status = 1;
        }
        const auto [allocated, logical] = sizesAtPath(p);
        std::string text = recal_size(allocated);
        if (inv.options.json) {
            paths.push_back(
                {{"path", p}, {"allocated", allocated}, {"logical", logical}, {"text", text}});
        } else {
            char line[96];
            std::snprintf(line, sizeof line, "%-10s %12lld %14lld  ", text.c_str(),
                          static_cast<long long>(allocated), static_cast<long long>(logical));
            inv.out << line << p << "\n";
        }
    }
    if (inv.options.json) {
        inv.out << nlohmann::ordered_json{{"tool", "size"}, {"paths", paths}}.dump(2) << "\n";
    }
    return status;
}

const CommandRegistrar kSize({"size", "size PATH...     allocated and logical size of each path",
                              &runSize});

}  // namespace
}  // namespace sysmend::cli
