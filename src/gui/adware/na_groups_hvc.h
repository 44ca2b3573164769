// The result page of the tools whose findings are plain groups of files: Vexbane (category
// type 3) and Crashes. It is the shared result list with file rows and with its own Remove,
// which deletes the checked files.
//
// Removal runs on the GUI thread while the progress sheet is shown, and deletes through the
// engine (adware/groups_removal.h), which never follows a link. Vexbane's removal also deletes
// the browsers' extension lists that name a removed extension, and lists what could not be
// deleted on the leftovers sheet afterwards; Crashes' removal keeps no such list.
#pragma once

#include "app/na_result_list_hvc.h"

namespace sysmend {

class NAGroupsHVC : public NAResultListHVC {
    Q_OBJECT
  public:
    explicit NAGroupsHVC(QWidget* parent = nullptr) : NAResultListHVC(parent) {}

    // remove_adware_action for Vexbane, remove_normal_objects_action for any other tool.
    void removeAction(QObject* sender) override;

    // Deletes the checked findings; a group checked whole goes from the list even where some
    // of its files could not be deleted. Failed findings are appended to removeFaildFiles and
    // shown on the leftovers sheet once the progress sheet has ended. Nothing happens when no
    // group is checked.
    void remove_adware_action(QObject* sender);
    // Deletes the checked files and takes them off the list; a group left with none of its
    // files goes too. Nothing happens when no group is checked.
    void remove_normal_objects_action(QObject* sender);

  protected:
    QWidget* contentViewForRow(const std::shared_ptr<NAFileobj>& item) override;
};

}  // namespace sysmend
