// The App Viewer tool's result page.
#pragma once

#include "app/na_root_hvc.h"

namespace sysmend {

class NAAppViewHVC : public NARootHVC {
    Q_OBJECT
  public:
    explicit NAAppViewHVC(QWidget* parent = nullptr) : NARootHVC(parent) {}
};

}  // namespace sysmend
