// The folder chooser that the folder grants show when they ask the user for access
// (AppSandboxFileAccess::askPermissionForUrl). The application installs one at start-up.
//
// The chooser always runs modally on the GUI thread: inline when runPanel is called there,
// otherwise the calling thread blocks until the GUI thread has shown and closed it. A worker
// must therefore never wait for a GUI thread that is itself waiting for that worker. The
// object must live on the GUI thread and outlive every call.
#pragma once

#include <QFileDialog>
#include <QObject>
#include <QPointer>
#include <optional>

#include "sandbox/app_sandbox_file_access.h"

namespace sysmend {

class NAPermissionPanel : public QObject, public PermissionPanel {
    Q_OBJECT
  public:
    explicit NAPermissionPanel(QObject* parent = nullptr);

    // Shows the request's message, prompt and title; starts at the request's folder; only the
    // folders the request's delegate enables can be selected and confirmed. Returns the
    // chosen folder as a volume URL, nullopt when cancelled (or without a GUI).
    std::optional<FileURL> runPanel(const PermissionRequest& request) override;

    // The chooser while it is shown, else null.
    QFileDialog* openPanel() const { return openPanel_; }

  signals:
    // The chooser has been made and is about to run modally (GUI thread).
    void panelWillRun(QFileDialog* chooser);

  private:
    std::optional<FileURL> runOnGuiThread(const PermissionRequest& request);

    QPointer<QFileDialog> openPanel_;
};

}  // namespace sysmend
