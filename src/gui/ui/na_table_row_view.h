// The look of a table's rows behind their cell views. Qt draws rows through delegates, so a
// row view is the delegate of its rows: it draws a row's background and selection and leaves
// the content to the row's cell view, which it places over the whole row.
#pragma once

#include <QColor>
#include <QStyledItemDelegate>

namespace sysmend {

// Fills a selected row with its colour; draws nothing else.
class NATableRowView : public QStyledItemDelegate {
    Q_OBJECT
  public:
    NATableRowView(const QColor& selectedBgColor, QObject* parent = nullptr);

    const QColor& selectedBgColor() const { return selectedBgColor_; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    // The cell view covers the whole row, not the style's text area.
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

  protected:
    // Clicks and keys are the cell views' and the table's: the row itself never toggles a
    // check mark or opens an editor.
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

    virtual void drawBackgroundInRect(QPainter* painter, const QRect& rect) const;
    virtual void drawSelectionInRect(QPainter* painter, const QRect& rect) const;

  private:
    QColor selectedBgColor_;
};

// A row of the result lists' group table: also draws its own background, a hairline under
// the row, so that rows read as a list even where their cells leave space.
class NATableRowView2 : public NATableRowView {
    Q_OBJECT
  public:
    using NATableRowView::NATableRowView;

  protected:
    void drawBackgroundInRect(QPainter* painter, const QRect& rect) const override;
};

}  // namespace sysmend
