#include "sandbox/open_save_panel_delegate.h"

#include <algorithm>

namespace sysmend {

AppSandboxFileAccessOpenSavePanelDelegate::AppSandboxFileAccessOpenSavePanelDelegate(
    const FileURL& url)
    : url_(url), urlPath_(url.pathComponents()) {}

AppSandboxFileAccessOpenSavePanelDelegate
AppSandboxFileAccessOpenSavePanelDelegate::initWithFileURL(const FileURL& url) {
    return AppSandboxFileAccessOpenSavePanelDelegate(url);
}

bool AppSandboxFileAccessOpenSavePanelDelegate::shouldEnableURL(const FileURL& candidate) const {
    std::vector<std::string> components = candidate.pathComponents();
    if (components.size() > urlPath_.size())
        return false;
    return std::equal(components.begin(), components.end(), urlPath_.begin());
}

}  // namespace sysmend
