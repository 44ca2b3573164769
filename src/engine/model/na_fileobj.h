// A found file, folder, bundle or other thing that a result list shows and the user may
// remove, and its check-mark propagation to its children, its parent item and its group.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/image_ref.h"
#include "model/na_object.h"
#include "platform/values.h"

namespace sysmend {

class NAFileobj;
class NAGroupObj;

using NAFileobjArray = std::vector<std::shared_ptr<NAFileobj>>;

class NAFileobj : public NAObject {
  public:
    // Every initialiser turns both propagation flags on.
    NAFileobj();
    // filePath, its icon and its allocated size on disk; fileName stays empty.
    explicit NAFileobj(std::string_view volumePath);
    // fileName (last component less its extension), filePath and icon; the allocated size only
    // when getSize is true, else 0.
    NAFileobj(std::string_view volumePath, bool getSize);

    // A new item from the path's metadata item: fileName is its display name (else taken from
    // the path), filePath, fileSize, createTime and the icon. nullptr when there is no item or
    // it has no path.
    static std::shared_ptr<NAFileobj> initWithURl(std::string_view volumePath);

    // A browser entry shows its domain instead.
    virtual const std::string& fileName() const { return fileName_; }
    void setFileName(std::string name) { fileName_ = std::move(name); }
    const std::string& filePath() const { return filePath_; }
    void setFilePath(std::string path) { filePath_ = std::move(path); }
    // A second path removed together with the item.
    const std::string& annexFilePath() const { return annexFilePath_; }
    void setAnnexFilePath(std::string path) { annexFilePath_ = std::move(path); }
    const std::optional<Date>& createTime() const { return createTime_; }
    void setCreateTime(std::optional<Date> time) { createTime_ = time; }
    const std::optional<Date>& lassAccessTime() const { return lassAccessTime_; }
    void setLassAccessTime(std::optional<Date> time) { lassAccessTime_ = time; }
    const ImageRef& fileIcon() const { return fileIcon_; }
    void setFileIcon(ImageRef icon) { fileIcon_ = std::move(icon); }
    std::int64_t fileSize() const { return fileSize_; }
    void setFileSize(std::int64_t size) { fileSize_ = size; }
    // Uniform type identifier, where a tool fills it in.
    const std::string& fileType() const { return fileType_; }
    void setFileType(std::string type) { fileType_ = std::move(type); }
    bool isDir() const { return isDir_; }
    void setIsDir(bool isDir) { isDir_ = isDir; }
    bool isMailDownloadFile() const { return isMailDownloadFile_; }
    void setIsMailDownloadFile(bool on) { isMailDownloadFile_ = on; }
    bool isUSBDeviceFile() const { return isUSBDeviceFile_; }
    void setIsUSBDeviceFile(bool on) { isUSBDeviceFile_ = on; }

    // The group that lists this item, or else the group of its nearest ancestor (through
    // superObj) that has one; nullptr when the chain ends first.
    std::shared_ptr<NAGroupObj> group() const;
    // Kept weakly: the group owns its items.
    void setGroup(const std::shared_ptr<NAGroupObj>& group) { group_ = group; }
    // The parent item, kept weakly.
    std::shared_ptr<NAFileobj> superObj() const { return superObj_.lock(); }
    void setSuperObj(const std::shared_ptr<NAFileobj>& parent) { superObj_ = parent; }

    // The nested items; nullptr when there is no array. A plain item references its array
    // weakly, so whoever creates it keeps it alive, and an item whose array is gone has no
    // children. A browser entry owns its array.
    virtual std::shared_ptr<NAFileobjArray> chilren() const { return chilren_.lock(); }
    virtual void setChilren(const std::shared_ptr<NAFileobjArray>& chilren) { chilren_ = chilren; }

    // Appends to chilren and makes this item the child's superObj. Without an array nothing is
    // appended, but the child's superObj is still set.
    void addChilren(const std::shared_ptr<NAFileobj>& child);
    void addChilrens(const NAFileobjArray& children);

    // Stores the mark; with the downward flag pushes it to the children; with the upward flag
    // recomputes the parent item and then the group.
    void setIsChecked(std::int64_t isChecked) override;

    // The propagation steps. The value goes down as a signed byte, so -1 arrives as -1.
    void willChangeChilrenCheckStateTo(std::int8_t isChecked);
    // superObj's mark from its children.
    void willChangeSuperCheckState();
    // group()'s mark from its contents and then its cache_contents.
    void willChangeGroupCheckState();

    void print(std::ostream& out) const override;

  private:
    std::string fileName_;
    std::string filePath_;
    std::string annexFilePath_;
    std::optional<Date> createTime_;
    std::optional<Date> lassAccessTime_;
    ImageRef fileIcon_;
    std::int64_t fileSize_ = 0;
    std::string fileType_;
    bool isDir_ = false;
    bool isMailDownloadFile_ = false;
    bool isUSBDeviceFile_ = false;
    std::weak_ptr<NAGroupObj> group_;
    std::weak_ptr<NAFileobj> superObj_;
    std::weak_ptr<NAFileobjArray> chilren_;
};

// A finding of the adware scan.
class NATreatObj : public NAFileobj {
  public:
    using NAFileobj::NAFileobj;
};

}  // namespace sysmend
