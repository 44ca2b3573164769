// The leftovers sheet: the files a removal could not delete, one row each with its icon and
// path and a button that shows the file in the file viewer; a help button explains the list;
// Done closes the sheet and empties the list.
//
// The sheet shares its owner's list of failed items rather than copying it: Done empties the
// owner's list too. The owner keeps both the list and the sheet for its whole life, and calls
// reloadTable (setLeftOverFiles does) after changing the list: the table shows the list as it
// was at the last reload. GUI thread only.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QString>
#include <memory>

#include "model/na_fileobj.h"
#include "ui/na_popover.h"
#include "ui/na_table_view.h"

namespace Ui {
class NAShowLeftOverSheet;
}

namespace sysmend {

class NATableRowView;

class NAShowLeftOverSheet : public QDialog, public NATableViewDelegate {
    Q_OBJECT
  public:
    explicit NAShowLeftOverSheet(
        const QString& windowNibName = QStringLiteral("NAShowLeftOverSheet"),
        QWidget* parent = nullptr);
    ~NAShowLeftOverSheet() override;

    // Builds the window (once) with the application's icon; the list is then a fresh empty one
    // of the sheet's own.
    void loadWindow();
    bool isWindowLoaded() const { return ui_ != nullptr; }

    // The list shown: the sheet's own until an owner hands over its list, which the sheet
    // then uses itself (not a copy). Never null after loadWindow.
    NAFileobjArray* leftOverFiles() const { return leftOverFiles_; }
    void setLeftOverFiles(NAFileobjArray* files);
    void reloadTable();

    // The help popover (made on first use), on the sender's bottom edge.
    void helpMessage(QWidget* sender);
    // Done: ends the sheet when it is shown, then empties the list and reloads.
    void doneActiobn();

    // The table's rows: a cell per item, all 32 points high, selected in light grey.
    int numberOfRowsInTableView() const;
    QWidget* viewForTableColumn(NATableView* table, int row) override;
    NATableRowView* rowViewForRow(int row);
    int heightOfRow(int row) const;

    QLabel* appIconImageView() const;
    NATableView* table() const;
    QPushButton* helpButton() const;
    QPushButton* doneButton() const;
    NAPopover* popOver() const { return popOver_; }

  protected:
    // Escape is Done: the sheet never closes with its list left full.
    void reject() override;

  private:
    class ListModel;

    std::unique_ptr<Ui::NAShowLeftOverSheet> ui_;
    ListModel* model_ = nullptr;
    NAFileobjArray ownFiles_;
    NAFileobjArray* leftOverFiles_ = nullptr;
    NAPopover* popOver_ = nullptr;
};

}  // namespace sysmend
