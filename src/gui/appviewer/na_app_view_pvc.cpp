#include "appviewer/na_app_view_pvc.h"

#include <QCoreApplication>
#include <QDir>

#include "appviewer/app_listing.h"
#include "platform/volume.h"

namespace sysmend {

NAAppViewPVC::NAAppViewPVC(QWidget* parent) : NAStartPage(parent) {}

void NAAppViewPVC::loadView() {
    NAStartPage::loadView();
    buildStartView(QStringLiteral("List the applications in your Applications folder with their "
                                  "version, size and the permissions they ask of the sandbox."),
                   QStringLiteral("View Applications"), [this] { viewAllApplications(); });
}

void NAAppViewPVC::viewAllApplications() {
    auto category = categoryObj();
    if (!category || isSmartScaing())
        return;
    category->groups().clear();
    // Nothing on this page raises it, but a page that goes mid-run does: start afresh.
    stop = false;
    scanBehindWaitingSheet([this, category] {
        // On the pool thread; the result page reads the groups after the sheet has ended.
        AppListing listing(stop);
        listing.setOwnBundlePath(ownBundlePath());
        listing.setProgressHook([this](float fraction) { updateProgress(fraction); });
        listing.loadAllApps("/Applications", category->groups());
    });
}

bool NAAppViewPVC::isAppFile(std::string_view volumePath) {
    return AppListing::isAppFile(volumePath);
}

bool NAAppViewPVC::isAlias(std::string_view volumePath) {
    return AppListing::isAlias(volumePath);
}

std::string NAAppViewPVC::ownBundlePath() {
    // <bundle>.app/Contents/MacOS/<executable>
    QDir folder(QCoreApplication::applicationDirPath());
    if (folder.dirName() != QStringLiteral("MacOS") || !folder.cdUp() ||
        folder.dirName() != QStringLiteral("Contents") || !folder.cdUp() ||
        !folder.dirName().endsWith(QStringLiteral(".app"), Qt::CaseInsensitive))
        return {};
    return Volume::current().volumePath(folder.absolutePath().toStdString()).value_or("");
}

}  // namespace sysmend
