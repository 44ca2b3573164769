// What the benchmark programs share: timing a command-line tool against which they compare,
// and taking their own flags (--files=N and the like) out of argv before benchmark::Initialize.
#pragma once

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace sysmend::bench {

// Processor seconds, user and system, of the children waited for so far.
inline double childrenCpuSeconds() {
    struct rusage usage {};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Runs a shell command; when it fails, says which on stderr and returns false.
inline bool runCommand(const std::string& command) {
    if (std::system(command.c_str()) == 0)
        return true;
    std::fprintf(stderr, "failed: %s\n", command.c_str());
    return false;
}

// Times a tool: the command once per iteration, the benchmark skipped with an error if it
// fails. The tool runs as a child process, so its processor time is counted apart
// ("child_cpu", seconds per run): on a shared machine it says more than the wall time.
inline void runTool(benchmark::State& state, const std::string& command) {
    const double before = childrenCpuSeconds();
    for (auto _ : state) {
        if (!runCommand(command)) {
            state.SkipWithError(("failed: " + command).c_str());
            break;
        }
    }
    state.counters["child_cpu"] =
        benchmark::Counter(childrenCpuSeconds() - before, benchmark::Counter::kAvgIterations);
}

// "--name=N" sets a number, "--name=TEXT" a string; a name without '=' is a switch that must
// match the whole argument. Each returns whether `arg` was that flag.
inline bool takeFlag(std::string_view arg, std::string_view name, long& value) {
    if (!arg.starts_with(name))
        return false;
    value = std::stol(std::string(arg.substr(name.size())));
    return true;
}

inline bool takeFlag(std::string_view arg, std::string_view name, std::string& value) {
    if (!arg.starts_with(name))
        return false;
    value = arg.substr(name.size());
    return true;
}

inline bool takeFlag(std::string_view arg, std::string_view name, bool& value) {
    if (arg != name)
        return false;
    value = true;
    return true;
}

// Leaves in argv (after the program's name) only the arguments `take` returns false for, so
// that benchmark::Initialize sees its own flags alone.
template <class Take>
void takeFlags(int& argc, char** argv, Take take) {
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (!take(std::string_view(argv[i])))
            argv[kept++] = argv[i];
    }
    argv[kept] = nullptr;
    argc = kept;
}

}  // namespace sysmend::bench
