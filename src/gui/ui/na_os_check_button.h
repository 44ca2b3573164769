// The tri-state check boxes of the result tables' group and item rows.
//
// The state is an integer: 1 checked, 0 unchecked, -1 mixed (some children checked). A click
// only ever sets 0 or 1: a mixed box becomes checked, so a click on a partly checked group
// checks the whole group. `clicked` is emitted once per user click, after the new state is
// set. State changes are drawn at once, never animated. The box may be named in a .ui file
// (the cell loader makes real instances); place it 26 to 28 points square so that the image,
// drawn 5 points inside the bounds, is 16 to 18 points.
#pragma once

#include <QCheckBox>
#include <QString>

namespace sysmend {

class NAOSCheckButton : public QCheckBox {
    Q_OBJECT
    Q_PROPERTY(int state READ state WRITE setState)
  public:
    explicit NAOSCheckButton(QWidget* parent = nullptr);

    // 1, 0 or -1; setState maps any other non-zero value to -1. Setting the state emits
    // stateChanged when it changes (its argument is a Qt::CheckState, 2 for checked: read
    // state() instead) but never clicked.
    int state() const;
    void setState(int state);

    // The images drawn for each state, by name (see namedImage).
    QString onImage() const { return QStringLiteral("checkbox_checked"); }
    QString offImage() const { return QStringLiteral("checkbox_uncheck"); }
    QString mixImage() const { return QStringLiteral("checkbox_mid"); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    // The image name for the current state: a disabled box draws offImage whatever its state.
    virtual QString imageNameToDraw() const;

    void paintEvent(QPaintEvent* event) override;
    // A click toggles between 0 and 1 and turns a mixed box checked.
    void nextCheckState() override;
    // The whole bounds answer clicks, not just the style's indicator.
    bool hitButton(const QPoint& pos) const override;
};

// The same box for the browser-protection rows: a disabled box shows a red check, the mark of
// an item that is always removed and cannot be unchecked.
class NAOSCheckButton_WebShield : public NAOSCheckButton {
    Q_OBJECT
  public:
    using NAOSCheckButton::NAOSCheckButton;

    QString mustCheckedImage() const { return QStringLiteral("checkbox_redChecked"); }

  protected:
    QString imageNameToDraw() const override;
};

// A box drawn by the platform style (with its text) that keeps the click rule: a click on a
// mixed box checks it.
class NAOSCheckButton_Normal : public QCheckBox {
    Q_OBJECT
    Q_PROPERTY(int state READ state WRITE setState)
  public:
    explicit NAOSCheckButton_Normal(QWidget* parent = nullptr);

    int state() const;
    void setState(int state);

  protected:
    void nextCheckState() override;
};

}  // namespace sysmend
