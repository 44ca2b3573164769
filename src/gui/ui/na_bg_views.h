// Page and panel backgrounds: plain views that fill themselves and draw a border or not.
// Their children are laid on top as usual.
#pragma once

#include <QColor>
#include <QPoint>
#include <QWidget>

namespace sysmend {

// White content background.
class NABgView : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QColor fillColor READ fillColor WRITE setFillColor)
  public:
    explicit NABgView(QWidget* parent = nullptr);

    QColor fillColor() const { return fillColor_; }
    void setFillColor(const QColor& color);

  protected:
    enum Edge { NoEdge = 0, TopEdge = 1, RightEdge = 2, BottomEdge = 4, AllEdges = 8 };
    // Hairline borders in the border colour; AllEdges draws a rounded frame of cornerRadius.
    void setBorder(int edges, qreal cornerRadius = 0);

    void paintEvent(QPaintEvent* event) override;

  private:
    QColor fillColor_;
    QColor borderColor_;
    int edges_ = NoEdge;
    qreal cornerRadius_ = 0;
};

// The light grey of side panels and footers, with a hairline along its top.
class NABgView2 : public NABgView {
    Q_OBJECT
  public:
    explicit NABgView2(QWidget* parent = nullptr);
};

// A white card: rounded corners and a hairline frame.
class NABgView3 : public NABgView {
    Q_OBJECT
  public:
    explicit NABgView3(QWidget* parent = nullptr);
};

// Fills itself with whatever fillColor is set (clear until then).
class NABgColorFill : public NABgView {
    Q_OBJECT
  public:
    explicit NABgColorFill(QWidget* parent = nullptr);
};

// White, with a hairline down its right edge (a sidebar next to the content).
class NABgView_RightBorder : public NABgView {
    Q_OBJECT
  public:
    explicit NABgView_RightBorder(QWidget* parent = nullptr);
};

// The content area under the title strip: white with a hairline along its bottom.
class NABgView_ContentView : public NABgView {
    Q_OBJECT
  public:
    explicit NABgView_ContentView(QWidget* parent = nullptr);
};

// A background by which the user can drag the whole window (the window has no title bar of
// the platform's). Presses its children take stay theirs.
class NABgView_CanMoveWindow : public NABgView {
    Q_OBJECT
  public:
    explicit NABgView_CanMoveWindow(QWidget* parent = nullptr);

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    // Where the press was, from the window's top-left corner; unset while not dragging.
    QPoint grabOffset_;
    bool dragging_ = false;
};

}  // namespace sysmend
