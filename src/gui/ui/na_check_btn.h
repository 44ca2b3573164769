// A check box of the clean-up settings that will not let the user clear the last chosen kind:
// pressing the only checked box leaves it checked and shows "Operation failed!" as a sheet on
// its window. The count comes from NASettingMgr::mgr(), so whoever binds the boxes to the
// settings must keep the store up to date before the next press.
#pragma once

#include <QCheckBox>
#include <QMessageBox>
#include <QPointer>

namespace sysmend {

class NACheckBtn : public QCheckBox {
    Q_OBJECT
  public:
    explicit NACheckBtn(QWidget* parent = nullptr);

    // The refusal sheet while it is shown, else null.
    QMessageBox* alert() const { return alert_; }

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    // True when the press may go on to toggle the box; otherwise the sheet is shown.
    bool mayToggle();
    void showRefusal();

    QPointer<QMessageBox> alert_;
};

}  // namespace sysmend
