// The ARP Cache tool's page.
#pragma once

#include "app/na_placeholder_pvc.h"

namespace sysmend {

class NAARPCachePVC : public NAPlaceholderPVC {
    Q_OBJECT
  public:
    explicit NAARPCachePVC(QWidget* parent = nullptr) : NAPlaceholderPVC(true, parent) {}
};

}  // namespace sysmend
