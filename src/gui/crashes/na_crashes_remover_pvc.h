// The Crashes tool's start page.
#pragma once

#include "app/na_placeholder_pvc.h"

namespace sysmend {

class NACrashesRemoverPVC : public NAPlaceholderPVC {
    Q_OBJECT
  public:
    explicit NACrashesRemoverPVC(QWidget* parent = nullptr) : NAPlaceholderPVC(true, parent) {}
};

}  // namespace sysmend
