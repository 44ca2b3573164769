// The Vexbane tool's start page.
#pragma once

#include "app/na_placeholder_pvc.h"

namespace sysmend {

class NAAdwareRemovalPVC : public NAPlaceholderPVC {
    Q_OBJECT
  public:
    explicit NAAdwareRemovalPVC(QWidget* parent = nullptr) : NAPlaceholderPVC(false, parent) {}
};

}  // namespace sysmend
