#include "appviewer/na_app_view_hvc.h"

#include "appviewer/app_information.h"
#include "ui/na_result_cell_views.h"

namespace sysmend {

QWidget* NAAppViewHVC::contentViewForRow(const std::shared_ptr<NAFileobj>& item) {
    auto* cell = NALabelKeyAndValueCellBaseView::initwithNib();
    if (!cell)
        return nullptr;
    if (const auto* info = dynamic_cast<const NAAppSingleInformation*>(item.get())) {
        setElidedText(cell->key_text, QString::fromStdString(info->key_title()));
        setElidedText(cell->value_text, QString::fromStdString(info->value_title()));
    }
    cell->setRepresentObj(item);
    return cell;
}

void NAAppViewHVC::showEmptyState(bool empty) {
    contents_view_superview()->setHidden(empty);
}

}  // namespace sysmend
