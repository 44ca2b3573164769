// Cost of removing trees with removePath, to compare with `rm -rf` on the same shapes:
// wide (folders of files) and deep (a chain of folders, past the window of open folders).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/volume.h"
#include "tools/file_manager.h"

namespace {

using sysmend::removePath;

void makeWide(const std::string& top, int folders, int files) {
    for (int i = 0; i < folders; ++i) {
        std::string folder = top + "/folder" + std::to_string(i);
        std::filesystem::create_directories(folder);
        for (int j = 0; j < files; ++j) {
            ::close(
                ::open((folder + "/file" + std::to_string(j)).c_str(), O_CREAT | O_WRONLY, 0644));
        }
    }
}

void makeDeep(const std::string& top, int depth) {
    std::filesystem::create_directories(top);
    int fd = ::open(top.c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth && fd >= 0; ++i) {
        ::close(::openat(fd, "file", O_CREAT | O_WRONLY, 0644));
        ::mkdirat(fd, "d", 0755);
        int next = ::openat(fd, "d", O_RDONLY | O_DIRECTORY);
        ::close(fd);
        fd = next;
    }
    if (fd >= 0)
        ::close(fd);
}

template <bool Deep>
void BM_RemoveTree(benchmark::State& state) {
    char tmpl[] = "/tmp/sysmend-remove-bench-XXXXXX";
    if (::mkdtemp(tmpl) == nullptr) {
        state.SkipWithError("mkdtemp failed");
        return;
    }
    sysmend::ScopedVolume volume(sysmend::Volume(tmpl, "/"));
    for (auto _ : state) {
        state.PauseTiming();
        if (Deep) {
            makeDeep(std::string(tmpl) + "/tree", static_cast<int>(state.range(0)));
        } else {
            makeWide(std::string(tmpl) + "/tree", static_cast<int>(state.range(0)),
                     static_cast<int>(state.range(1)));
        }
        state.ResumeTiming();
        if (!removePath("/tree"))
            state.SkipWithError("removal failed");
    }
    ::rmdir(tmpl);
}

BENCHMARK(BM_RemoveTree<false>)->Args({100, 100})->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_RemoveTree<true>)->Arg(2000)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

BENCHMARK_MAIN();
