// The Startup Items tool's result page: one group per launchd job file, each with its startup
// item (label, job file, application) in the content table.
//
// Remove only shows and ends the progress sheet: startup groups are not web groups, so the
// list-only removal takes nothing off the list and nothing on disk is touched. Items carry no
// check box of their own; a job is checked or unchecked through its group's box.
#pragma once

#include "app/na_result_list_hvc.h"

namespace sysmend {

class NAStartItemsHVC : public NAResultListHVC {
    Q_OBJECT
  public:
    explicit NAStartItemsHVC(QWidget* parent = nullptr) : NAResultListHVC(parent) {}

  protected:
    QWidget* contentViewForRow(const std::shared_ptr<NAFileobj>& item) override;
    int contentRowHeight() const override { return 72; }
};

}  // namespace sysmend
