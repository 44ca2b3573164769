// Runs a program with arguments (no shell) and collects its output and exit status.
#pragma once

#include <string>
#include <vector>

namespace sysmend::testing {

struct CommandResult {
    int status = -1;  // exit status, or -1 when it did not exit normally
    std::string out;
    std::string err;
};

CommandResult runCommand(const std::vector<std::string>& argv);

}  // namespace sysmend::testing
