// The start page a tool shows until its own page is written: the tool's icon and title over a
// disabled start button, or an empty content area. Its tool's title and image come from its
// category, which must be set before loadView.
#pragma once

#include "app/na_root_pvc.h"

namespace sysmend {

class NAPlaceholderPVC : public NARootPVC {
    Q_OBJECT
  public:
    // showsContent false: the page stays empty.
    explicit NAPlaceholderPVC(bool showsContent, QWidget* parent = nullptr);

    void loadView() override;

  private:
    bool showsContent_;
};

}  // namespace sysmend
