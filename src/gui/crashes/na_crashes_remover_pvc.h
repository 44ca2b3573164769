// The Crashes tool's start page: finds the user's crash reports behind the waiting sheet and
// hands them over, grouped by application, to the result page.
#pragma once

#include "app/na_start_page.h"

namespace sysmend {

class NACrashesRemoverPVC : public NAStartPage {
    Q_OBJECT
  public:
    explicit NACrashesRemoverPVC(QWidget* parent = nullptr);

    void loadView() override;

    // The start button: empties the category's groups at once, then asks for the home folder.
    // Granted: the scan runs behind the waiting sheet and the result page follows. Refused:
    // nothing more happens (the groups stay empty). Ignored while a scan runs.
    void scanCrashedApplications();
};

}  // namespace sysmend
