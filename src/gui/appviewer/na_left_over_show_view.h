// A row of the leftovers sheet: a file that could not be removed, with its icon, its path and
// a button that shows the file in the file viewer.
//
// The cell holds its item strongly (representObj of the base holds it weakly too), so the
// button still works after the sheet's list has been emptied.
#pragma once

#include <QLabel>
#include <QToolButton>
#include <memory>
#include <string_view>

#include "model/na_fileobj.h"
#include "ui/na_cell_base_view.h"

namespace sysmend {

class NALeftOverShowView : public NACellBaseView {
    Q_OBJECT
  public:
    explicit NALeftOverShowView(QWidget* parent = nullptr);

    // Made from the interface file "NALeftOverCellView"; null (with the usual warning) when
    // it cannot be loaded.
    static NALeftOverShowView* initwithNib();
    void awakeFromNib() override;

    // Shows the item: its icon (a generic file icon when it has none) and its path.
    void setObj(const std::shared_ptr<NAFileobj>& item);
    std::shared_ptr<NAFileobj> obj() const { return obj_.lock(); }
    const std::shared_ptr<NAFileobj>& representItem() const { return item_; }

    // The search button: shows the item's file in the file viewer (on a Mac, selected in a
    // Finder window; elsewhere, its folder opened). A file that is gone shows its nearest
    // folder that still exists.
    void search();

    QLabel* icon_view = nullptr;
    QLabel* path_view = nullptr;
    QToolButton* search_btn = nullptr;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void showPath();

    std::weak_ptr<NAFileobj> obj_;
    std::shared_ptr<NAFileobj> item_;
};

// Shows a volume path in the file viewer, as the search button does.
void revealInFileViewer(std::string_view volumePath);

}  // namespace sysmend
