// sysmend-cli: the engine's tools without a window.
//
// Every command takes the global options (--root DIR, --home PATH, --json) anywhere on its
// line. Exit statuses are a contract with scripts: 0 success, 1 the command ran but something
// failed (a missing path, a failed removal), 2 a usage error (one line on stderr).
#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sysmend::cli {

struct GlobalOptions {
    std::string root;  // host folder of the volume's "/"; empty = SYSMEND_ROOT or "/"
    std::string home;  // the home folder as a volume path; empty = SYSMEND_HOME or the default
    bool json = false;
};

// What a command gets: the global options (already applied to Volume::current()), its own
// arguments in order with the global options taken out, and where to write.
struct Invocation {
    GlobalOptions options;
    std::vector<std::string> args;
    std::ostream& out;
    std::ostream& err;
};

// A usage error: main prints "sysmend-cli: <message>" and exits with status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Command {
    std::string_view name;
    std::string_view synopsis;  // one line for --help, e.g. "size PATH..."
    int (*run)(Invocation&);
};

// Commands register themselves at start-up from their own source file.
struct CommandRegistrar {
    explicit CommandRegistrar(Command command);
};
const std::vector<Command>& commands();

// Takes "--name" (a flag) out of args; true when it was there.
bool takeFlag(std::vector<std::string>& args, std::string_view name);
// Takes "--name VALUE" or "--name=VALUE" out of args; empty when absent.
std::string takeOption(std::vector<std::string>& args, std::string_view name);
// Throws a UsageError for the first argument that still looks like an option.
void rejectUnknownOptions(const std::vector<std::string>& args);

}  // namespace sysmend::cli
