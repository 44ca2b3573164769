// The folder chooser behind every request for folder access: Qt's own file dialog (the
// platform's would ignore the filter), showing folders only, that lets the user select and
// confirm only the folders a filter allows.
//
// The dialog lists host paths; the filter and every result speak volume paths, mapped through
// Volume::current(). A folder outside the volume is never enabled. GUI thread only.
#pragma once

#include <QFileDialog>
#include <QPointer>
#include <QString>
#include <functional>
#include <optional>

#include "platform/file_url.h"
#include "sandbox/app_sandbox_file_access.h"

namespace sysmend {

// The volume directory URL of a host path; nullopt for a path outside the volume.
std::optional<FileURL> volumeFolderURL(const QString& hostPath);

class NAFolderChooser : public QFileDialog {
    Q_OBJECT
  public:
    // Whether `folder` may be chosen in `chooser`. It is asked afresh each time a row is shown
    // or a folder confirmed, so it may depend on state set after the chooser was made.
    using Filter = std::function<bool(const QFileDialog* chooser, const FileURL& folder)>;

    // Single selection of an existing folder; no new folders; hidden files not shown.
    explicit NAFolderChooser(Filter filter, QWidget* parent = nullptr);

    // Opens the chooser at a volume folder.
    void setStartFolder(const FileURL& folder);

    // A 600 x 22 centred line under the folder list, saying why access is asked for.
    void setAccessoryText(const QString& text);

    // A line above the folder list (the request's message); hidden while empty.
    void setMessage(const QString& text);

    // The folder the chooser would hand back now (the selected one, else the open one), as a
    // volume URL; nullopt when that is outside the volume.
    std::optional<FileURL> chosenURL() const;

    // The filter's answer for this chooser.
    bool isEnabledFolder(const FileURL& folder) const { return filter_ && filter_(this, folder); }

    // Refuses to close on a folder the filter refuses: a typed path could name any folder.
    void accept() override;

  private:
    Filter filter_;
};

// Access to one folder for a page: through a saved grant when one covers it (completion at
// once with true, no chooser), else through a chooser shown as a sheet on the page's window
// that lets only the folders `filter` allows be confirmed. The chooser is kept in `slot`
// while it exists. When the sheet ends, "path==<chosen path>" is logged ("(null)" when
// cancelled); OK saves a grant for the chosen folder and completes with true, cancelling
// completes with false and saves nothing.
void askForFolderAccess(QWidget* page, AppSandboxFileAccess& access, const FileURL& folder,
                        const QString& prompt, const QString& accessoryText,
                        NAFolderChooser::Filter filter, QPointer<QFileDialog>& slot,
                        std::function<void(bool granted)> completion);

}  // namespace sysmend
