// What the three result pages share: a table of the category's groups beside a table of the
// selected group's items, and a bottom bar with the summary of what is checked and the Remove
// button.
//
// The page keeps no copy of the result: its category owns the groups, and the tables are
// model adapters that read them anew (ui/na_group_models.h). Whatever changes the groups in
// place (Remove, start over, the display filter) does so inside a reset of the models that
// show them. The group table always keeps a row selected while it has rows, and the
// content table shows that row's group (currentGroup).
//
// A check-box click on either table sets the mark of the row's record in the engine, which
// propagates it; the cell then calls updateCheckState, which makes every visible row show its
// new mark and recomputes the summary. Remove here only takes checked web-group items off the
// lists (nothing is deleted): the startup and App Viewer pages use it as it is, the Crashes and
// Vexbane page replaces it. GUI thread only; the result is read only after its scan's
// progress sheet has ended (the shell shows the page then).
#pragma once

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <cstdint>
#include <functional>
#include <memory>

#include "app/na_root_hvc.h"
// Complete, for the progress panels' QPointer to their page.
#include "app/na_root_pvc.h"
#include "appviewer/na_show_left_over_sheet.h"
#include "model/na_fileobj.h"
#include "model/na_group_obj.h"
#include "ui/na_group_models.h"
#include "ui/na_no_content_view.h"
#include "ui/na_progress_panel_vc.h"
#include "ui/na_table_row_view.h"
#include "ui/na_table_view.h"

namespace sysmend {

class NAResultListHVC : public NARootHVC, public NATableViewDelegate {
    Q_OBJECT
  public:
    explicit NAResultListHVC(QWidget* parent = nullptr);
    ~NAResultListHVC() override;

    // Builds the tables and the bottom bar; the content area starts shown. The groups are not
    // read until the first reloadData (the hand-over): a scan may still be filling them.
    void loadView() override;

    // When the category's isNeedRefresh is set (a scan has just handed over): sorts the
    // groups by its sort_selected_index and reloads. Otherwise nothing changes.
    void needRefreshUI() override;
    // Reloads the group table (its selected row stays), sets the category's btnTitle to
    // "Remove", recomputes the summary, and shows the page's empty state when there are no
    // groups. The content table is left as it is.
    void reloadData() override;
    // Start over: back to the start page with the result emptied (displayState 0, summary
    // "", no groups, no failures, filter 0, content area shown); the shell shows the start
    // page again when this page is in a window. `sender` is not used.
    void startOver(QObject* sender) override;
    void back() { startOver(nullptr); }

    // The Remove button. Here: when some group is checked, shows the progress sheet while
    // the checked items of web groups are taken off the lists, then reloads; nothing is
    // deleted. Nothing at all when no group is checked.
    virtual void removeAction(QObject* sender);

    // 0 shows every item; any other value parks the items that are not malicious cookies in
    // their group's cache_contents. The content table reloads.
    void setDisplayIndex(std::int64_t index);
    std::int64_t displayIndex() const { return displayIndex_; }

    // Bytes of the checked items, as of the last updateCheckState.
    std::uint64_t willCleanSize() const { return willCleanSize_; }

    // The category's groups (empty without a category).
    const NAGroupObjArray& groups() const;
    // The group the content table shows; null before the first selection and once its row is
    // gone.
    const std::shared_ptr<NAGroupObj>& currentGroup() const { return currentGroup_; }

    // Items whose removal failed, shared with the leftovers sheet.
    NAFileobjArray& removeFaildFiles() { return removeFaildFiles_; }
    // Made on the first removal and kept.
    NAProgressPanelVC* progressPanel() const { return progressPanel_; }
    NAShowLeftOverSheet* showloftoversheet() const { return showloftoversheet_; }

    NATableView* g_table() const { return g_table_; }
    NATableView* c_table() const { return c_table_; }
    // The page's own view: shows "No Items" instead of everything but the bottom bar when
    // there are no groups.
    NANoContentView* c_view() const { return c_view_; }
    // The area that holds the content table.
    NANoContentView* contents_view_superview() const { return contents_view_superview_; }
    QLabel* summaryLabel() const { return summaryLabel_; }
    QPushButton* removeButton() const { return removeButton_; }

    // NATableViewDelegate. The group table ("gTable") shows group cells; the content table
    // the cells contentViewForRow makes.
    QWidget* viewForTableColumn(NATableView* table, int row) override;
    void tableViewSelectionDidChange(NATableView* table) override;
    // Refreshes the marks every visible row shows, recomputes the category's summary
    // ("%d files | %@" of the checked items of contents and cache_contents, "" when none)
    // and willCleanSize, and updates the bottom bar.
    void updateCheckState() override;
    // The group table's rows are selected in blue, the content table's are not marked.
    NATableRowView* rowViewForRow(NATableView* table, int row);

  protected:
    // The cell of an item of currentGroup.
    virtual QWidget* contentViewForRow(const std::shared_ptr<NAFileobj>& item) = 0;
    virtual int contentRowHeight() const { return 48; }
    // Shows or hides the page's empty state after a reload: here the whole page but the
    // bottom bar gives way to "No Items".
    virtual void showEmptyState(bool empty);

    NAGroupsModel* groupsModel() const { return groupsModel_; }
    NAGroupContentsModel* contentsModel() const { return contentsModel_; }

    // Runs `change` on the category's groups inside a reset of both models, then shows the
    // group of the selected row (groups may have gone).
    void changeResult(const std::function<void()>& change);
    // Reloads both tables and shows the group of the selected row.
    void reloadTables();

    // A Remove, when some group is checked: the progress sheet (made on first use) is shown
    // while `removal` changes the category's groups inside a reset of both models, then
    // `beforeSheetEnds` runs and the sheet ends; its completion reloads both tables, hides the
    // content area when no group is left and recomputes the summary. False, with nothing
    // shown, when no group is checked.
    bool removeBehindProgressSheet(const std::function<void(NACategoryObj&)>& removal,
                                   const std::function<void()>& beforeSheetEnds = {});
    // Shows the leftovers sheet with removeFaildFiles (made on first use).
    void showLeftOvers();

    bool anyGroupChecked() const;

  private:
    void buildBottomBar(QWidget* bar);
    void showGroupAtSelectedRow();
    // The summary and the button's title from the category; Remove enabled as `removable`
    // says (it reads no groups itself).
    void refreshBottomBar(bool removable);

    NAGroupsModel* groupsModel_ = nullptr;
    NAGroupContentsModel* contentsModel_ = nullptr;
    NATableView* g_table_ = nullptr;
    NATableView* c_table_ = nullptr;
    NANoContentView* c_view_ = nullptr;
    NANoContentView* contents_view_superview_ = nullptr;
    QLabel* summaryLabel_ = nullptr;
    QPushButton* removeButton_ = nullptr;

    std::shared_ptr<NAGroupObj> currentGroup_;
    NAFileobjArray removeFaildFiles_;
    QPointer<NAProgressPanelVC> progressPanel_;
    QPointer<NAShowLeftOverSheet> showloftoversheet_;
    std::int64_t displayIndex_ = 0;
    std::uint64_t willCleanSize_ = 0;
};

}  // namespace sysmend
