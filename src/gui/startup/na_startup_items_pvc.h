// The Startup Items tool's start page: finds the launchd jobs that start installed applications
// behind the waiting sheet and hands them over to the result page.
#pragma once

#include <string_view>

#include "app/na_start_page.h"

namespace sysmend {

class NAStartupItemsPVC : public NAStartPage {
    Q_OBJECT
  public:
    explicit NAStartupItemsPVC(QWidget* parent = nullptr);

    void loadView() override;

    // The start button: loadStartusItems.
    void viewStartupItemsAction();
    // Asks for the home folder. Granted: the five launchd folders are scanned behind the
    // waiting sheet, each job that names an application appended as one group to the
    // category's groups (which are not emptied first: starting over empties them), and the
    // result page follows. Refused: nothing happens. Ignored while a scan runs.
    void loadStartusItems();

    // Whether the scan reads the file as a property list (by its type, from its name).
    static bool isPlistFile(std::string_view volumePath);
};

}  // namespace sysmend
