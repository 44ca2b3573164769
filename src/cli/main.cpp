#include <sys/stat.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "cli.h"
#include "platform/volume.h"

namespace sysmend::cli {
namespace {

std::vector<Command>& registry() {
    static std::vector<Command> list;
    return list;
}

void printUsage(std::ostream& os) {
    os << "usage: sysmend-cli [--root DIR] [--home PATH] [--json] COMMAND [ARGS]\n\n"
          "Inspects a macOS volume: the live system (--root /, the default) or a folder that\n"
          "holds a Mac volume's tree. Paths are given and printed as the Mac sees them.\n\n"
          "  --root DIR   the volume's root folder (default: $SYSMEND_ROOT, else /)\n"
          "  --home PATH  the user's home folder as a path inside the volume\n"
          "               (default: $SYSMEND_HOME, else the current user's home)\n"
          "  --json       print one JSON document instead of a table\n\n"
          "commands:\n";
    // Each synopsis is "usage  description"; line the descriptions up, commands by name.
    std::vector<Command> sorted = registry();
    std::sort(sorted.begin(), sorted.end(),
              [](const Command& a, const Command& b) { return a.name < b.name; });
    auto split = [](std::string_view synopsis) {
        const auto gap = synopsis.find("  ");
        const std::string_view usage = synopsis.substr(0, gap);
        std::string_view text = gap == std::string_view::npos ? "" : synopsis.substr(gap);
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        return std::pair{usage, text};
    };
    std::size_t width = 0;
    for (const Command& c : sorted)
        width = std::max(width, split(c.synopsis).first.size());
    for (const Command& c : sorted) {
        const auto [usage, text] = split(c.synopsis);
        os << "  " << usage << std::string(width - usage.size() + 2, ' ') << text << "\n";
    }
}

bool isDirectory(const std::string& p) {
    struct stat st {};
    return ::stat(p.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace

CommandRegistrar::CommandRegistrar(Command command) {
    registry().push_back(command);
}

const std::vector<Command>& commands() {
    return registry();
}

bool takeFlag(std::vector<std::string>& args, std::string_view name) {
    for (auto it = args.begin(); it != args.end(); ++it) {
        if (*it == name) {
            args.erase(it);
            return true;
        }
    }
    return false;
}

std::string takeOption(std::vector<std::string>& args, std::string_view name) {
    std::string prefix = std::string(name) + "=";
    for (auto it = args.begin(); it != args.end(); ++it) {
        if (*it == name) {
            if (it + 1 == args.end() || (it + 1)->empty()) {
                throw UsageError(std::string(name) + " needs a value");
            }
            std::string value = *(it + 1);
            args.erase(it, it + 2);
            return value;
        }
        if (it->rfind(prefix, 0) == 0) {
            std::string value = it->substr(prefix.size());
            args.erase(it);
            if (value.empty())
                throw UsageError(std::string(name) + " needs a value");
            return value;
        }
    }
    return "";
}

void rejectUnknownOptions(const std::vector<std::string>& args) {
    for (const std::string& a : args) {
        if (a.size() > 1 && a[0] == '-')
            throw UsageError("unknown option " + a);
    }
}

int run(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    try {
        if (args.empty())
            throw UsageError("no command given (try --help)");
        if (takeFlag(args, "--help") || takeFlag(args, "-h")) {
            printUsage(std::cout);
            return 0;
        }
        GlobalOptions options;
        options.root = takeOption(args, "--root");
        options.home = takeOption(args, "--home");
        options.json = takeFlag(args, "--json");
        if (!options.root.empty() && !isDirectory(options.root)) {
            throw UsageError("--root: no such folder: " + options.root);
        }
        if (!options.home.empty() && options.home.front() != '/') {
            throw UsageError("--home takes a path inside the volume, starting with /");
        }
        if (args.empty())
            throw UsageError("no command given (try --help)");
        std::string name = args.front();
        args.erase(args.begin());
        for (const Command& c : registry()) {
            if (c.name != name)
                continue;
            Volume::setCurrent(Volume::fromOptions(options.root, options.home));
            Invocation inv{options, std::move(args), std::cout, std::cerr};
            return c.run(inv);
        }
        throw UsageError("unknown command " + name + " (try --help)");
    } catch (const UsageError& e) {
        std::cerr << "sysmend-cli: " << e.what() << "\n";
        return 2;
    }
}

}  // namespace sysmend::cli

int main(int argc, char** argv) {
    return sysmend::cli::run(argc, argv);
}
