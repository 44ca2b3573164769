#include "network/na_firewall_pvc.h"

#include <QEvent>
#include <QVBoxLayout>

#include "app/na_folder_chooser.h"
#include "network/firewall.h"
#include "ui/na_timer.h"
#include "ui/named_image.h"

namespace sysmend {

namespace {

constexpr int kPollInterval = 4000;  // ms
constexpr int kStatusImageSize = 128;

FileURL preferencesFolderURL() {
    return FileURL::fileURLWithPath("/Library/Preferences", true);
}

// A wrapping label as tall as its text at `width`: a layout that centres it would otherwise
// give it the height of an unwrapped line and cut the rest off.
void fitToWidth(QLabel* label, int width) {
    label->setFixedWidth(width);
    label->ensurePolished();
    label->setFixedHeight(label->heightForWidth(width));
}

QLabel* makeLabel(const QString& name, const QString& style, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setStyleSheet(style);
    return label;
}

const QString kTitleStyle =
    QStringLiteral("color: rgb(45, 57, 71); font-size: 24px; font-weight: 600;");
const QString kBodyStyle = QStringLiteral("color: rgb(96, 108, 124); font-size: 13px;");
const QString kHintStyle = QStringLiteral("color: rgb(140, 150, 164); font-size: 12px;");

}  // namespace

NAFirewallPVC::NAFirewallPVC(QWidget* parent) : NARootPVC(parent) {}

void NAFirewallPVC::loadView() {
    NARootPVC::loadView();
    setObjectName(QStringLiteral("NAFirewallPVC"));
    setAutoFillBackground(true);
    QPalette white = palette();
    white.setColor(QPalette::Window, Qt::white);
    setPalette(white);

    // The status state: a large image, the status line, what the firewall does.
    statusView_ = new QWidget(this);
    auto* status = new QVBoxLayout(statusView_);
    status->setContentsMargins(0, 0, 0, 0);
    status->setSpacing(0);
    imageView = new QLabel(statusView_);
    imageView->setObjectName(QStringLiteral("imageView"));
    imageView->setFixedSize(kStatusImageSize, kStatusImageSize);
    status_text = makeLabel(QStringLiteral("status_text"), kTitleStyle, statusView_);
    status_text->setWordWrap(false);
    auto* about = makeLabel(QStringLiteral("aboutFirewall"), kBodyStyle, statusView_);
    about->setText(QStringLiteral(
        "The application firewall decides which applications and services on this Mac may "
        "accept incoming connections from the network."));
    auto* hint = makeLabel(QStringLiteral("statusHint"), kHintStyle, statusView_);
    hint->setText(QStringLiteral(
        "Checked every few seconds while this page is open. The firewall is turned on and off "
        "in System Settings › Network › Firewall (System Preferences › Security & Privacy on "
        "older systems)."));
    for (QLabel* label : {about, hint})
        fitToWidth(label, 460);
    status->addWidget(imageView, 0, Qt::AlignHCenter);
    status->addSpacing(20);
    status->addWidget(status_text, 0, Qt::AlignHCenter);
    status->addSpacing(12);
    status->addWidget(about, 0, Qt::AlignHCenter);
    status->addSpacing(10);
    status->addWidget(hint, 0, Qt::AlignHCenter);

    // The no-access state: why access is needed, and the button that asks for it.
    accessView_ = new QWidget(this);
    auto* access = new QVBoxLayout(accessView_);
    access->setContentsMargins(0, 0, 0, 0);
    access->setSpacing(0);
    auto* accessIcon = new QLabel(accessView_);
    accessIcon->setObjectName(QStringLiteral("accessIcon"));
    accessIcon->setFixedSize(96, 96);
    accessIcon->setPixmap(
        namedImage(QStringLiteral("firewall"), QSize(96, 96), devicePixelRatioF()));
    auto* accessTitle = makeLabel(QStringLiteral("accessTitle"), kTitleStyle, accessView_);
    accessTitle->setWordWrap(false);
    accessTitle->setText(QStringLiteral("Allow access to check the firewall"));
    auto* accessText = makeLabel(QStringLiteral("accessText"), kBodyStyle, accessView_);
    accessText->setText(QStringLiteral(
        "Sysmend reads the firewall's setting from the /Library/Preferences folder. Allow "
        "access to that folder once and the status is shown here from then on. Sysmend only "
        "reads the folder; it never changes anything in it."));
    fitToWidth(accessText, 460);
    checkBtn = new QPushButton(QStringLiteral("Allow Access…"), accessView_);
    checkBtn->setObjectName(QStringLiteral("checkBtn"));
    checkBtn->setCursor(Qt::PointingHandCursor);
    checkBtn->setFixedSize(180, 40);
    checkBtn->setStyleSheet(
        QStringLiteral("QPushButton { color: white; background: rgb(11, 80, 208); border: none;"
                       " border-radius: 20px; font-size: 15px; font-weight: 600; }"
                       "QPushButton:pressed { background: rgb(8, 62, 165); }"));
    connect(checkBtn, &QPushButton::clicked, this, [this] { checkFirewallStatus(checkBtn); });
    access->addWidget(accessIcon, 0, Qt::AlignHCenter);
    access->addSpacing(20);
    access->addWidget(accessTitle, 0, Qt::AlignHCenter);
    access->addSpacing(12);
    access->addWidget(accessText, 0, Qt::AlignHCenter);
    access->addSpacing(28);
    access->addWidget(checkBtn, 0, Qt::AlignHCenter);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 24, 40, 24);
    layout->addStretch(3);
    layout->addWidget(statusView_, 0, Qt::AlignHCenter);
    layout->addWidget(accessView_, 0, Qt::AlignHCenter);
    layout->addStretch(4);

