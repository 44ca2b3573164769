// The application's one window. It has no platform frame: the shell draws its title bar
// (NAWindowContentViewSuperView) and its close button.
#pragma once

#include <QWidget>

namespace sysmend {

class NAMainWindow : public QWidget {
    Q_OBJECT
  public:
    explicit NAMainWindow(QWidget* parent = nullptr);

  signals:
    // The window is closing (by its close button or by the platform).
    void windowWillClose();

  protected:
    void closeEvent(QCloseEvent* event) override;
};

}  // namespace sysmend
