#include "network/na_arp_cache_pvc.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "ui/na_sheet.h"
#include "ui/named_image.h"

namespace sysmend {

NAARPCachePVC::NAARPCachePVC(QWidget* parent) : NARootPVC(parent) {}

void NAARPCachePVC::loadView() {
    NARootPVC::loadView();
    setObjectName(QStringLiteral("NAARPCachePVC"));
    setAutoFillBackground(true);
    QPalette white = palette();
    white.setColor(QPalette::Window, Qt::white);
    setPalette(white);

    auto* icon = new QLabel(this);
    icon->setObjectName(QStringLiteral("icon_view"));
    icon->setFixedSize(96, 96);
    icon->setPixmap(namedImage(QStringLiteral("arpCaches"), QSize(96, 96), devicePixelRatioF()));

    auto* title = new QLabel(QStringLiteral("ARP Cache"), this);
    title->setObjectName(QStringLiteral("title_view"));
    title->setStyleSheet(
        QStringLiteral("color: rgb(45, 57, 71); font-size: 24px; font-weight: 600;"));

    auto* about = new QLabel(this);
    about->setObjectName(QStringLiteral("about_text"));
    about->setWordWrap(true);
    about->setAlignment(Qt::AlignCenter);
    about->setStyleSheet(QStringLiteral("color: rgb(96, 108, 124); font-size: 13px;"));
    about->setText(QStringLiteral(
        "Your Mac remembers the hardware addresses of the devices it talks to on your local "
        "network. When a device is replaced or changes its address, an old entry can keep your "
        "Mac from reaching it until the entry is cleared."));
    // As tall as the wrapped text: the centring layout would give it one line's height.
    about->setFixedWidth(460);
    about->ensurePolished();
    about->setFixedHeight(about->heightForWidth(460));

    guideButton = new QPushButton(QStringLiteral("How to View and Clear the ARP Cache"), this);
    guideButton->setObjectName(QStringLiteral("guideButton"));
    guideButton->setCursor(Qt::PointingHandCursor);
    guideButton->setFixedHeight(40);
    guideButton->setStyleSheet(
        QStringLiteral("QPushButton { color: white; background: rgb(11, 80, 208); border: none;"
                       " border-radius: 20px; padding: 0 26px; font-size: 15px; font-weight: 600; }"
                       "QPushButton:pressed { background: rgb(8, 62, 165); }"));
    connect(guideButton, &QPushButton::clicked, this,
            [this] { arpCache_help_action(guideButton); });

    helpButton = new QPushButton(QStringLiteral("?"), this);
    helpButton->setObjectName(QStringLiteral("helpButton"));
    helpButton->setToolTip(QStringLiteral("What is the ARP cache?"));
    helpButton->setAccessibleName(helpButton->toolTip());  // "?" says nothing when spoken
    helpButton->setCursor(Qt::PointingHandCursor);
    helpButton->setFixedSize(24, 24);
    helpButton->setStyleSheet(
        QStringLiteral("QPushButton { color: rgb(11, 80, 208); background: white; border: 1px "
                       "solid rgb(184, 196, 216); border-radius: 12px; font-size: 13px; "
                       "font-weight: 600; }"
                       "QPushButton:pressed { background: rgb(232, 238, 250); }"));
    connect(helpButton, &QPushButton::clicked, this, [this] { help(helpButton); });

    // The short help, made with the page as its layout provides it.
    popOver_ = new NAPopover(this);
    popOver_->setObjectName(QStringLiteral("popOver"));
    auto* popText = new QLabel;
    popText->setObjectName(QStringLiteral("popover_text"));
    popText->setWordWrap(true);
    popText->setFixedWidth(280);
    popText->setStyleSheet(QStringLiteral("color: rgb(60, 72, 88); font-size: 12px;"));
    popText->setText(QStringLiteral(
        "<b>What is the ARP cache?</b><br>The list of hardware (MAC) addresses that your Mac "
        "has recently seen for the IP addresses on your local network. Sysmend does not read "
        "or change it; the guide shows how to view and clear it in Terminal."));
    popOver_->setContentViewController(popText);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(12);
    buttons->addWidget(guideButton);
    buttons->addWidget(helpButton, 0, Qt::AlignVCenter);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 24, 40, 24);
    layout->setSpacing(0);
    layout->addStretch(3);
    layout->addWidget(icon, 0, Qt::AlignHCenter);
    layout->addSpacing(20);
    layout->addWidget(title, 0, Qt::AlignHCenter);
    layout->addSpacing(12);
    layout->addWidget(about, 0, Qt::AlignHCenter);
    layout->addSpacing(32);
    // The help button sits beside the main one; the row stays centred on the main button.
    buttons->insertSpacing(0, 36);
    layout->addLayout(buttons);
    layout->setAlignment(buttons, Qt::AlignHCenter);
    layout->addStretch(4);
}

void NAARPCachePVC::help(QWidget* sender) {
    if (popOver_ && sender)
        popOver_->showRelativeToView(sender, NAPopover::Edge::Top);
}

void NAARPCachePVC::arpCache_help_action(QObject*) {
    if (!helpWC_) {
        helpWC_ = new NAArpCacheHelperWC(QStringLiteral("NAArpCacheHelperWC"), this);
        helpWC_->loadWindow();
    }
    beginSheet(this, helpWC_);
}

}  // namespace sysmend
