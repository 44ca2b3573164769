// A single-column table whose rows are shown by cell views: widgets that the table's delegate
// makes, fresh, for each row it shows.
//
// The row count and which rows can be selected come from the table's model (an adapter over
// the data, which stays where it is). Cell views exist only for the rows in view, plus a few
// above and below: they are made as rows scroll in, when the view is resized or the model is
// reset, and dropped as rows leave the view, so a table of 100,000 rows holds a screenful of
// widgets. A cell view is made anew when the model reports its row changed. Rows have fixed
// heights (the vertical header is in Fixed mode), so nothing costs O(rows) per paint or
// scroll.
//
// A click or key press on a row that is not selectable leaves the selection as it is
// (AppKit's "should select row: NO") instead of clearing it. An empty table draws the
// application's image with "no items" under it. GUI thread only.
//
// From the keyboard: Up and Down move the selection, stepping over rows that cannot be
// selected (the category list's section titles); Space presses the check box of the selected
// row's cell, exactly as a click on it would; a table that the user gave the keyboard focus
// (by Tab or a click, not by the window's activation) draws a focus ring around itself.
#pragma once

#include <QPersistentModelIndex>
#include <QString>
#include <QTableView>
#include <vector>

namespace sysmend {

class NATableView;
class NATableRowView;

// What a table asks of the object that fills it (a page or the shell): AppKit's table data
// source and delegate in one. It must outlive the table's use of it, or be unset first.
class NATableViewDelegate {
  public:
    virtual ~NATableViewDelegate() = default;

    // A new cell view for `row`, which the table then owns; null for a row at or beyond the
    // count, or when the cell's interface file could not be loaded (the row stays blank).
    virtual QWidget* viewForTableColumn(NATableView* table, int row) = 0;
    // The selection of `table` changed, by the user or by code.
    virtual void tableViewSelectionDidChange(NATableView* table) { static_cast<void>(table); }
    // Called by check-box cells after a click has changed a mark, once the row is selected.
    virtual void updateCheckState() {}
};

class NATableView : public QTableView {
    Q_OBJECT
  public:
    explicit NATableView(QWidget* parent = nullptr);

    // Tells tables apart where one delegate serves two ("gTable" for a group table).
    const QString& identifier() const { return identifier_; }
    void setIdentifier(const QString& identifier) { identifier_ = identifier; }

    NATableViewDelegate* tableDelegate() const { return delegate_; }
    void setTableDelegate(NATableViewDelegate* delegate);

    // The row view that draws every row's background and selection (the table takes it).
    // Tables whose rows all look alike ask their delegate once.
    void setRowView(NATableRowView* rowView);

    // The height of every row, and of one row (the category list mixes two heights).
    void setRowHeight(int height);
    using QTableView::setRowHeight;

    void setModel(QAbstractItemModel* model) override;

    // When false (the default is true), the table keeps a row selected whenever it has rows:
    // the user cannot deselect the last one, and after the model is reset or rows are removed
    // the nearest row is selected.
    bool allowsEmptySelection() const { return allowsEmptySelection_; }
    void setAllowsEmptySelection(bool allows) { allowsEmptySelection_ = allows; }

    // The model's row count (AppKit's numberOfRows); 0 without a model.
    int rowCount() const;
    // The selected row, or -1 when none is selected.
    int selectedRow() const;
    // Selects `row` alone (nothing for a row out of range or not selectable).
    void selectRowIndexes(int row);
    // The row whose cell view holds `view` (the cell itself or a widget inside it), or -1.
    int rowForView(const QWidget* view) const;
    // The cell view of a row in view; null for any other row (AppKit's viewAtColumn:row:
    // without making one).
    QWidget* cellWidget(int row, int column = 0) const;

    // Drops every cell view, makes those of the rows in view anew, and repaints, so the empty
    // state appears or goes at once. The model's own reset does the same.
    void reloadData();
    // Makes the missing cell views of the rows in view and drops those out of view.
    void updateCellViews();

    // The table that shows `view` in one of its cells, or null.
    static NATableView* enclosingTable(const QWidget* view);

  protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

  private:
    void modelWasReset();
    void rowsWereRemoved();
    void keepASelection(int wantedRow);
    void makeCellView(int row);
    void dropCellView(const QPersistentModelIndex& index);
    void markSelectedCells();
    void drawEmptyState(QPainter& painter) const;

    QString identifier_;
    QWidget* focusRing_ = nullptr;
    bool ringShown_ = false;  // the ring goes back on when the window comes back to the front
    NATableViewDelegate* delegate_ = nullptr;
    bool allowsEmptySelection_ = true;
    int rowBeforeChange_ = -1;
    bool inCellUpdate_ = false;
    std::vector<QPersistentModelIndex> cells_;
};

}  // namespace sysmend
