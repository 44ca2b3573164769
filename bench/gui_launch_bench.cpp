// Launching the window, on the offscreen platform: from making the AppDelegate and
// applicationDidFinishLaunching to the Crashes start page painted in the shown window. The
// window is shown at once, as main does; the delegate's own deferred bring-to-front a second
// later is not waited for. The user defaults live in a temporary folder and the volume is the
// sample volume's shape (a home with a few applications), built in a temporary folder.
//
// The first launch of the process (images, fonts and style loaded for the first time) is
// printed on its own before the repeated launches.
//
//   gui_launch_bench [benchmark flags]

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>
#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "app/app_delegate.h"
#include "gui_test_support.h"
#include "platform/volume.h"
#include "sample/fake_volume.h"
#include "ui/named_image.h"

namespace {

using namespace sysmend;

// Launches and returns once the Crashes start page has been painted.
std::unique_ptr<AppDelegate> launch() {
    auto delegate = std::make_unique<AppDelegate>();
    delegate->applicationDidFinishLaunching();
    NARootPVC* crashes = delegate->PVC(*delegate->categorys().at(1));
    if (!crashes || delegate->controllerView() != crashes)
        throw std::runtime_error("launch did not show the Crashes start page");
    test::EventCounter<QEvent::Paint> painted;
    crashes->installEventFilter(&painted);
    delegate->window()->show();
    while (painted.count == 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    crashes->removeEventFilter(&painted);
    return delegate;
}

void quit(std::unique_ptr<AppDelegate> delegate) {
    delegate.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

void BM_launchToCrashesPage(benchmark::State& state) {
    for (auto _ : state) {
        std::unique_ptr<AppDelegate> delegate = launch();
        state.PauseTiming();
        quit(std::move(delegate));
        state.ResumeTiming();
    }
}

BENCHMARK(BM_launchToCrashesPage)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir config;
    qputenv("SYSMEND_CONFIG_DIR", config.path().toLocal8Bit());
    sample::FakeVolume volume("alice");
    for (const char* name : {"CloudSync", "Inkwell Notes", "Menu Weather"})
        volume.addAppBundle("/Applications", name, std::string("com.example.") + name);
    Volume::setCurrent(volume.volume());

    const auto start = std::chrono::steady_clock::now();
    QApplication app(argc, argv);
    initGuiResources();
    std::unique_ptr<AppDelegate> first = launch();
    const std::chrono::duration<double, std::milli> cold = std::chrono::steady_clock::now() - start;
    quit(std::move(first));
    std::printf("first launch, QApplication included: %.1f ms\n", cold.count());

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
