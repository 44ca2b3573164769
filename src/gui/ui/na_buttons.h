// Buttons that draw themselves: an on/off switch, a filled rounded button and a borderless
// text button. Each emits the usual QAbstractButton signals.
#pragma once

#include <QAbstractButton>
#include <QColor>

namespace sysmend {

// A switch: a pill-shaped track, blue when on and grey when off, with a white knob at the
// matching end. Checkable; `clicked` and `toggled` report a change made by the user.
class NAOnOffButton : public QAbstractButton {
    Q_OBJECT
  public:
    explicit NAOnOffButton(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {38, 22}; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override { return rect().contains(pos); }
};

// A push button filled with fillColor (darker while pressed, faded when disabled) with its
// title centred in titleColor: Helvetica Light on tall buttons (40 points and more, the
// start buttons), Helvetica on the others.
class NAColorFillButton : public QAbstractButton {
    Q_OBJECT
    Q_PROPERTY(QColor fillColor READ fillColor WRITE setFillColor)
    Q_PROPERTY(QColor titleColor READ titleColor WRITE setTitleColor)
    Q_PROPERTY(qreal cornerRadius READ cornerRadius WRITE setCornerRadius)
  public:
    explicit NAColorFillButton(QWidget* parent = nullptr);

    QColor fillColor() const { return fillColor_; }
    void setFillColor(const QColor& color);
    QColor titleColor() const { return titleColor_; }
    void setTitleColor(const QColor& color);
    // Half the height or more makes a capsule.
    qreal cornerRadius() const { return cornerRadius_; }
    void setCornerRadius(qreal radius);

    QSize sizeHint() const override;

  protected:
    QFont titleFont() const;
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override { return rect().contains(pos); }

  private:
    QColor fillColor_;
    QColor titleColor_;
    qreal cornerRadius_ = 6;
};

// A borderless button: its icon and title in the accent blue, darker while pressed, grey when
// disabled.
class NAButton : public QAbstractButton {
    Q_OBJECT
  public:
    explicit NAButton(QWidget* parent = nullptr);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override { return rect().contains(pos); }
};

}  // namespace sysmend
