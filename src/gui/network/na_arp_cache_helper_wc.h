// The ARP cache guide, shown as a sheet: what the cache is, how to view it (arp -a), how to
// clear it (sudo arp -a -d, or one entry with sudo arp -d), and when clearing helps. Its
// layout and text come from the interface file NAArpCacheHelperWC.ui.
//
// The page makes it once and shows it as often as asked. GUI thread only.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <QString>
#include <memory>

namespace Ui {
class NAArpCacheHelperWC;
}

namespace sysmend {

class NAArpCacheHelperWC : public QDialog {
    Q_OBJECT
  public:
    explicit NAArpCacheHelperWC(const QString& windowNibName = QStringLiteral("NAArpCacheHelperWC"),
                                QWidget* parent = nullptr);
    ~NAArpCacheHelperWC() override;

    // Builds the window from its layout (once).
    void loadWindow();
    bool isWindowLoaded() const { return ui_ != nullptr; }

    // The close button: ends the sheet when it is shown; otherwise nothing.
    void closeAction();

    QPushButton* closeButton() const;

  private:
    std::unique_ptr<Ui::NAArpCacheHelperWC> ui_;
};

}  // namespace sysmend
