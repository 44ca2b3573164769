#include "app/na_root_hvc.h"

namespace sysmend {

NARootHVC::NARootHVC(QWidget* parent) : QWidget(parent) {}

}  // namespace sysmend
