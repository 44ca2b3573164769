// The folder chooser's filter when the user is asked for access to one folder: only that
// folder and its ancestors can be chosen, nothing beside or below them.
#pragma once

#include <string>
#include <vector>

#include "platform/file_url.h"

namespace sysmend {

class AppSandboxFileAccessOpenSavePanelDelegate {
  public:
    // A filter for access to url. The folder need not exist: the chooser then starts at an
    // existing ancestor and still enables only the ancestors of url.
    static AppSandboxFileAccessOpenSavePanelDelegate initWithFileURL(const FileURL& url);

    const FileURL& url() const { return url_; }
    // url's path components, computed once.
    const std::vector<std::string>& urlPath() const { return urlPath_; }

    // Whether the chooser may enable the candidate: its path components must be a leading
    // part of urlPath, compared exactly (case matters, as on a case-sensitive volume).
    bool shouldEnableURL(const FileURL& candidate) const;

  private:
    explicit AppSandboxFileAccessOpenSavePanelDelegate(const FileURL& url);

    FileURL url_;
    std::vector<std::string> urlPath_;
};

}  // namespace sysmend
