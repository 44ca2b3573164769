// The leftovers sheet: the files a removal could not delete, one row each with its icon and
// path and a button that shows the file in the file viewer; a help button explains the list;
// Done closes the sheet and empties the list.
//
// The sheet shares its owner's list of failed items rather than copying it: Done empties the
// owner's list too. The owner keeps both the list and the sheet for its whole life.
#pragma once

#include <QDialog>
#include <QString>

#include "model/na_fileobj.h"

namespace sysmend {

class NAShowLeftOverSheet : public QDialog {
    Q_OBJECT
  public:
    explicit NAShowLeftOverSheet(
        const QString& windowNibName = QStringLiteral("NAShowLeftOverSheet"),
        QWidget* parent = nullptr);

    // Builds the window (once); the list is then a fresh empty one of the sheet's own.
    void loadWindow();
    bool isWindowLoaded() const { return loaded_; }

    // The list shown: the sheet's own until an owner hands over its list, which the sheet
    // then uses itself (not a copy). Never null after loadWindow.
    NAFileobjArray* leftOverFiles() const { return leftOverFiles_; }
    void setLeftOverFiles(NAFileobjArray* files);
    void reloadTable();

    // The help popover, anchored to `sender`.
    void helpMessage(QWidget* sender);
    // Done: ends the sheet when it is shown, then empties the list and reloads.
    void doneActiobn();

  private:
    bool loaded_ = false;
    NAFileobjArray ownFiles_;
    NAFileobjArray* leftOverFiles_ = nullptr;
};

}  // namespace sysmend
