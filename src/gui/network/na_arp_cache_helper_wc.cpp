#include "network/na_arp_cache_helper_wc.h"

#include "ui/na_sheet.h"
#include "ui_NAArpCacheHelperWC.h"

namespace sysmend {

NAArpCacheHelperWC::NAArpCacheHelperWC(const QString& windowNibName, QWidget* parent)
    : QDialog(parent) {
    setObjectName(windowNibName);
}

NAArpCacheHelperWC::~NAArpCacheHelperWC() = default;

void NAArpCacheHelperWC::loadWindow() {
    if (ui_)
        return;
    ui_ = std::make_unique<Ui::NAArpCacheHelperWC>();
    const QString name = objectName();
    ui_->setupUi(this);
    setObjectName(name);
    // The sheet is sized to its content, and a wrapping label reports one line's height.
    QLabel* text = ui_->help_text;
    text->ensurePolished();
    text->setFixedHeight(text->heightForWidth(text->maximumWidth()));
    connect(ui_->closeButton, &QPushButton::clicked, this, &NAArpCacheHelperWC::closeAction);
}

void NAArpCacheHelperWC::closeAction() {
    if (sheetParent(this))
        endSheet(this, QDialog::Accepted);
}

QPushButton* NAArpCacheHelperWC::closeButton() const {
    return ui_ ? ui_->closeButton : nullptr;
}

}  // namespace sysmend
