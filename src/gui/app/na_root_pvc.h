// The base of every tool's start page: its link to its tool, the scan flags, and the two
// prompts that obtain access to the home folder and the applications folder.
//
// Pages live on the GUI thread; only `stop` is read from the scan's pool thread.
#pragma once

#include <QAbstractButton>
#include <QFileDialog>
#include <QPointer>
#include <QWidget>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/na_category_obj.h"
#include "platform/file_url.h"
#include "sandbox/app_sandbox_file_access.h"

namespace sysmend {

class NARootPVC : public QWidget {
    Q_OBJECT
  public:
    using Completion = std::function<void(bool granted)>;
    using ProcessBlock = std::function<void(const std::string& volumePath)>;
    using SizeBlock = std::function<void(std::int64_t bytes)>;

    explicit NARootPVC(QWidget* parent = nullptr);

    // The page's tool; set by the shell when it stores the page, held weakly (the shell keeps
    // the category for the whole run).
    std::shared_ptr<NACategoryObj> categoryObj() const { return categoryObj_.lock(); }
    void setCategoryObj(std::weak_ptr<NACategoryObj> category) {
        categoryObj_ = std::move(category);
    }

    // Set when the user asks a running scan to stop; the scan polls it between items.
    std::atomic<bool> stop{false};

    // A scan is running.
    bool isSmartScaing() const { return isSmartScaing_; }
    void setIsSmartScaing(bool running) { isSmartScaing_ = running; }

    // The shared folder-access helper; null until loadView.
    AppSandboxFileAccess* fileAccess() const { return fileAccess_; }

    // The choosers of the two prompts while they are shown, else null.
    QFileDialog* userOpenpanel() const { return userOpenpanel_; }
    QFileDialog* appOpenpanel() const { return appOpenpanel_; }

    // Builds the page's widgets; sent once, right after the page is made and stored.
    // Subclasses call the base first: it fetches fileAccess.
    virtual void loadView();

    // Access to the user's home folder: through a saved grant if there is one (completion at
    // once with true), else by a folder chooser shown as a sheet on the page's window that
    // lets only the home folder be chosen. Choosing it saves the grant and completes with
    // true; cancelling completes with false and saves nothing.
    void grantUserPermission(Completion completion);
    // The same for "/Applications".
    void graintAppPrmission(Completion completion);

    // The choosers' filter: in the home folder's chooser only the home folder is enabled, in
    // the applications folder's chooser only "/Applications", in any other chooser nothing.
    bool panel(const QFileDialog* sender, const FileURL& url) const;

    // Refresh hook; empty here.
    virtual void updateDatasource() {}

    // The button that Return presses while the page is shown (the start button of a tool);
    // null when the page has none.
    virtual QAbstractButton* mainButton() const { return nullptr; }

    // Marks the scan as running; subclasses run it (targets, progress and size callbacks as
    // they define them).
    virtual void startScan(const std::vector<std::string>& targets, ProcessBlock process,
                           SizeBlock addNewfileSize);

  private:
    void askForFolder(const FileURL& folder, const QString& prompt, const QString& message,
                      QPointer<QFileDialog>& slot, Completion completion);

    std::weak_ptr<NACategoryObj> categoryObj_;
    bool isSmartScaing_ = false;
    AppSandboxFileAccess* fileAccess_ = nullptr;
    QPointer<QFileDialog> userOpenpanel_;
    QPointer<QFileDialog> appOpenpanel_;
};

}  // namespace sysmend
