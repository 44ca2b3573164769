// The adware scan against find on the same folders in the same run. Builds a volume in a
// temporary folder (removed afterwards): a home of small files in two levels of folders, a
// few application bundles there and in /Applications, launch agents and a Chrome profile;
// warms the cache with one find, then times the whole scan (ten passes, a small database),
// its walk over /Applications and the home folder alone, and `find -printf ""` over the same
// two folders (names only, the floor for any walk). The last line gives the ratios.
//
//   adware_scan_bench [--files=200000] [--folders=20000] [--database=FILE.cx]
//                     [--baseline=FILE.cx] [benchmark flags]
//
// --database scans with a built signature database instead of the small generated one;
// --baseline adds the same scan with a second database, and the ratio of the two, to tell
// what a grown database costs (the shipped one against an older one on the same volume).

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "adware/adware_scan.h"
#include "adware/signature_loader.h"
#include "bench_support.h"
#include "recording_reporter.h"
#include "sample/fake_volume.h"

namespace {

using namespace sysmend;

sample::FakeVolume* gVolume = nullptr;

void buildHome(sample::FakeVolume& volume, long files, long folders) {
    long top = 1;
    while (top * top < folders)
        ++top;
    std::vector<std::string> all;
    for (long t = 0; t < top && static_cast<long>(all.size()) < folders; ++t) {
        const std::string parent = volume.mkdir(volume.home() + "/top" + std::to_string(t));
        all.push_back(parent);
        for (long s = 1; s < top && static_cast<long>(all.size()) < folders; ++s)
            all.push_back(volume.mkdir(parent + "/sub" + std::to_string(s)));
    }
    const std::string content(100, 'x');
    for (long i = 0; i < files; ++i)
        volume.write(
            all[static_cast<std::size_t>(i) % all.size()] + "/f" + std::to_string(i) + ".txt",
            content);
    for (int i = 0; i < 20; ++i) {
        sample::AppSpec app;
        app.folder = i % 2 ? "/Applications" : all[static_cast<std::size_t>(i * 7) % all.size()];
        app.name = "App" + std::to_string(i);
        volume.addApp(app);
        volume.addLaunchJob(volume.home() + "/Library/LaunchAgents",
                            "com.app" + std::to_string(i) + ".plist",
                            "com.app" + std::to_string(i));
    }
    volume.addBrowserExtension(volume.chromeExtensionsFolder(), "abcdef", "1.0",
                               R"({"name": "Helper", "icons": {"16": "i.png"}})");
}

// Databases given on the command line, decoded once before the runs.
std::map<std::string, plist::Value> gDatabases;

plist::Value generatedDatabase() {
    plist::Array threats;
    for (int i = 0; i < 50; ++i) {
        plist::Dictionary threat;
        threat.set("name", "Threat " + std::to_string(i));
        const std::string tag = "t" + std::to_string(i);
        for (const char* key :
             {"launch", "launchContent", "path", "app", "extensions", "preferences"})
            threat.set(key, plist::Array{plist::Value(tag + "-" + key)});
        threats.emplace_back(std::move(threat));
    }
    return threats;
}

std::string findCommand() {
    return "find '" + gVolume->host("/Applications") + "' '" + gVolume->host(gVolume->home()) +
           "' -printf ''";
}

plist::Value database(const std::string& which) {
    const auto given = gDatabases.find(which);
    return given != gDatabases.end() ? given->second : generatedDatabase();
}

void BM_analysisAdware(benchmark::State& state, const std::string& which) {
    ScopedVolume scope(gVolume->volume());
    auto category = std::make_shared<NACategoryObj>();
    AdwareScan scan(database(which), category);
    for (auto _ : state) {
        scan.initargs();
        scan.analysisAdware();
    }
    state.counters["visits"] = static_cast<double>(scan.scanedFiles());
}

void BM_applicationWalk(benchmark::State& state) {
    ScopedVolume scope(gVolume->volume());
    AdwareScan scan(plist::Array{}, {});
    long bundles = 0;
    for (auto _ : state)
        scan.method_1({"/Applications", gVolume->home()}, [&](const std::string&) { ++bundles; });
    benchmark::DoNotOptimize(bundles);
}

void BM_find(benchmark::State& state) {
    bench::runTool(state, findCommand());
}

BENCHMARK_CAPTURE(BM_analysisAdware, , std::string("database"))
    ->Name("BM_analysisAdware")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_applicationWalk)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_find)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    long files = 200'000;
    long folders = 20'000;
    std::map<std::string, std::string> files_cx;
    bench::takeFlags(argc, argv, [&](std::string_view arg) {
        return bench::takeFlag(arg, "--files=", files) ||
               bench::takeFlag(arg, "--folders=", folders) ||
               bench::takeFlag(arg, "--database=", files_cx["database"]) ||
               bench::takeFlag(arg, "--baseline=", files_cx["baseline"]);
    });
    benchmark::Initialize(&argc, argv);
    for (const auto& [which, path] : files_cx) {
        if (path.empty())
            continue;
        std::ifstream in(path, std::ios::binary);
        const Data bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        try {
            gDatabases[which] = decodeSignatureFile(bytes);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "%s: %s\n", path.c_str(), e.what());
            return 1;
        }
    }
    if (gDatabases.count("baseline") != 0) {
        benchmark::RegisterBenchmark("BM_analysisAdwareBaseline", BM_analysisAdware,
                                     std::string("baseline"))
            ->UseRealTime()
            ->MeasureProcessCPUTime()
            ->Unit(benchmark::kMillisecond);
    }

    sample::FakeVolume volume("bench");
    gVolume = &volume;
    std::printf("building %ld files in %ld folders under %s\n", files, folders,
                volume.root().c_str());
    buildHome(volume, files, folders);
    if (!bench::runCommand(findCommand() + " > /dev/null"))  // warm the cache
        return 1;

    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    if (gDatabases.count("baseline") != 0) {
        const auto grown = reporter.times["BM_analysisAdware"];
        const auto older = reporter.times["BM_analysisAdwareBaseline"];
        if (older.wall > 0)
            std::printf("database / baseline: wall %.3f (%.1f ms against %.1f ms)\n",
                        grown.wall / older.wall, grown.wall, older.wall);
    }
    const auto find = reporter.times["BM_find"];
    if (find.wall > 0 && find.cpu > 0) {
        for (const char* name : {"BM_analysisAdware", "BM_applicationWalk"}) {
            const auto ours = reporter.times[name];
            std::printf("%s / find: wall %.2f (%.0f ms against %.0f ms), processor %.2f\n", name,
                        ours.wall / find.wall, ours.wall, find.wall, ours.cpu / find.cpu);
        }
    }
    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("peak resident memory: %ld MiB\n", usage.ru_maxrss / 1024);
    return 0;
}
