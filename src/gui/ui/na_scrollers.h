// Thin scroll bars for the tables: no arrows, a rounded knob over a slot. Install one with
// QAbstractScrollArea::setVerticalScrollBar (or the horizontal one); the orientation is
// taken from the bar.
#pragma once

#include <QColor>
#include <QScrollBar>

namespace sysmend {

// A grey knob over a very light slot, for white pages.
class NAScroller : public QScrollBar {
    Q_OBJECT
  public:
    explicit NAScroller(QWidget* parent = nullptr);

  protected:
    NAScroller(const QColor& knob, const QColor& pressedKnob, const QColor& slot, QWidget* parent);

  private:
    void applyLook();

    QColor knob_;
    QColor pressedKnob_;
    QColor slot_;
};

// The accent-blue knob of the main lists.
class NAScroller_Model_One : public NAScroller {
    Q_OBJECT
  public:
    explicit NAScroller_Model_One(QWidget* parent = nullptr);
};

// A light knob over a dark slot, for dark panels.
class NAScroller_DarkModel : public NAScroller {
    Q_OBJECT
  public:
    explicit NAScroller_DarkModel(QWidget* parent = nullptr);
};

// Only the knob: no slot is drawn.
class NAScroller_NoSlot : public NAScroller {
    Q_OBJECT
  public:
    explicit NAScroller_NoSlot(QWidget* parent = nullptr);
};

}  // namespace sysmend
