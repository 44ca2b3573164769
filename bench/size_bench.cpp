// sizeAtPath against du and find on the same tree in the same run. Builds a tree of small files
// in a temporary folder (removed afterwards) unless --tree=PATH names an existing one, warms the
// cache, runs the benchmarks and prints how sizeAtPath compares with du.
//
//   size_bench [--files=200000] [--folders=20000] [--tree=PATH] [benchmark flags]

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench_support.h"
#include "platform/volume.h"
#include "recording_reporter.h"
#include "tools/na_tools.h"

namespace {

std::string gTree;

void makeFolder(const std::string& path) {
    if (::mkdir(path.c_str(), 0755) != 0)
        throw std::runtime_error("mkdir " + path);
}

// `folders` folders in two levels (about sqrt(folders) at the top), files spread evenly,
// each file 100 bytes so that it takes one block.
void buildTree(const std::string& root, long files, long folders) {
    const std::string content(100, 'x');
    long top = 1;
    while (top * top < folders)
        ++top;
    std::vector<std::string> all;
    for (long t = 0; t < top && static_cast<long>(all.size()) < folders; ++t) {
        std::string parent = root + "/top" + std::to_string(t);
        makeFolder(parent);
        all.push_back(parent);
        for (long s = 1; s < top && static_cast<long>(all.size()) < folders; ++s) {
            all.push_back(parent + "/sub" + std::to_string(s));
            makeFolder(all.back());
        }
    }
    for (long i = 0; i < files; ++i) {
        std::string file = all[static_cast<std::size_t>(i) % all.size()] + "/f" + std::to_string(i);
        int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        if (fd < 0 || ::write(fd, content.data(), content.size()) < 0) {
            throw std::runtime_error("write " + file);
        }
        ::close(fd);
    }
}

void removeTree(const std::string& root) {
    ::nftw(
        root.c_str(), [](const char* p, const struct stat*, int, FTW*) { return ::remove(p); }, 64,
        FTW_DEPTH | FTW_PHYS);
}

using sysmend::bench::runCommand;
using sysmend::bench::runTool;

void BM_sizeAtPath_allocated(benchmark::State& state) {
    sysmend::ScopedVolume scope(sysmend::Volume(gTree, "/"));
    for (auto _ : state)
        benchmark::DoNotOptimize(sysmend::sizeAtPath("/", 1));
}

void BM_du(benchmark::State& state) {
    runTool(state, "du -s -B1 '" + gTree + "' > /dev/null");
}

void BM_find(benchmark::State& state) {
    runTool(state, "find '" + gTree + "' -printf ''");
}

BENCHMARK(BM_sizeAtPath_allocated)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_du)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_find)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    long files = 200'000;
    long folders = 20'000;
    using sysmend::bench::takeFlag;
    sysmend::bench::takeFlags(argc, argv, [&](std::string_view arg) {
        return takeFlag(arg, "--files=", files) || takeFlag(arg, "--folders=", folders) ||
               takeFlag(arg, "--tree=", gTree);
    });
    benchmark::Initialize(&argc, argv);

    const bool built = gTree.empty();
    if (built) {
        char templ[] = "/tmp/sysmend-size-bench-XXXXXX";
        if (::mkdtemp(templ) == nullptr)
            return 1;
        gTree = templ;
        std::printf("building %ld files in %ld folders under %s\n", files, folders, templ);
        buildTree(gTree, files, folders);
    }
    if (!runCommand("du -s -B1 '" + gTree + "' > /dev/null"))  // warm the cache
        return 1;

    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    const auto ours = reporter.times["BM_sizeAtPath_allocated"];
    const auto du = reporter.times["BM_du"];
    if (ours.wall > 0 && du.wall > 0 && du.cpu > 0) {
        std::printf(
            "sizeAtPath / du: wall %.2f (%.0f ms against %.0f ms), processor %.2f (%.0f "
            "ms against %.0f ms)\n",
            ours.wall / du.wall, ours.wall, du.wall, ours.cpu / du.cpu, ours.cpu, du.cpu);
    }
    if (built)
        removeTree(gTree);
    return 0;
}
