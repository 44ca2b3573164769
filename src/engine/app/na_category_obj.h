// One tool row of the category list, and the store of that tool's last scan result.
//
// A scan writes groups and contents from its pool thread without a lock; the result page
// reads them only after the scan's progress sheet has ended, which is what orders the two.
// Everything else runs on the GUI thread. The start and result pages of a tool are kept by
// the GUI, which pairs them with their category; both reach it weakly.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "model/na_fileobj.h"
#include "model/na_group_obj.h"
#include "model/na_object.h"

namespace sysmend {

// Its propagation flags stay off: a category row's own mark never propagates.
class NACategoryObj : public NAObject {
  public:
    // Both initialisers start with empty arrays and "Deselect All" (a fresh result starts
    // with everything checked).
    NACategoryObj() = default;
    NACategoryObj(std::string title, ImageRef attachImage);

    // Which tool the row stands for.
    std::int64_t categoryType() const { return categoryType_; }
    void setCategoryType(std::int64_t type) { categoryType_ = type; }
    // 0: the start page is shown for this tool; non-zero (1): the result page.
    std::int64_t displayState() const { return displayState_; }
    void setDisplayState(std::int64_t state) { displayState_ = state; }

    // Top-level groups of the result, for tools whose result is grouped.
    const NAGroupObjArray& groups() const { return groups_; }
    NAGroupObjArray& groups() { return groups_; }
    // The items of tools whose result is a flat list.
    const NAFileobjArray& contents() const { return contents_; }
    NAFileobjArray& contents() { return contents_; }
    // Working copies the result pages use while sorting or filtering.
    const NAGroupObjArray& tempGroups() const { return tempGroups_; }
    NAGroupObjArray& tempGroups() { return tempGroups_; }
    const NAFileobjArray& tempContents() const { return tempContents_; }
    NAFileobjArray& tempContents() { return tempContents_; }

    // True only while a start page hands over to the result page: the result page must then
    // rebuild from groups and contents.
    bool isNeedRefresh() const { return isNeedRefresh_; }
    void setIsNeedRefresh(bool on) { isNeedRefresh_ = on; }
    // The summary line the result page shows.
    const std::string& infromation() const { return infromation_; }
    void setInfromation(std::string text) { infromation_ = std::move(text); }
    const std::string& btnTitle() const { return btnTitle_; }
    void setBtnTitle(std::string title) { btnTitle_ = std::move(title); }
    // The sort choice last made on the result page.
    std::int64_t sort_selected_index() const { return sort_selected_index_; }
    void setSort_selected_index(std::int64_t index) { sort_selected_index_ = index; }
    const std::string& select_all_btn_title() const { return select_all_btn_title_; }
    void setSelect_all_btn_title(std::string title) { select_all_btn_title_ = std::move(title); }

    // Bytes: the sum of the top-level groups' size when there are groups, else the sum of the
    // contents' fileSize (0 when both are empty).
    std::int64_t size() const;

  private:
    std::int64_t categoryType_ = 0;
    std::int64_t displayState_ = 0;
    NAGroupObjArray groups_;
    NAFileobjArray contents_;
    NAGroupObjArray tempGroups_;
    NAFileobjArray tempContents_;
    bool isNeedRefresh_ = false;
    std::string infromation_;
    std::string btnTitle_;
    std::int64_t sort_selected_index_ = 0;
    std::string select_all_btn_title_ = "Deselect All";
};

}  // namespace sysmend
