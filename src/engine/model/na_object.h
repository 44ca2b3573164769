// The base of every record that a result list shows: a title, an icon and a tri-state check
// mark.
//
// Check marks are 1 (checked), 0 (unchecked) and -1 (mixed: some items below checked, some
// not); any other value counts as none of the three when a parent is recomputed. Two flags
// switch the propagation that subclasses perform in setIsChecked: upward (to the parent item
// and the group, or to the parent group) and downward (to children, contents and sub-groups).
// A bare NAObject has both flags off and never propagates.
//
// Records are shared with std::shared_ptr and must be owned by one before they are linked to
// a parent or group (the back-links are taken from shared_from_this). Propagation runs by
// direct calls on the thread that changes the mark; records are not thread-safe.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "model/image_ref.h"

namespace sysmend {

class NAObject : public std::enable_shared_from_this<NAObject> {
  public:
    NAObject() = default;
    NAObject(std::string title, ImageRef attachImage);
    virtual ~NAObject() = default;
    NAObject(const NAObject&) = delete;
    NAObject& operator=(const NAObject&) = delete;

    const std::string& title() const { return title_; }
    void setTitle(std::string title) { title_ = std::move(title); }
    const ImageRef& attachImage() const { return attachImage_; }
    void setAttachImage(ImageRef image) { attachImage_ = std::move(image); }

    std::int64_t isChecked() const { return isChecked_; }
    // Stores the mark; subclasses then propagate it as their flags allow.
    virtual void setIsChecked(std::int64_t isChecked) { isChecked_ = isChecked; }

    bool isNeedChangeGroupOrSuperState() const { return isNeedChangeGroupOrSuperState_; }
    void setIsNeedChangeGroupOrSuperState(bool on) { isNeedChangeGroupOrSuperState_ = on; }
    bool isNeedChangeSubGroupsOrChirenState() const { return isNeedChangeSubGroupsOrChirenState_; }
    void setIsNeedChangeSubGroupsOrChirenState(bool on) {
        isNeedChangeSubGroupsOrChirenState_ = on;
    }

    // One-line tree for diagnostics and test failures: "G[-1]{a[1] b[0]}", the name followed
    // by the mark in brackets and the items below in braces.
    virtual void print(std::ostream& out) const;

  protected:
    // Both flags on: what every initialiser of items and groups does.
    void enablePropagation();

  private:
    std::string title_;
    ImageRef attachImage_;
    std::int64_t isChecked_ = 0;
    bool isNeedChangeGroupOrSuperState_ = false;
    bool isNeedChangeSubGroupsOrChirenState_ = false;
};

std::ostream& operator<<(std::ostream& out, const NAObject& object);
std::string toString(const NAObject& object);

// The one rule by which a parent's mark follows its items. Feed the items' marks list by list
// with add(); each list's walk may stop as soon as add() answers true (the outcome can no
// longer change), and the next list is walked anew.
class CheckTally {
  public:
    // Counts one mark; true once the result is decided.
    bool add(std::int64_t isChecked);

    // -1 when any item is mixed or both kinds occur, 1 or 0 when all counted items agree,
    // nullopt when nothing was counted (the parent then keeps its mark).
    std::optional<std::int64_t> result() const;

    // Writes the result to `parent` with its downward flag off for the write, so that the
    // recomputed parent does not push its mark back down; its upward flag stays as it is, so
    // the recomputation continues above it. Nothing happens when nothing was counted.
    void applyTo(NAObject& parent) const;

  private:
    std::int64_t checked_ = 0;
    std::int64_t unchecked_ = 0;
    std::int64_t mixed_ = 0;
};

}  // namespace sysmend
