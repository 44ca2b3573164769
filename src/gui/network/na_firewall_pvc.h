// The Firewall tool's page.
#pragma once

#include "app/na_placeholder_pvc.h"

namespace sysmend {

class NAFirewallPVC : public NAPlaceholderPVC {
    Q_OBJECT
  public:
    explicit NAFirewallPVC(QWidget* parent = nullptr) : NAPlaceholderPVC(true, parent) {}
};

}  // namespace sysmend
