// Loading the signature database as the adware page does (read, decrypt, decode): the shipped
// resource of the build tree, and a generated database of 20,000 strings, whole and by phase.
// Targets: under 20 ms and under 200 ms for a whole load.
//
//   signature_load_bench [benchmark flags]

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "adware/signature_database.h"
#include "adware/signature_loader.h"
#include "platform/keyed_archive.h"

namespace {

using namespace sysmend;

constexpr int kEntries = 1000;
constexpr int kStringsPerEntry = 20;  // the name and 19 list strings

// Realistic lengths: launch-job names, paths, bundle and extension names of 20 to 70 bytes.
plist::Value generatedDatabase() {
    const char* const lists[] = {"launch",      "launch",      "launch",       "launch",
                                 "launch",      "path",        "path",         "path",
                                 "path",        "path",        "app",          "app",
                                 "app",         "extensions",  "extensions",   "extensions",
                                 "preferences", "preferences", "launchContent"};
    plist::Array database;
    for (int entry = 0; entry < kEntries; ++entry) {
        plist::Dictionary threat;
        const std::string family = "Family" + std::to_string(entry);
        threat.set("name", family + " / Generated Adware Family");
        for (int i = 0; i < kStringsPerEntry - 1; ++i) {
            const std::string text = "/Library/Application Support/com." + family + ".helper" +
                                     std::to_string(i) + ".plist";
            plist::Value* list = threat.find(lists[i]);
            if (list == nullptr) {
                threat.set(lists[i], plist::Array{});
                list = threat.find(lists[i]);
            }
            list->mutableArray()->push_back(text);
        }
        database.push_back(std::move(threat));
    }
    return database;
}

class GeneratedResource {
  public:
    GeneratedResource() {
        char folder[] = "/tmp/sysmend-signature-bench.XXXXXX";
        if (::mkdtemp(folder) == nullptr)
            std::abort();
        folder_ = folder;
        file_ = encryptSignatureDatabase(generatedDatabase());
        std::ofstream(folder_ + "/.cx", std::ios::binary)
            .write(reinterpret_cast<const char*>(file_.data()),
                   static_cast<std::streamsize>(file_.size()));
    }
    ~GeneratedResource() {
        ::unlink((folder_ + "/.cx").c_str());
        ::rmdir(folder_.c_str());
    }

    const std::string& folder() const { return folder_; }
    const Data& file() const { return file_; }

  private:
    std::string folder_;
    Data file_;
};

const GeneratedResource& generated() {
    static const GeneratedResource resource;
    return resource;
}

void BM_LoadShippedDatabase(benchmark::State& state) {
    setResourceFolder("");
    if (loadSignatureDatabase().asArray()->empty()) {
        state.SkipWithError("no shipped database: build the signature_database target");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(loadSignatureDatabase());
    state.counters["entries"] = static_cast<double>(loadSignatureDatabase().asArray()->size());
}
BENCHMARK(BM_LoadShippedDatabase)->Unit(benchmark::kMillisecond);

void BM_LoadGeneratedDatabase(benchmark::State& state) {
    setResourceFolder(generated().folder());
    for (auto _ : state)
        benchmark::DoNotOptimize(loadSignatureDatabase());
    setResourceFolder("");
    state.counters["strings"] = kEntries * kStringsPerEntry;
    state.counters["file_bytes"] = static_cast<double>(generated().file().size());
}
BENCHMARK(BM_LoadGeneratedDatabase)->Unit(benchmark::kMillisecond);

void BM_DecryptGeneratedDatabase(benchmark::State& state) {
    xxffucckxx::initialize();
    for (auto _ : state)
        benchmark::DoNotOptimize(m0(generated().file(), *xxs_su->key));
}
BENCHMARK(BM_DecryptGeneratedDatabase)->Unit(benchmark::kMillisecond);

void BM_DecodeGeneratedDatabase(benchmark::State& state) {
    xxffucckxx::initialize();
    const Data archive = *m0(generated().file(), *xxs_su->key);
    for (auto _ : state)
        benchmark::DoNotOptimize(keyed_archive::decode(archive));
}
BENCHMARK(BM_DecodeGeneratedDatabase)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
