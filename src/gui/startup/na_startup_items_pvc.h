// The Startup Items tool's start page.
#pragma once

#include "app/na_placeholder_pvc.h"

namespace sysmend {

class NAStartupItemsPVC : public NAPlaceholderPVC {
    Q_OBJECT
  public:
    explicit NAStartupItemsPVC(QWidget* parent = nullptr) : NAPlaceholderPVC(true, parent) {}
};

}  // namespace sysmend
