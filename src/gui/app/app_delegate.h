// The shell: the main window with its drawn title bar, the category list of tools, and the
// content area that shows one tool page at a time.
//
// It owns the categories and every page it makes. Pages are made on first need and kept
// until the delegate goes, so a tool's state survives switching to another tool; they are
// only taken out of the content area. Everything here runs on the GUI thread.
#pragma once

#include <QLabel>
#include <QObject>
#include <QPushButton>
#include <QVBoxLayout>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "app/na_category_obj.h"
#include "app/na_main_window.h"
#include "app/na_root_hvc.h"
#include "app/na_root_pvc.h"
#include "app/na_window_content_view_super_view.h"
#include "ui/na_line_view.h"
#include "ui/na_table_view.h"

namespace sysmend {

class NATableRowView;

class AppDelegate : public QObject {
    Q_OBJECT
  public:
    // Builds the window and its parts; nothing is listed or shown until
    // applicationDidFinishLaunching.
    AppDelegate();
    ~AppDelegate() override;

    // The delegate pages hand over to (the one alive; null when none is).
    static AppDelegate* current();

    // Title bar, category list, the Crashes start page with its row selected, quit on close,
    // and the window brought to the front 1.0 second later.
    void applicationDidFinishLaunching();
    void addCustomTitleBar();
    // Fills categorys and reloads the list.
    void loadCategorys();
    // Shows the category's current page (its start page in display state 0, else its result
    // page), making it on first need.
    void displayViewController(NACategoryObj& category);
    // The category's row is the selected one, so its page is the one in view.
    bool isShowing(const NACategoryObj& category) const;
    // Sends startOver to the result page of the selected row's tool; nothing without a
    // selected row.
    void startOverAction();
    // Removes every key of the standard user defaults.
    void emptyUserDifo();
    // Quits the application.
    void windowWillClose();

    // The list's data source and delegate.
    int numberOfRowsInTableView() const { return static_cast<int>(categorys_.size()); }
    QWidget* viewForTableColumn(int row) const;
    NATableRowView* rowViewForRow(int row);
    bool shouldSelectRow(int row) const;
    int heightOfRow(int row) const;
    void tableViewSelectionDidChange();

    // A tool's pages, null until made. Storing a page also sets the page's categoryObj.
    NARootPVC* PVC(const NACategoryObj& category) const;
    NARootHVC* HVC(const NACategoryObj& category) const;
    void setPVC(NACategoryObj& category, std::unique_ptr<NARootPVC> page);
    void setHVC(NACategoryObj& category, std::unique_ptr<NARootHVC> page);

    const std::vector<std::shared_ptr<NACategoryObj>>& categorys() const { return categorys_; }

    NAMainWindow* window() const { return window_.get(); }
    NATableView* cTable() const { return cTable_; }
    QLabel* c_title_text() const { return c_title_text_; }
    NALineView* titlebarAcessoryView() const { return titlebarAcessoryView_; }
    QPushButton* startOverBtn() const { return startOverBtn_; }
    NAWindowContentViewSuperView* windowContentviewSuperView() const {
        return windowContentviewSuperView_;
    }
    // The page shown now (null before the first one and for categories without pages).
    QWidget* controllerView() const { return controllerView_; }
    QWidget* vc_contentView() const { return vc_contentView_; }

  private:
    struct Pages {
        std::unique_ptr<NARootPVC> PVC;
        std::unique_ptr<NARootHVC> HVC;
    };

    // Declared first so that it goes last: the pages below are removed from it as they go.
    std::unique_ptr<NAMainWindow> window_;
    QWidget* contentView_ = nullptr;
    QVBoxLayout* contentColumn_ = nullptr;
    NATableView* cTable_ = nullptr;
    QLabel* c_title_text_ = nullptr;
    NALineView* titlebarAcessoryView_ = nullptr;
    QPushButton* startOverBtn_ = nullptr;
    NAWindowContentViewSuperView* windowContentviewSuperView_ = nullptr;
    QWidget* controllerView_ = nullptr;
    QWidget* vc_contentView_ = nullptr;

    std::vector<std::shared_ptr<NACategoryObj>> categorys_;
    std::map<const NACategoryObj*, Pages> pages_;
};

}  // namespace sysmend
