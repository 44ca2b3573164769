#include "app/na_folder_chooser.h"

#include <QFileSystemModel>
#include <QGridLayout>
#include <QLabel>
#include <QSortFilterProxyModel>
#include <QUrl>
#include <vector>

#include "platform/syslog.h"
#include "platform/volume.h"
#include "ui/na_sheet.h"

namespace sysmend {

namespace {

// Greys out every folder the chooser's filter refuses, so that it can be neither selected nor
// confirmed. Flags are asked for whenever a row is drawn or clicked, so nothing is cached.
class FolderFilterModel : public QSortFilterProxyModel {
  public:
    explicit FolderFilterModel(NAFolderChooser* chooser)
        : QSortFilterProxyModel(chooser), chooser_(chooser) {}

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        Qt::ItemFlags flags = QSortFilterProxyModel::flags(index);
        auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
        if (!files)
            return flags;
        auto url = volumeFolderURL(files->filePath(mapToSource(index)));
        if (!url || !chooser_->isEnabledFolder(*url))
            flags &= ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        return flags;
    }

  private:
    NAFolderChooser* chooser_;
};

}  // namespace

std::optional<FileURL> volumeFolderURL(const QString& hostPath) {
    auto path = Volume::current().volumePath(hostPath.toStdString());
    if (!path)
        return std::nullopt;
    return FileURL::fileURLWithPath(*path, true);
}

NAFolderChooser::NAFolderChooser(Filter filter, QWidget* parent)
    : QFileDialog(parent), filter_(std::move(filter)) {
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::ShowDirsOnly);
    setOption(QFileDialog::ReadOnly);  // no "New Folder", no renaming
    setFileMode(QFileDialog::Directory);
    setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);  // hidden folders stay out of sight
    setProxyModel(new FolderFilterModel(this));
    // The places beside the list are the volume's, not the host's.
    const Volume& volume = Volume::current();
    setSidebarUrls({QUrl::fromLocalFile(QString::fromStdString(volume.root())),
                    QUrl::fromLocalFile(QString::fromStdString(volume.hostPath(volume.home())))});
}

void NAFolderChooser::setStartFolder(const FileURL& folder) {
    setDirectory(QString::fromStdString(Volume::current().hostPath(folder.path())));
}

void NAFolderChooser::setAccessoryText(const QString& text) {
    auto* label = findChild<QLabel*>(QStringLiteral("accessoryLabel"));
    if (!label) {
        auto* grid = qobject_cast<QGridLayout*>(layout());
        if (!grid)
            return;
        label = new QLabel(this);
        label->setObjectName(QStringLiteral("accessoryLabel"));
        label->setFixedSize(600, 22);
        label->setAlignment(Qt::AlignCenter);
        label->setTextInteractionFlags(Qt::NoTextInteraction);
        label->setStyleSheet(
            QStringLiteral("color: black; background: transparent; border: none;"));
        grid->addWidget(label, grid->rowCount(), 0, 1, grid->columnCount(), Qt::AlignHCenter);
    }
    label->setText(text);
}

void NAFolderChooser::setMessage(const QString& text) {
    auto* label = findChild<QLabel*>(QStringLiteral("messageLabel"));
    if (!label) {
        auto* grid = qobject_cast<QGridLayout*>(layout());
        if (!grid)
            return;
        // The message goes above everything else: every item moves one row down.
        struct Placed {
            QLayoutItem* item;
            int row, column, rowSpan, columnSpan;
        };
        std::vector<Placed> placed;
        while (grid->count() > 0) {
            Placed p{nullptr, 0, 0, 0, 0};
            grid->getItemPosition(0, &p.row, &p.column, &p.rowSpan, &p.columnSpan);
            p.item = grid->takeAt(0);
            placed.push_back(p);
        }
        for (int row = grid->rowCount() - 1; row >= 0; --row)
            grid->setRowStretch(row + 1, grid->rowStretch(row));
        grid->setRowStretch(0, 0);
        for (const Placed& p : placed)
            grid->addItem(p.item, p.row + 1, p.column, p.rowSpan, p.columnSpan);

        label = new QLabel(this);
        label->setObjectName(QStringLiteral("messageLabel"));
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignCenter);
        label->setStyleSheet(QStringLiteral("color: rgb(45, 57, 71); padding: 4px 0 6px 0;"));
        grid->addWidget(label, 0, 0, 1, grid->columnCount());
    }
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

std::optional<FileURL> NAFolderChooser::chosenURL() const {
    const QStringList chosen = selectedFiles();
    if (chosen.isEmpty())
        return std::nullopt;
    return volumeFolderURL(chosen.first());
}

void NAFolderChooser::accept() {
    const auto url = chosenURL();
    if (!url || !isEnabledFolder(*url))
        return;
    QFileDialog::accept();
}

void askForFolderAccess(QWidget* page, AppSandboxFileAccess& access, const FileURL& folder,
                        const QString& prompt, const QString& accessoryText,
                        NAFolderChooser::Filter filter, QPointer<QFileDialog>& slot,
                        std::function<void(bool granted)> completion) {
    if (access.startAceess(folder, true)) {
        completion(true);
        return;
    }

    auto* chooser = new NAFolderChooser(std::move(filter), page->window());
    slot = chooser;
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    chooser->setLabelText(QFileDialog::Accept, prompt);
    chooser->setAccessoryText(accessoryText);
    chooser->setStartFolder(folder);

    beginSheet(page, chooser, [chooser, &access, completion = std::move(completion)](int result) {
        const bool ok = result == QDialog::Accepted;
        const auto url = ok ? chooser->chosenURL() : std::nullopt;
        logLine("path==" + (url ? url->path() : std::string("(null)")));
        if (url) {
            access.persistPermissionPath(url->path());
            completion(true);
        } else {
            completion(false);
        }
    });
}

}  // namespace sysmend
