// The App Viewer's listing of /Applications, sizes included, against `du -s --block-size=1`
// over the same folder in the same run. Builds a volume in a temporary folder (removed
// afterwards) unless --root=PATH names one built before, warms the cache, runs both and prints
// the ratio of their wall times.
//
//   apps_bench [--apps=200] [--files=1000000] [--folders=100000] [--root=PATH] [--keep]
//              [benchmark flags]
//
// Each bundle holds an Info.plist and its share of the files (100 bytes each, one block) in
// its share of the folders, two levels deep under Contents/Resources.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "appviewer/app_listing.h"
#include "bench_support.h"
#include "platform/plist.h"
#include "platform/volume.h"
#include "recording_reporter.h"

namespace {

std::string gRoot;

void makeFolder(const std::string& path) {
    if (::mkdir(path.c_str(), 0755) != 0)
        throw std::runtime_error("mkdir " + path);
}

void writeFile(const std::string& path, const void* data, std::size_t size) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    if (fd < 0 || ::write(fd, data, size) != static_cast<ssize_t>(size))
        throw std::runtime_error("write " + path);
    ::close(fd);
}

void buildBundle(const std::string& bundle, const std::string& name, long files, long folders) {
    makeFolder(bundle);
    makeFolder(bundle + "/Contents");
    sysmend::plist::Dictionary info;
    info.set("CFBundleName", name);
    info.set("CFBundleVersion", "1.0");
    info.set("CFBundleExecutable", name);
    sysmend::Data bytes = sysmend::plist::serialize(sysmend::plist::Value(std::move(info)),
                                                    sysmend::plist::Format::Xml);
    writeFile(bundle + "/Contents/Info.plist", bytes.data(), bytes.size());

    const std::string resources = bundle + "/Contents/Resources";
    makeFolder(resources);
    long top = 1;
    while (top * top < folders)
        ++top;
    std::vector<std::string> all;
    for (long t = 0; t < top && static_cast<long>(all.size()) < folders; ++t) {
        all.push_back(resources + "/top" + std::to_string(t));
        makeFolder(all.back());
        const std::string parent = all.back();
        for (long s = 1; s < top && static_cast<long>(all.size()) < folders; ++s) {
            all.push_back(parent + "/sub" + std::to_string(s));
            makeFolder(all.back());
        }
    }
    const std::string content(100, 'x');
    for (long i = 0; i < files; ++i) {
        writeFile(all[static_cast<std::size_t>(i) % all.size()] + "/f" + std::to_string(i),
                  content.data(), content.size());
    }
}

void buildVolume(const std::string& root, long apps, long files, long folders) {
    makeFolder(root + "/Applications");
    for (long a = 0; a < apps; ++a) {
        const std::string name = "App" + std::to_string(a);
        buildBundle(root + "/Applications/" + name + ".app", name, files / apps, folders / apps);
    }
}

void removeTree(const std::string& root) {
    ::nftw(
        root.c_str(), [](const char* p, const struct stat*, int, FTW*) { return ::remove(p); }, 64,
        FTW_DEPTH | FTW_PHYS);
}

std::string duCommand() {
    return "du -s --block-size=1 '" + gRoot + "/Applications' > /dev/null";
}

void BM_loadAllApps(benchmark::State& state) {
    sysmend::ScopedVolume scope(sysmend::Volume(gRoot, "/Users/bench"));
    std::atomic<bool> stop{false};
    sysmend::AppListing listing(stop);
    std::size_t groups = 0;
    for (auto _ : state) {
        sysmend::NAGroupObjArray apps;
        listing.loadAllApps("/Applications", apps);
        groups = apps.size();
    }
    state.counters["apps"] = static_cast<double>(groups);
}

void BM_du(benchmark::State& state) {
    sysmend::bench::runTool(state, duCommand());
}

// Processor time of the whole process, the listing's worker threads included.
BENCHMARK(BM_loadAllApps)->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_du)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    long apps = 200;
    long files = 1'000'000;
    long folders = 100'000;
    bool keep = false;
    using sysmend::bench::takeFlag;
    sysmend::bench::takeFlags(argc, argv, [&](std::string_view arg) {
        return takeFlag(arg, "--root=", gRoot) || takeFlag(arg, "--keep", keep) ||
               takeFlag(arg, "--apps=", apps) || takeFlag(arg, "--files=", files) ||
               takeFlag(arg, "--folders=", folders);
    });
    benchmark::Initialize(&argc, argv);

    const bool built = gRoot.empty();
    if (built) {
        char templ[] = "/tmp/sysmend-apps-bench-XXXXXX";
        if (::mkdtemp(templ) == nullptr)
            return 1;
        gRoot = templ;
        std::printf("building %ld bundles with %ld files in %ld folders under %s\n", apps, files,
                    folders, templ);
        buildVolume(gRoot, apps, files, folders);
    }
    if (!sysmend::bench::runCommand(duCommand()))  // warms the cache
        return 1;

    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    const auto ours = reporter.times["BM_loadAllApps"];
    const auto du = reporter.times["BM_du"];
    if (ours.wall > 0 && du.wall > 0 && du.cpu > 0) {
        std::printf(
            "loadAllApps / du: wall %.2f (%.0f ms against %.0f ms), processor %.2f (%.0f ms "
            "against %.0f ms)\n",
            ours.wall / du.wall, ours.wall, du.wall, ours.cpu / du.cpu, ours.cpu, du.cpu);
    }
    if (built && !keep)
        removeTree(gRoot);
    else
        std::printf("volume kept at %s\n", gRoot.c_str());
    return 0;
}
