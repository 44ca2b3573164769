// The App Viewer tool's start page.
#pragma once

#include "app/na_placeholder_pvc.h"

namespace sysmend {

class NAAppViewPVC : public NAPlaceholderPVC {
    Q_OBJECT
  public:
    explicit NAAppViewPVC(QWidget* parent = nullptr) : NAPlaceholderPVC(false, parent) {}
};

}  // namespace sysmend
