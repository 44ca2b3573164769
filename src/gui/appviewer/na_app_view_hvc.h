// The App Viewer tool's result page: the applications found on the left, the facts of the
// selected one (its bundle information and sandbox entitlements, as key/value rows) on the
// right.
//
// A viewer only: Remove shows and ends the progress sheet and changes nothing, since the
// application groups are not web groups. Without applications the detail area is hidden and
// the application table shows its empty state.
#pragma once

#include "app/na_result_list_hvc.h"

namespace sysmend {

class NAAppViewHVC : public NAResultListHVC {
    Q_OBJECT
  public:
    explicit NAAppViewHVC(QWidget* parent = nullptr) : NAResultListHVC(parent) {}

  protected:
    QWidget* contentViewForRow(const std::shared_ptr<NAFileobj>& item) override;
    int contentRowHeight() const override { return 32; }
    // The detail area (this page's c_view in the tool's own words) is shown only when there
    // is an application; the page itself keeps its tables.
    void showEmptyState(bool empty) override;
};

}  // namespace sysmend
