// The row of a table with its own selection colour (the category list's blue). Qt draws rows
// through delegates, so a row view is the delegate of its row: it fills a selected row with
// the colour and leaves everything else to the row's cell view.
#pragma once

#include <QColor>
#include <QStyledItemDelegate>

namespace sysmend {

class NATableRowView : public QStyledItemDelegate {
    Q_OBJECT
  public:
    NATableRowView(const QColor& selectedBgColor, QObject* parent);

    const QColor& selectedBgColor() const { return selectedBgColor_; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

  protected:
    virtual void drawSelectionInRect(QPainter* painter, const QRect& rect) const;

  private:
    QColor selectedBgColor_;
};

}  // namespace sysmend
