#include "support/run_command.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace sysmend::testing {
namespace {

std::string slurpAndRemove(const std::string& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    std::remove(p.c_str());
    return ss.str();
}

}  // namespace

CommandResult runCommand(const std::vector<std::string>& argv) {
    // Output goes through temporary files rather than pipes, so a chatty child can never
    // block on a full pipe while we wait for it.
    std::string base = (std::filesystem::temp_directory_path() / "sysmend-cmd-XXXXXX").string();
    std::string outPath = base, errPath = base;
    int outFd = ::mkstemp(outPath.data());
    int errFd = ::mkstemp(errPath.data());
    CommandResult result;
    pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(outFd, 1);
        ::dup2(errFd, 2);
        std::vector<char*> args;
        for (const std::string& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        ::execv(args[0], args.data());
        std::_Exit(127);
    }
    int wstatus = 0;
    if (pid > 0 && ::waitpid(pid, &wstatus, 0) == pid && WIFEXITED(wstatus)) {
        result.status = WEXITSTATUS(wstatus);
    }
    ::close(outFd);
    ::close(errFd);
    result.out = slurpAndRemove(outPath);
    result.err = slurpAndRemove(errPath);
    return result;
}

}  // namespace sysmend::testing
