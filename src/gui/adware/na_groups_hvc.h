// The result page of the grouped tools (Crashes, Vexbane).
#pragma once

#include "app/na_root_hvc.h"

namespace sysmend {

class NAGroupsHVC : public NARootHVC {
    Q_OBJECT
  public:
    explicit NAGroupsHVC(QWidget* parent = nullptr) : NARootHVC(parent) {}
};

}  // namespace sysmend
