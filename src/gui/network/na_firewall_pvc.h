// The Firewall tool's only page: whether the application firewall is on, read from its
// preference file in /Library/Preferences and read again every 4.0 seconds while the page is
// on screen.
//
// Reading the file needs a folder grant for /Library/Preferences. Without one the page shows
// only an explanation and the access button; with one, the status image and text. The two are
// never shown together. GUI thread only.
#pragma once

#include <QFileDialog>
#include <QLabel>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include "app/na_root_pvc.h"

namespace sysmend {

class NAFirewallPVC : public NARootPVC {
    Q_OBJECT
  public:
    explicit NAFirewallPVC(QWidget* parent = nullptr);

    // Builds the page, starts access through a saved grant (never asking), and makes the
    // polling timer, paused until the page is in a shown window.
    void loadView() override;

    // True = on; a file that cannot be read counts as on (network/firewall.h).
    bool getFirewallStatus() const;

    // Shows the status now; does nothing while access is not held. The timer's target.
    void checkFirewallStatus();
    // The access button: asks for access (openAcessFile).
    void checkFirewallStatus(QObject* sender);
    // Asks for access; granted shows the status at once, refused shows the access button.
    void openAcessFile();
    // hide: status image and text hidden, access button shown; otherwise the reverse.
    void hiddenStatusView(bool hide);

    // Access to /Library/Preferences: through a saved grant (completion at once), else through
    // the chooser kept as sysOpenpanel, shown as a sheet, where only that folder can be
    // confirmed. OK saves the grant and completes with true; cancel completes with false.
    void graintSystemPrmission(Completion completion);

    // The chooser's filter: only /Library/Preferences, and only in sysOpenpanel.
    bool panel(const QFileDialog* sender, const FileURL& url) const;

    bool isAccessed() const { return isAccessed_; }
    QFileDialog* sysOpenpanel() const { return sysOpenpanel_; }
    QTimer* timer() const { return timer_; }
    const QPixmap& onImage() const { return onImage_; }
    const QPixmap& offImage() const { return offImage_; }

    QPushButton* checkBtn = nullptr;
    QAbstractButton* mainButton() const override { return checkBtn; }
    QLabel* imageView = nullptr;
    QLabel* status_text = nullptr;

  protected:
    bool event(QEvent* event) override;

  private:
    // Whether the page sits in a window that is shown.
    bool isInWindow() const;
    // Pauses or resumes polling when the page enters or leaves a shown window.
    void windowDidChange();

    QPixmap onImage_;
    QPixmap offImage_;
    QPointer<QFileDialog> sysOpenpanel_;
    QTimer* timer_ = nullptr;
    bool isAccessed_ = false;
    bool wasInWindow_ = false;

    // Parts of the two states besides the outlets.
    QWidget* statusView_ = nullptr;
    QWidget* accessView_ = nullptr;
};

}  // namespace sysmend
