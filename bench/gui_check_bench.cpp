// What a user waits for on the result pages, on the offscreen platform: a click on a group's
// check box with 100,000 items below it (the marks of every item, the rows in view and the
// summary line), a click on one item's box in that group, and choosing an application on the
// App Viewer page with 200 applications listed. Each iteration ends once the event loop has
// drawn the page and let the replaced cell views go.
//
//   QT_QPA_PLATFORM=offscreen gui_check_bench [--items=100000] [benchmark flags]

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "adware/na_groups_hvc.h"
#include "appviewer/app_information.h"
#include "appviewer/na_app_view_hvc.h"
#include "bench_support.h"
#include "gui_bench_support.h"
#include "gui_test_support.h"
#include "ui/na_result_cell_views.h"

namespace {

long gItems = 100000;

using namespace sysmend;

using bench::settle;

// The page shown and drawn.
template <class Page>
std::unique_ptr<Page> showPage(const std::shared_ptr<NACategoryObj>& category) {
    auto page = test::showPage<Page>(category);
    settle();
    return page;
}

std::shared_ptr<NACategoryObj> crashesWithOneBigGroup() {
    auto category = std::make_shared<NACategoryObj>("Crashes", ImageRef::named("crashes"));
    category->setCategoryType(2);
    auto big = std::make_shared<NAGroupObj>("Big", ImageRef::named("crashes"));
    for (int i = 0; i < gItems; ++i) {
        auto item = std::make_shared<NAFileobj>();
        item->setFilePath("/Users/alice/Library/Logs/DiagnosticReports/Big_" + std::to_string(i) +
                          ".crash");
        item->setFileSize(4096);
        big->addFileObj(item);
    }
    category->groups().push_back(big);
    for (int g = 0; g < 4; ++g) {
        auto small = std::make_shared<NAGroupObj>("Small " + std::to_string(g), ImageRef::none());
        auto item = std::make_shared<NAFileobj>();
        item->setFilePath("/Users/alice/small" + std::to_string(g));
        small->addFileObj(item);
        category->groups().push_back(small);
    }
    return category;
}

void BM_GroupCheckBoxClick(benchmark::State& state) {
    const auto category = crashesWithOneBigGroup();
    const auto page = showPage<NAGroupsHVC>(category);
    for (auto _ : state) {
        auto* cell = qobject_cast<NAGroupTableBaseCellView*>(page->g_table()->cellWidget(0));
        cell->checkBtn->click();
        settle();
    }
    if (page->c_table()->rowCount() != gItems)
        state.SkipWithError("the big group is not shown");
    state.counters["items"] = gItems;
}
BENCHMARK(BM_GroupCheckBoxClick)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ItemCheckBoxClick(benchmark::State& state) {
    const auto category = crashesWithOneBigGroup();
    category->groups()[0]->setIsChecked(1);
    const auto page = showPage<NAGroupsHVC>(category);
    for (auto _ : state) {
        auto* cell = qobject_cast<NAFilelistCellBaseView*>(page->c_table()->cellWidget(2));
        cell->checkBtn->click();
        settle();
    }
    state.counters["items"] = gItems;
}
BENCHMARK(BM_ItemCheckBoxClick)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SelectApplication(benchmark::State& state) {
    auto category = std::make_shared<NACategoryObj>("App Viewer", ImageRef::named("appviewer"));
    for (int app = 0; app < 200; ++app) {
        auto group = std::make_shared<NAGroupObj>("App " + std::to_string(app),
                                                  ImageRef::fileTypeIcon("app"));
        for (int row = 0; row < 24; ++row) {
            group->addFileObj(NAAppSingleInformation::initWithKeyAndValue(
                "Key " + std::to_string(row), "Value " + std::to_string(row)));
        }
        category->groups().push_back(group);
    }
    const auto page = showPage<NAAppViewHVC>(category);
    int row = 0;
    for (auto _ : state) {
        row = row == 1 ? 2 : 1;
        page->g_table()->selectRowIndexes(row);
        settle();
    }
    if (page->c_table()->rowCount() != 24)
        state.SkipWithError("the application's rows are not shown");
}
BENCHMARK(BM_SelectApplication)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    sysmend::bench::takeFlags(argc, argv, [](std::string_view arg) {
        return sysmend::bench::takeFlag(arg, "--items=", gItems);
    });
    return sysmend::bench::runGuiBenchmarks(argc, argv);
}
