#include "app/na_root_pvc.h"

#include "app/na_folder_chooser.h"
#include "platform/volume.h"

namespace sysmend {

namespace {

FileURL homeFolderURL() {
    return FileURL::fileURLWithPath(Volume::current().home(), true);
}

FileURL applicationsFolderURL() {
    return FileURL::fileURLWithPath("/Applications", true);
}

}  // namespace

NARootPVC::NARootPVC(QWidget* parent) : QWidget(parent) {}

void NARootPVC::loadView() {
    fileAccess_ = &AppSandboxFileAccess::fileAccess();
}

void NARootPVC::grantUserPermission(Completion completion) {
    askForFolder(homeFolderURL(), QStringLiteral("Choose Home Folder"),
                 QStringLiteral("For Sysmend to function correctly, you need to allow access to "
                                "your home folder."),
                 userOpenpanel_, std::move(completion));
}

void NARootPVC::graintAppPrmission(Completion completion) {
    askForFolder(applicationsFolderURL(), QStringLiteral("Choose Application Folder"),
                 QStringLiteral("For Sysmend to function correctly, you need to allow access to "
                                "your Application folder."),
                 appOpenpanel_, std::move(completion));
}

bool NARootPVC::panel(const QFileDialog* sender, const FileURL& url) const {
    if (sender == nullptr)
        return false;
    if (sender == userOpenpanel_)
        return url == homeFolderURL();
    if (sender == appOpenpanel_)
        return url == applicationsFolderURL();
    return false;
}

void NARootPVC::startScan(const std::vector<std::string>&, ProcessBlock, SizeBlock) {
    isSmartScaing_ = true;
}

void NARootPVC::askForFolder(const FileURL& folder, const QString& prompt, const QString& message,
                             QPointer<QFileDialog>& slot, Completion completion) {
    // The two choosers are told apart by the slot they are kept in, which panel() reads.
    askForFolderAccess(
        this, *fileAccess_, folder, prompt, message,
        [this](const QFileDialog* chooser, const FileURL& url) { return panel(chooser, url); },
        slot, std::move(completion));
}

}  // namespace sysmend
