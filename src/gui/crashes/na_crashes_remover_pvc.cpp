#include "crashes/na_crashes_remover_pvc.h"

#include "crashes/crash_scan.h"

namespace sysmend {

NACrashesRemoverPVC::NACrashesRemoverPVC(QWidget* parent) : NAStartPage(parent) {}

void NACrashesRemoverPVC::loadView() {
    NAStartPage::loadView();
    buildStartView(QStringLiteral("Find the crash reports your applications left behind, see "
                                  "them grouped by application, and remove the ones you no "
                                  "longer need."),
                   QStringLiteral("Scan Crash Reports"), [this] { scanCrashedApplications(); });
}

void NACrashesRemoverPVC::scanCrashedApplications() {
    auto category = categoryObj();
    if (!category || isSmartScaing())
        return;
    category->groups().clear();
    grantUserPermission([this, category](bool granted) {
        if (!granted)
            return;
        // On the pool thread; the result page reads the groups after the sheet has ended.
        scanBehindWaitingSheet([category] { sysmend::scanCrashedApplications(category); });
    });
}

}  // namespace sysmend
