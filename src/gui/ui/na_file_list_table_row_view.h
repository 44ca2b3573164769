// The rows of the file lists: a selected row is a rounded, lightly tinted band inset from the
// table's edges, so that the file names and sizes in it stay readable in their own colours.
#pragma once

#include "ui/na_table_row_view.h"

namespace sysmend {

class NAFileListTableRowView : public NATableRowView {
    Q_OBJECT
  public:
    // The tint defaults to the accent blue at low opacity.
    explicit NAFileListTableRowView(QObject* parent = nullptr);
    NAFileListTableRowView(const QColor& selectedBgColor, QObject* parent = nullptr);

  protected:
    void drawSelectionInRect(QPainter* painter, const QRect& rect) const override;
};

}  // namespace sysmend
