// A titled, collapsible section of a result list: file items, items parked aside, and
// optionally sub-groups, with the same tri-state check mark as the items.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/na_fileobj.h"
#include "model/na_object.h"

namespace sysmend {

class NACategoryObj;
class NAGroupObj;

using NAGroupObjArray = std::vector<std::shared_ptr<NAGroupObj>>;

class NAGroupObj : public NAObject {
  public:
    // Both initialisers turn both propagation flags on and start expanded, with empty arrays.
    NAGroupObj();
    NAGroupObj(std::string title, ImageRef attachImage);

    // The items shown, in display order. The group owns them.
    const NAFileobjArray& contents() const { return contents_; }
    NAFileobjArray& contents() { return contents_; }
    // Items that belong to the group but are kept out of view (a display filter parks them
    // here). They count for the group's mark and follow its changes exactly like contents.
    const NAFileobjArray& cache_contents() const { return cache_contents_; }
    NAFileobjArray& cache_contents() { return cache_contents_; }
    const NAGroupObjArray& subGroups() const { return subGroups_; }
    NAGroupObjArray& subGroups() { return subGroups_; }

    // The parent group, nullptr for a top-level one. Kept weakly: the owner of a group is its
    // category's groups array or its parent's subGroups, which makes the tree free itself
    // when the category lets go of it, with no cycle for a tool to break up.
    std::shared_ptr<NAGroupObj> superGroup() const { return superGroup_.lock(); }
    void setSuperGroup(const std::shared_ptr<NAGroupObj>& parent) { superGroup_ = parent; }
    // The tool category the group belongs to, where a tool sets it; kept weakly.
    std::shared_ptr<NACategoryObj> categoryObj() const { return categoryObj_.lock(); }
    void setCategoryObj(const std::shared_ptr<NACategoryObj>& category) { categoryObj_ = category; }

    bool isExpend() const { return isExpend_; }
    void setIsExpend(bool expanded) { isExpend_ = expanded; }

    // Running byte total of the files added with addFileObj less those removed with
    // removeFileObj; sub-groups are not included.
    std::int64_t size() const { return size_; }
    void setSize(std::int64_t size) { size_ = size; }

    // Which browser a web group stands for; 0 for every other group.
    virtual std::int64_t browserType() const { return 0; }

    // Appends to contents, adds the file's size and makes this its group.
    void addFileObj(const std::shared_ptr<NAFileobj>& file);
    void addFileObjs(const NAFileobjArray& files);
    // Takes the file out of contents and subtracts its size, also when it was not there; the
    // file's group link is left as it was.
    void removeFileObj(const std::shared_ptr<NAFileobj>& file);
    // Appends to subGroups and makes this its superGroup; its size is not added.
    void addGroupObj(const std::shared_ptr<NAGroupObj>& group);
    void addGroupObjs(const NAGroupObjArray& groups);

    // Stores the mark; with the downward flag pushes it to contents, cache_contents and
    // sub-groups; with the upward flag recomputes the parent group. An item with children
    // recomputes this group on the way down while later items still hold their old marks; once
    // every item holds the new mark the group holds it again, before its parent is recomputed,
    // so a click always leaves the group consistent with its items.
    void setIsChecked(std::int64_t isChecked) override;

    // The propagation steps. Values go down as a signed byte, so -1 arrives as -1. Each item
    // or sub-group is set with its upward flag off, so a group-wide click does not recompute
    // this group once per item. An item's own children still recompute this group on their
    // way up (it is their nearest grouped ancestor's), while later items have not followed
    // yet: the group then keeps what the last such recomputation gave.
    void willChangeContentCheckStateTo(std::int8_t isChecked);
    void willChangeSubGroupObjCheckStateTo(std::int8_t isChecked);
    // superGroup's mark from its non-empty sub-groups only (a sub-group with no contents and no
    // sub-groups is skipped); the parent's own contents take no part, on purpose.
    void willChangeSuperGroupCheckState();

    // "title[mark]{contents cache{cache_contents} sub-groups}".
    void print(std::ostream& out) const override;

  private:
    NAFileobjArray contents_;
    NAFileobjArray cache_contents_;
    NAGroupObjArray subGroups_;
    std::weak_ptr<NAGroupObj> superGroup_;
    std::weak_ptr<NACategoryObj> categoryObj_;
    bool isExpend_ = true;
    std::int64_t size_ = 0;
};

// The group of one browser's extensions.
class NAWebGroup : public NAGroupObj {
  public:
    using NAGroupObj::NAGroupObj;

    std::int64_t browserType() const override { return browserType_; }
    void setBrowserType(std::int64_t type) { browserType_ = type; }

  private:
    std::int64_t browserType_ = 0;
};

}  // namespace sysmend
