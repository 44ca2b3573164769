#include "startup/na_startup_items_pvc.h"

#include "startup/startup_scan.h"

namespace sysmend {

NAStartupItemsPVC::NAStartupItemsPVC(QWidget* parent) : NAStartPage(parent) {}

void NAStartupItemsPVC::loadView() {
    NAStartPage::loadView();
    buildStartView(QStringLiteral("See which applications start on their own through launch "
                                  "agents and daemons, and take the ones you do not want off "
                                  "the list."),
                   QStringLiteral("View Startup Items"), [this] { viewStartupItemsAction(); });
}

void NAStartupItemsPVC::viewStartupItemsAction() {
    loadStartusItems();
}

void NAStartupItemsPVC::loadStartusItems() {
    if (isSmartScaing())
        return;
    grantUserPermission([this](bool granted) {
        auto category = categoryObj();
        if (!granted || !category)
            return;
        // On the pool thread, index of applications included; the result page reads the
        // groups after the sheet has ended.
        scanBehindWaitingSheet([category] { NAStartupItemsScan().loadStartusItems(*category); });
    });
}

bool NAStartupItemsPVC::isPlistFile(std::string_view volumePath) {
    return NAStartupItemsScan::isPlistFile(volumePath);
}

}  // namespace sysmend
