// The ARP Cache tool's only page: what the ARP cache is, and a guide to viewing and clearing
// it in Terminal. The page runs no command and touches no network; it never leaves its start
// state. GUI thread only.
#pragma once

#include <QPushButton>

#include "app/na_root_pvc.h"
#include "network/na_arp_cache_helper_wc.h"
#include "ui/na_popover.h"

namespace sysmend {

class NAARPCachePVC : public NARootPVC {
    Q_OBJECT
  public:
    explicit NAARPCachePVC(QWidget* parent = nullptr);

    void loadView() override;

    // The small help button: the short help, in a popover on the sender's top edge.
    void help(QWidget* sender);
    // The main button: the guide, as a sheet on the page's window. Its controller is made on
    // first use and kept.
    void arpCache_help_action(QObject* sender);

    NAPopover* popOver() const { return popOver_; }
    NAArpCacheHelperWC* helpWC() const { return helpWC_; }

    QPushButton* helpButton = nullptr;
    QPushButton* guideButton = nullptr;
    QAbstractButton* mainButton() const override { return guideButton; }

  private:
    NAPopover* popOver_ = nullptr;
    NAArpCacheHelperWC* helpWC_ = nullptr;
};

}  // namespace sysmend
