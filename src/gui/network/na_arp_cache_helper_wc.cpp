#include "network/na_arp_cache_helper_wc.h"

#include <QBoxLayout>
#include <QScrollArea>
#include <algorithm>

#include "ui/na_scrollers.h"
#include "ui/na_sheet.h"
#include "ui_NAArpCacheHelperWC.h"

namespace sysmend {

namespace {
// The sheet hangs in a 600-point window under its 30-point title strip: the help text gets
// what is left after the title, the Close button and the margins, and scrolls beyond it.
constexpr int kTextHeightLimit = 400;
}  // namespace

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
    if (auto* column = qobject_cast<QBoxLayout*>(layout())) {
        auto* scroll = new QScrollArea(this);
        scroll->setObjectName(QStringLiteral("help_scroll"));
        scroll->setAccessibleName(QStringLiteral("How to view and clear the ARP cache"));
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll->setVerticalScrollBar(new NAScroller(scroll));
        scroll->setStyleSheet(
            QStringLiteral("QScrollArea, QScrollArea > QWidget > QWidget "
                           "{ background: white; }"));
        column->insertWidget(column->indexOf(text), scroll);
        scroll->setWidget(text);
        scroll->setFixedSize(text->width() + scroll->verticalScrollBar()->sizeHint().width(),
                             std::min(text->height(), kTextHeightLimit));
    }
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
