// A Vexbane scan through the window against the same scan without it, in the same run, on the
// sample volume (written by `sysmend-cli sample-volume` into a temporary folder) with the
// shipped signature database, on the offscreen platform:
//   - BM_engineScan: AdwareScan's initargs and analysisAdware on the calling thread;
//   - BM_buttonToResultPage: a click on the page's start button (access to the home folder
//     already granted) to the result page shown: the scan sheet, the scan on its pool
//     thread, the visits shown on the sheet, the sheet's end and the hand-over.
// The last line gives the window's overhead. --files=N adds N small files in 100 folders to
// the home folder, which the scan walks whole, to see the overhead on a longer scan.
//
//   gui_adware_bench [--files=0] [benchmark flags]

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPushButton>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "adware/adware_scan.h"
#include "adware/na_adware_removal_pvc.h"
#include "adware/signature_loader.h"
#include "app/app_delegate.h"
#include "platform/volume.h"
#include "recording_reporter.h"
#include "sandbox/app_sandbox_file_access.h"
#include "support/fake_volume.h"
#include "ui/named_image.h"

namespace {

using namespace sysmend;

constexpr std::size_t kVexbaneRow = 7;

AppDelegate* gDelegate = nullptr;

NACategoryObj& vexbane() {
    return *gDelegate->categorys().at(kVexbaneRow);
}

void BM_engineScan(benchmark::State& state) {
    auto category = std::make_shared<NACategoryObj>();
    AdwareScan scan(loadSignatureDatabase(), category);
    for (auto _ : state) {
        scan.initargs();
        scan.analysisAdware();
    }
    state.counters["visits"] = static_cast<double>(scan.scanedFiles());
    state.counters["findings"] = static_cast<double>(scan.treats().size());
}

void BM_buttonToResultPage(benchmark::State& state) {
    NACategoryObj& category = vexbane();
    auto* page = qobject_cast<NAAdwareRemovalPVC*>(gDelegate->PVC(category));
    if (!page || !page->startButton())
        throw std::runtime_error("the Vexbane start page is missing");
    for (auto _ : state) {
        page->startButton()->click();
        while (category.displayState() != 1)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        state.PauseTiming();
        // Back to the start page, as starting over does.
        category.setDisplayState(0);
        gDelegate->displayViewController(category);
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["visits"] = static_cast<double>(page->scanedFiles());
    state.counters["findings"] = static_cast<double>(page->treats().size());
}

BENCHMARK(BM_engineScan)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_buttonToResultPage)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);

long takeFilesFlag(int& argc, char** argv) {
    long files = 0;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--files=", 8) == 0)
            files = std::atol(argv[i] + 8);
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    return files;
}

void addFiles(testing::FakeVolume& volume, long files) {
    const std::string content(100, 'x');
    for (long i = 0; i < files; ++i)
        volume.write(volume.home() + "/Documents/f" + std::to_string(i % 100) + "/" +
                         std::to_string(i) + ".txt",
                     content);
}

}  // namespace

int main(int argc, char** argv) {
    const long files = takeFilesFlag(argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir config;
    QTemporaryDir root;
    qputenv("SYSMEND_CONFIG_DIR", config.path().toLocal8Bit());
    const std::string command = std::string("'") + SYSMEND_CLI + "' sample-volume '" +
                                root.path().toStdString() + "' > /dev/null";
    if (std::system(command.c_str()) != 0) {
        std::fprintf(stderr, "could not write the sample volume\n");
        return 1;
    }
    testing::FakeVolume volume(root.path().toStdString(), "alice");
    addFiles(volume, files);
    Volume::setCurrent(volume.volume());

    QApplication app(argc, argv);
    initGuiResources();
    AppSandboxFileAccess::fileAccess().persistPermissionPath(volume.home());
    AppDelegate delegate;
    gDelegate = &delegate;
    delegate.applicationDidFinishLaunching();
    delegate.window()->show();
    delegate.displayViewController(vexbane());
    QCoreApplication::processEvents();

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    const auto engine = reporter.times.find("BM_engineScan");
    const auto window = reporter.times.find("BM_buttonToResultPage");
    if (engine != reporter.times.end() && window != reporter.times.end() && engine->second.wall > 0)
        std::printf("window / engine: wall %.2f (%.2f ms against %.2f ms), overhead %+.1f%%\n",
                    window->second.wall / engine->second.wall, window->second.wall,
                    engine->second.wall, (window->second.wall / engine->second.wall - 1.0) * 100.0);
    return 0;
}
