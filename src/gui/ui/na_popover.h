// A popover: a small floating panel with an arrow that points at the control it belongs to,
// holding one content view. It is transient: a click anywhere else, or Escape, closes it.
//
// The popover owns its content view. It is kept by whoever made it and shown again and again;
// GUI thread only.
#pragma once

#include <QPointer>
#include <QWidget>

namespace sysmend {

class NAPopover : public QWidget {
    Q_OBJECT
  public:
    // The anchor's side the popover opens on (AppKit's minimum-Y edge of an unflipped view is
    // its bottom, the maximum-Y edge its top).
    enum class Edge { Bottom, Top };

    explicit NAPopover(QWidget* parent = nullptr);

    // Takes ownership of the view and lays it out inside the panel.
    void setContentViewController(QWidget* content);
    QWidget* contentViewController() const { return content_; }

    // Shows the popover next to `anchor`'s whole bounds on `edge`, its arrow at the anchor's
    // centre; it opens on the other side when the screen has no room on `edge`. The popover
    // stays a top-level window so that it can reach beyond the anchor's window.
    void showRelativeToView(QWidget* anchor, Edge edge);

    // Where the popover opened the last time it was shown.
    Edge shownEdge() const { return shownEdge_; }
    QWidget* anchor() const { return anchor_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    static constexpr int kArrowHeight = 9;
    static constexpr int kArrowHalfWidth = 10;
    static constexpr int kRadius = 8;

    void applyMargins();

    QWidget* content_ = nullptr;
    QPointer<QWidget> anchor_;
    Edge shownEdge_ = Edge::Bottom;
    int arrowX_ = 0;
};

}  // namespace sysmend
