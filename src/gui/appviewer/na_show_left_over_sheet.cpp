#include "appviewer/na_show_left_over_sheet.h"

#include "ui/na_sheet.h"

namespace sysmend {

NAShowLeftOverSheet::NAShowLeftOverSheet(const QString& windowNibName, QWidget* parent)
    : QDialog(parent) {
    setObjectName(windowNibName);
}

void NAShowLeftOverSheet::loadWindow() {
    ownFiles_.clear();
    leftOverFiles_ = &ownFiles_;
    loaded_ = true;
}

void NAShowLeftOverSheet::setLeftOverFiles(NAFileobjArray* files) {
    leftOverFiles_ = files ? files : &ownFiles_;
    reloadTable();
}

void NAShowLeftOverSheet::reloadTable() {}

void NAShowLeftOverSheet::helpMessage(QWidget*) {}

void NAShowLeftOverSheet::doneActiobn() {
    endSheet(this);
    if (leftOverFiles_)
        leftOverFiles_->clear();
    reloadTable();
}

}  // namespace sysmend
