// A single-column table of cell views. A click or key press on a row whose item is not
// selectable leaves the current selection as it is (AppKit's "should select row: NO") instead
// of clearing it.
#pragma once

#include <QTableWidget>

namespace sysmend {

class NATableView : public QTableWidget {
    Q_OBJECT
  public:
    explicit NATableView(QWidget* parent = nullptr);

    // The selected row, or -1 when none is selected.
    int selectedRow() const;

  protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
};

}  // namespace sysmend
