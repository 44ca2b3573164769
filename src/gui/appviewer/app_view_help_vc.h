// The content of the leftovers sheet's help popover: why some files could not be removed, and
// what the user can do about them. Layout and text come from the interface file
// AppViewHelpVC.ui, in the light appearance whatever the system's.
#pragma once

#include <QString>
#include <QWidget>
#include <memory>

namespace Ui {
class AppViewHelpVC;
}

namespace sysmend {

class AppViewHelpVC : public QWidget {
    Q_OBJECT
  public:
    explicit AppViewHelpVC(const QString& nibName = QStringLiteral("AppViewHelpVC"),
                           QWidget* parent = nullptr);
    ~AppViewHelpVC() override;

    // The help as plain text (what the popover says, without its formatting).
    QString helpText() const;

  private:
    std::unique_ptr<Ui::AppViewHelpVC> ui_;
};

}  // namespace sysmend
