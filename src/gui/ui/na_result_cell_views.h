// The cell views of the result pages' tables, each made fresh per row from its interface file
// (":/ui/<name>.ui") by initwithNib.
//
// Cells with a check box act on their own row when it is clicked: they set the mark of the
// record they represent (the engine passes it on to the record's items or up to its group),
// select their row, and call the table delegate's updateCheckState, which refreshes every
// mark shown and the summary. Clicks elsewhere in a cell go through to the table, which
// selects the row. Long texts are cut with an ellipsis to the width the cell gets.
#pragma once

#include <QLabel>
#include <QString>

#include "ui/na_cell_base_view.h"
#include "ui/na_os_check_button.h"

namespace sysmend {

// Sets `label`'s text, cut with an ellipsis (at `mode`) whenever the label is narrower than
// the text; the whole text becomes its tool tip when cut.
void setElidedText(QLabel* label, const QString& text, Qt::TextElideMode mode = Qt::ElideRight);

// The base of cells with a check box: the click rule of the family.
class NACheckCellBaseView : public NACellBaseView {
    Q_OBJECT
  public:
    explicit NACheckCellBaseView(QWidget* parent = nullptr);

    NAOSCheckButton* checkBtn = nullptr;

    // The box's click: sets the represented record's mark to the box's new state where
    // canChangeMark allows it, then changeRow.
    void checkAction();
    // Selects the cell's row alone and calls its table delegate's updateCheckState.
    void changeRow();

  protected:
    // Whether a click may set this record's mark.
    virtual bool canChangeMark(const NAObject& object) const = 0;
    // Finds checkBtn and wires it to checkAction.
    void awakeFromNib() override;
};

// A group row: the group's picture, its title and its check box. The interface file
// "NAGroupTableBaseCellView" is shared by the variants below, which differ only in where they
// are used (the result lists, the helper lists).
class NAGroupTableBaseCellView : public NACheckCellBaseView {
    Q_OBJECT
  public:
    using NACheckCellBaseView::NACheckCellBaseView;
    static NAGroupTableBaseCellView* initwithNib();

    QLabel* icon_view = nullptr;
    QLabel* title_view = nullptr;

  protected:
    // Any group: its items follow.
    bool canChangeMark(const NAObject& object) const override;
    void awakeFromNib() override;
    // On a selected (blue) row, a white ground under the box keeps it apart from the row.
    void paintEvent(QPaintEvent* event) override;

    template <class T>
    static T* loadGroupCell() {
        return static_cast<T*>(
            loadNib(QStringLiteral("NAGroupTableBaseCellView"), "NAGroupTableBaseCellView",
                    [](QWidget* parent) -> NACellBaseView* { return new T(parent); }));
    }
};

class NAGroupTableBaseCellView_AppViewer : public NAGroupTableBaseCellView {
    Q_OBJECT
  public:
    using NAGroupTableBaseCellView::NAGroupTableBaseCellView;
    static NAGroupTableBaseCellView_AppViewer* initwithNib() {
        return loadGroupCell<NAGroupTableBaseCellView_AppViewer>();
    }
};

class NAGroupTableBaseCellView_Helper : public NAGroupTableBaseCellView {
    Q_OBJECT
  public:
    using NAGroupTableBaseCellView::NAGroupTableBaseCellView;
    static NAGroupTableBaseCellView_Helper* initwithNib() {
        return loadGroupCell<NAGroupTableBaseCellView_Helper>();
    }
};

// A file row: check box, the file's icon, its name over its path, and its size.
class NAFilelistCellBaseView : public NACheckCellBaseView {
    Q_OBJECT
  public:
    using NACheckCellBaseView::NACheckCellBaseView;
    static NAFilelistCellBaseView* initwithNib() { return loadCell<NAFilelistCellBaseView>(); }

    // Whether a click may set the item's mark: only for plain file items and the adware
    // tool's findings, which add nothing to them. Records of other kinds keep their marks
    // under rules of their own; their rows show no box.
    static bool isPlainFileItem(const NAObject& object);

    QLabel* icon_view = nullptr;
    QLabel* name_text = nullptr;
    QLabel* path_text = nullptr;
    QLabel* size_text = nullptr;

  protected:
    bool canChangeMark(const NAObject& object) const override;
    void awakeFromNib() override;
};

// A startup item: its label, the job file that loads it and the application it starts.
class NAStartupItemInformationCellBaseView : public NACellBaseView {
    Q_OBJECT
  public:
    using NACellBaseView::NACellBaseView;
    static NAStartupItemInformationCellBaseView* initwithNib() {
        return loadCell<NAStartupItemInformationCellBaseView>();
    }

    QLabel* itemID_text = nullptr;
    QLabel* loadedUsing_text = nullptr;
    QLabel* fullPath_text = nullptr;

  protected:
    void awakeFromNib() override;
};

// One fact of an application: its name on the left, its value on the right.
class NALabelKeyAndValueCellBaseView : public NACellBaseView {
    Q_OBJECT
  public:
    using NACellBaseView::NACellBaseView;
    static NALabelKeyAndValueCellBaseView* initwithNib() {
        return loadCell<NALabelKeyAndValueCellBaseView>();
    }

    QLabel* key_text = nullptr;
    QLabel* value_text = nullptr;

  protected:
    void awakeFromNib() override;
};

}  // namespace sysmend
