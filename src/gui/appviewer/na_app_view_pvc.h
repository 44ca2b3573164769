// The App Viewer tool's start page: lists the applications under "/Applications" behind the
// waiting sheet and hands them over to the result page. It asks for no folder access.
#pragma once

#include <string_view>

#include "app/na_start_page.h"

namespace sysmend {

class NAAppViewPVC : public NAStartPage {
    Q_OBJECT
  public:
    explicit NAAppViewPVC(QWidget* parent = nullptr);

    void loadView() override;

    // The start button: empties the category's groups, then lists "/Applications" (one
    // information group per application, in the walk's order; the application's own bundle
    // left out) behind the waiting sheet, and shows the result page, also when nothing was
    // found. Ignored while a listing runs.
    void viewAllApplications();

    // The waiting sheet shows no determinate progress: the listing's calls land here and do
    // nothing.
    void updateProgress(float fraction) const { static_cast<void>(fraction); }

    // By the path's extension only, as the listing decides.
    static bool isAppFile(std::string_view volumePath);
    // A symbolic link or a Finder alias file; the listing does not use it.
    static bool isAlias(std::string_view volumePath);

    // The running application's own bundle as a volume path: on macOS the bundle that holds
    // the executable, when it is on the inspected volume; elsewhere empty.
    static std::string ownBundlePath();
};

}  // namespace sysmend
