#include "appviewer/app_listing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "appviewer/app_information.h"
#include "platform/path.h"
#include "platform/uti.h"
#include "platform/volume.h"
#include "platform/walker.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

std::vector<std::string> collectWalk(std::string_view folder) {
    std::vector<std::string> paths;
    DirectoryEnumerator walk(folder, DirectoryEnumerator::SkipsPackageDescendants |
                                         DirectoryEnumerator::SkipsHiddenFiles);
    while (std::optional<DirectoryEnumerator::Entry> entry = walk.next())
        paths.push_back(std::move(entry->path));
    return paths;
}

// Reads bundles into their groups on worker threads, ahead of the caller, who takes the
// results in order. Walking a bundle for its size is nearly all of a listing's time, and the
// sum of a bundle does not depend on any other, so two bundles are measured at once. Going
// out of scope stops the workers after the bundles in hand.
class BundleReader {
  public:
    explicit BundleReader(const std::vector<std::string>& bundles)
        : bundles_(bundles), slots_(bundles.size()) {
        const std::size_t threads = std::min<std::size_t>(kThreads, bundles.size());
        for (std::size_t t = 0; t < threads; ++t)
            workers_.emplace_back([this] { work(); });
    }

    ~BundleReader() {
        cancelled_.store(true, std::memory_order_relaxed);
        for (std::thread& worker : workers_)
            worker.join();
    }

    BundleReader(const BundleReader&) = delete;
    BundleReader& operator=(const BundleReader&) = delete;

    // The group of bundle k, once read; nullptr when its information failed.
    std::shared_ptr<NAGroupObj> take(std::size_t k) {
        std::unique_lock lock(mutex_);
        ready_.wait(lock, [&] { return slots_[k].done; });
        return std::move(slots_[k].group);
    }

  private:
    // The walk of one bundle uses a second thread of its own once the bundle is large.
    static constexpr std::size_t kThreads = 2;

    struct Slot {
        std::shared_ptr<NAGroupObj> group;
        bool done = false;
    };

    void work() {
        for (;;) {
            const std::size_t k = next_.fetch_add(1);
            if (k >= bundles_.size() || cancelled_.load(std::memory_order_relaxed))
                return;
            std::shared_ptr<NAGroupObj> group = read(bundles_[k]);
            std::lock_guard lock(mutex_);
            slots_[k] = {std::move(group), true};
            ready_.notify_all();
        }
    }

    static std::shared_ptr<NAGroupObj> read(const std::string& appPath) {
        bool failed = false;
        std::shared_ptr<NAGroupObj> group =
            NAAppInformation::initWithAppPath(appPath)->convertToGroup(&failed);
        if (failed)
            return nullptr;
        group->setAttachImage(ImageRef::fileIcon(appPath));
        return group;
    }

    const std::vector<std::string>& bundles_;
    std::vector<Slot> slots_;
    std::atomic<std::size_t> next_{0};
    std::atomic<bool> cancelled_{false};
    std::mutex mutex_;
    std::condition_variable ready_;
    std::vector<std::thread> workers_;
};

}  // namespace

void AppListing::setOwnBundlePath(std::string volumePath) {
    ownBundlePath_ = path::standardized(volumePath);
}

void AppListing::loadAllApps(std::string_view folder, NAGroupObjArray& apps) {
    const std::vector<std::string> paths = collectWalk(folder);
    std::vector<std::string> bundles;
    for (const std::string& p : paths) {
        if (isAppFile(p) && p != ownBundlePath_)
            bundles.push_back(p);
    }
    BundleReader reader(bundles);

    const std::size_t count = paths.size();
    std::size_t nextBundle = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (nextBundle < bundles.size() && paths[i] == bundles[nextBundle]) {
            if (std::shared_ptr<NAGroupObj> group = reader.take(nextBundle))
                apps.push_back(std::move(group));
            ++nextBundle;
        }
        if (stop_.load(std::memory_order_relaxed))
            break;
        updateProgress(static_cast<float>(static_cast<double>(i + 1) / static_cast<double>(count)));
    }
}

void AppListing::updateProgress(float fraction) const {
    if (progressHook_)
        progressHook_(fraction);
}

bool AppListing::isAppFile(std::string_view volumePath) {
    return isApplicationBundleName(volumePath);
}

bool AppListing::isAlias(std::string_view volumePath) {
    return isAliasFile(volumePath);
}

std::string appPathOfGroup(const NAGroupObj& group) {
    const ImageRef& icon = group.attachImage();
    return icon.kind == ImageRef::Kind::FileIcon ? icon.value : std::string();
}

}  // namespace sysmend
