// The Startup Items tool's result page.
#pragma once

#include "app/na_root_hvc.h"

namespace sysmend {

class NAStartItemsHVC : public NARootHVC {
    Q_OBJECT
  public:
    explicit NAStartItemsHVC(QWidget* parent = nullptr) : NARootHVC(parent) {}
};

}  // namespace sysmend
