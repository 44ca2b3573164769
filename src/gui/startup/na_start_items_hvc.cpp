#include "startup/na_start_items_hvc.h"

#include "model/tool_records.h"
#include "ui/na_result_cell_views.h"

namespace sysmend {

QWidget* NAStartItemsHVC::contentViewForRow(const std::shared_ptr<NAFileobj>& item) {
    auto* cell = NAStartupItemInformationCellBaseView::initwithNib();
    if (!cell)
        return nullptr;
    if (const auto* job = dynamic_cast<const NAStartupItemObj*>(item.get())) {
        setElidedText(cell->itemID_text, QString::fromStdString(job->item_id()));
        setElidedText(cell->loadedUsing_text, QString::fromStdString(job->loaded_using()),
                      Qt::ElideMiddle);
        setElidedText(cell->fullPath_text, QString::fromStdString(job->full_path()),
                      Qt::ElideMiddle);
    }
    cell->setRepresentObj(item);
    return cell;
}

}  // namespace sysmend
