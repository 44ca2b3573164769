#include "adware/na_groups_hvc.h"

#include "adware/groups_removal.h"
#include "platform/path.h"
#include "tools/na_tools.h"
#include "ui/item_image.h"
#include "ui/na_result_cell_views.h"

namespace sysmend {

namespace {

constexpr std::int64_t kAdwareCategoryType = 3;

}  // namespace

void NAGroupsHVC::removeAction(QObject* sender) {
    const auto category = categoryObj();
    if (category && category->categoryType() == kAdwareCategoryType)
        remove_adware_action(sender);
    else
        remove_normal_objects_action(sender);
}

void NAGroupsHVC::remove_adware_action(QObject*) {
    const bool removed = removeBehindProgressSheet(
        [this](NACategoryObj& category) {
            sysmend::remove_adware_action(category, removeFaildFiles());
        },
        [this] { reloadData(); });
    // After the progress sheet has ended: what could not be deleted.
    if (removed && !removeFaildFiles().empty())
        showLeftOvers();
}

void NAGroupsHVC::remove_normal_objects_action(QObject*) {
    removeBehindProgressSheet(
        [](NACategoryObj& category) { sysmend::remove_normal_objects_action(category); });
}

QWidget* NAGroupsHVC::contentViewForRow(const std::shared_ptr<NAFileobj>& item) {
    auto* cell = NAFilelistCellBaseView::initwithNib();
    if (!cell)
        return nullptr;
    const std::string name =
        item->fileName().empty() ? path::lastPathComponent(item->filePath()) : item->fileName();
    setElidedText(cell->name_text, QString::fromStdString(name));
    setElidedText(cell->path_text, QString::fromStdString(item->filePath()), Qt::ElideMiddle);
    if (cell->size_text)
        cell->size_text->setText(QString::fromStdString(recal_size(item->fileSize())));
    if (cell->icon_view) {
        const ImageRef icon =
            item->fileIcon().isNone() ? ImageRef::fileIcon(item->filePath()) : item->fileIcon();
        cell->icon_view->setPixmap(
            itemImage(icon, cell->icon_view->minimumSize(), devicePixelRatioF()));
    }
    if (cell->checkBtn) {
        cell->checkBtn->setState(static_cast<int>(item->isChecked()));
        cell->checkBtn->setVisible(NAFilelistCellBaseView::isPlainFileItem(*item));
    }
    cell->setRepresentObj(item);
    return cell;
}

}  // namespace sysmend
