// The main window's title bar, drawn by the application because the window has no frame:
// the background behind the window's content (a dark sidebar column and a white content
// column, each rounded on its outer corners) and the close button. A mouse press that no
// child takes moves the window.
#pragma once

#include <QAbstractButton>
#include <QPoint>
#include <QWidget>

namespace sysmend {

class NAWindowContentViewSuperView : public QWidget {
    Q_OBJECT
  public:
    explicit NAWindowContentViewSuperView(QWidget* parent = nullptr);

    // Where the dark column ends and the white one begins.
    int splitX() const { return splitX_; }
    void setSplitX(int x);

    bool mouseDownCanMoveWindow() const { return true; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    int splitX_ = 0;
    // Set while the window follows the mouse by hand (platforms without a system move).
    bool dragging_ = false;
    QPoint dragOffset_;
};

// The window's close button, drawn the way the platform's title bars draw it.
class NAWindowCloseButton : public QAbstractButton {
    Q_OBJECT
  public:
    explicit NAWindowCloseButton(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {12, 12}; }

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace sysmend
