// A tree of group rows over their items, for lists whose groups fold open and shut. Group
// rows show their own disclosure triangles ("collapse" while folded, "expend" while open), and
// an empty outline draws the application's image with "No Items" under it. GUI thread only.
#pragma once

#include <QPixmap>
#include <QTreeView>

namespace sysmend {

class NAOutLineView : public QTreeView {
    Q_OBJECT
  public:
    explicit NAOutLineView(QWidget* parent = nullptr);

    // Repaints at once, so that the empty state appears or goes with the rows.
    void reloadData();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void drawBranches(QPainter* painter, const QRect& rect,
                      const QModelIndex& index) const override;

  private:
    bool isEmpty() const;

    QPixmap collapseImage_;
    QPixmap expendImage_;
};

}  // namespace sysmend
