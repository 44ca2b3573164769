#include "app/na_root_pvc.h"

#include <QFileDialog>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QLabel>
#include <QSortFilterProxyModel>

#include "platform/syslog.h"
#include "platform/volume.h"

namespace sysmend {

namespace {

FileURL homeFolderURL() {
    return FileURL::fileURLWithPath(Volume::current().home(), true);
}

FileURL applicationsFolderURL() {
    return FileURL::fileURLWithPath("/Applications", true);
}

// The chooser works on host paths, the filter on volume paths.
std::optional<FileURL> volumeURL(const QString& hostPath) {
    auto path = Volume::current().volumePath(hostPath.toStdString());
    if (!path)
        return std::nullopt;
    return FileURL::fileURLWithPath(*path, true);
}

// Greys out every folder the page's filter refuses, so that it can be neither selected nor
// confirmed.
class FolderFilterModel : public QSortFilterProxyModel {
  public:
    FolderFilterModel(const NARootPVC& page, QFileDialog* dialog)
        : QSortFilterProxyModel(dialog), page_(page), dialog_(dialog) {}

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        Qt::ItemFlags flags = QSortFilterProxyModel::flags(index);
        auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
        if (!files)
            return flags;
        auto url = volumeURL(files->filePath(mapToSource(index)));
        if (!url || !page_.panel(dialog_, *url))
            flags &= ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        return flags;
    }

  private:
    const NARootPVC& page_;
    const QFileDialog* dialog_;
};

// A typed path could name any folder: the chooser also refuses to confirm one the filter
// refuses.
class FolderPanel : public QFileDialog {
  public:
    FolderPanel(const NARootPVC& page, QWidget* parent) : QFileDialog(parent), page_(page) {}

    void accept() override {
        const QStringList chosen = selectedFiles();
        if (chosen.isEmpty())
            return;
        auto url = volumeURL(chosen.first());
        if (!url || !page_.panel(this, *url))
            return;
        QFileDialog::accept();
    }

  private:
    const NARootPVC& page_;
};

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
    if (fileAccess_->startAceess(folder, true)) {
        completion(true);
        return;
    }

    auto* label = new QLabel(message);
    label->setFixedSize(600, 22);
    label->setAlignment(Qt::AlignCenter);
    label->setTextInteractionFlags(Qt::NoTextInteraction);
    label->setStyleSheet(QStringLiteral("color: black; background: transparent; border: none;"));

    auto* dialog = new FolderPanel(*this, window());
    slot = dialog;  // before the filter model, which asks panel() about this dialog
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // Qt's own chooser: the platform's would ignore the filter model.
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setOption(QFileDialog::ReadOnly);  // no new folders
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setLabelText(QFileDialog::Accept, prompt);
    dialog->setDirectory(QString::fromStdString(Volume::current().hostPath(folder.path())));
    dialog->setProxyModel(new FolderFilterModel(*this, dialog));
    if (auto* grid = qobject_cast<QGridLayout*>(dialog->layout()))
        grid->addWidget(label, grid->rowCount(), 0, 1, grid->columnCount(), Qt::AlignHCenter);

    connect(dialog, &QDialog::finished, this,
            [this, dialog, completion = std::move(completion)](int result) {
                const QStringList chosen = dialog->selectedFiles();
                const auto url = chosen.isEmpty() ? std::nullopt : volumeURL(chosen.first());
                logLine("path==" + (result == QDialog::Accepted && url ? url->path() : "(null)"));
                if (result == QDialog::Accepted && url) {
                    fileAccess_->persistPermissionPath(url->path());
                    completion(true);
                } else {
                    completion(false);
                }
            });
    dialog->setWindowModality(Qt::WindowModal);
    dialog->open();
}

}  // namespace sysmend