    onImage_ = namedImage(QStringLiteral("ok"), QSize(kStatusImageSize, kStatusImageSize),
                          devicePixelRatioF());
    offImage_ = namedImage(QStringLiteral("warning"), QSize(kStatusImageSize, kStatusImageSize),
                           devicePixelRatioF());

    const bool accessed = fileAccess()->startAceess(preferencesFolderURL(), true);
    hiddenStatusView(!accessed);
    isAccessed_ = accessed;

    // Polls only while the page is in a shown window; the first status comes with the first
    // tick after that.
    timer_ = new QTimer(this);
    timer_->setInterval(kPollInterval);
    connect(timer_, &QTimer::timeout, this, qOverload<>(&NAFirewallPVC::checkFirewallStatus));
    timer_->start();
    pauseTimer(timer_);
    windowDidChange();
}

bool NAFirewallPVC::getFirewallStatus() const {
    return sysmend::getFirewallStatus();
}

void NAFirewallPVC::checkFirewallStatus() {
    if (!isAccessed_)
        return;
    const bool on = getFirewallStatus();
    imageView->setPixmap(on ? onImage_ : offImage_);
    const std::string_view text = firewallStatusText(on);
    status_text->setText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    // The image says it too, for whoever cannot see it.
    imageView->setAccessibleName(status_text->text());
    imageView->setAccessibleDescription(on ? QStringLiteral("Protected: a green check")
                                           : QStringLiteral("Not protected: a warning sign"));
}

void NAFirewallPVC::checkFirewallStatus(QObject*) {
    openAcessFile();
}

void NAFirewallPVC::openAcessFile() {
    graintSystemPrmission([this](bool granted) {
        isAccessed_ = granted;
        hiddenStatusView(!granted);
        if (granted)
            checkFirewallStatus();
    });
}

void NAFirewallPVC::hiddenStatusView(bool hide) {
    // The explanations go with their state's outlets.
    imageView->setHidden(hide);
    status_text->setHidden(hide);
    statusView_->setHidden(hide);
    checkBtn->setHidden(!hide);
    accessView_->setHidden(!hide);
}

void NAFirewallPVC::graintSystemPrmission(Completion completion) {
    askForFolderAccess(
        this, *fileAccess(), preferencesFolderURL(), QStringLiteral("Access"),
        QStringLiteral("For check firewall status in OSX, you need to allow access to your "
                       "/Library/Preferences folder."),
        [this](const QFileDialog* chooser, const FileURL& url) { return panel(chooser, url); },
        sysOpenpanel_, std::move(completion));
}

bool NAFirewallPVC::panel(const QFileDialog* sender, const FileURL& url) const {
    return sender != nullptr && sender == sysOpenpanel_ && url == preferencesFolderURL();
}

bool NAFirewallPVC::event(QEvent* event) {
    const bool handled = NARootPVC::event(event);
    switch (event->type()) {
        case QEvent::ParentChange:
        case QEvent::Show:
        case QEvent::Hide:
            windowDidChange();
            break;
        default:
            break;
    }
    return handled;
}

bool NAFirewallPVC::isInWindow() const {
    return parentWidget() != nullptr && isVisible();
}

void NAFirewallPVC::windowDidChange() {
    if (!timer_)
        return;  // not loaded yet
    const bool inWindow = isInWindow();
    if (inWindow == wasInWindow_)
        return;
    wasInWindow_ = inWindow;
    if (inWindow)
        resumeTimer(timer_);
    else
        pauseTimer(timer_);
}

}  // namespace sysmend
