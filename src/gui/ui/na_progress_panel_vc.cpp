#include "ui/na_progress_panel_vc.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/na_root_pvc.h"
#include "ui/na_sheet.h"
#include "ui/named_image.h"

namespace sysmend {

namespace {

const QString kPleaseWait = QStringLiteral("Please wait ......");

const char* const kSheetStyle =
    "QDialog { background: white; border: 1px solid rgb(196, 204, 216); border-radius: 6px; }"
    "QLabel { color: rgb(45, 57, 71); }"
    "QProgressBar { border: none; background: rgb(232, 238, 250); border-radius: 3px;"
    " max-height: 6px; }"
    "QProgressBar::chunk { background: rgb(11, 80, 208); border-radius: 3px; }";

const char* const kButtonStyle =
    "QPushButton { color: rgb(45, 57, 71); background: rgb(240, 243, 248); border: 1px solid "
    "rgb(196, 204, 216); border-radius: 5px; padding: 4px 18px; font-size: 13px; }"
    "QPushButton:pressed { background: rgb(220, 228, 240); }"
    "QPushButton:default { color: white; background: rgb(11, 80, 208); border-color: rgb(11, "
    "80, 208); }";

QProgressBar* makeIndicator(QWidget* parent, const char* name) {
    auto* bar = new QProgressBar(parent);
    bar->setObjectName(QString::fromLatin1(name));
    bar->setTextVisible(false);
    bar->setRange(0, 1);
    bar->setFixedHeight(6);
    return bar;
}

}  // namespace

void startAnimation(QProgressBar* indicator) {
    if (indicator)
        indicator->setRange(0, 0);
}

void stopAnimation(QProgressBar* indicator) {
    if (indicator)
        indicator->setRange(0, 1);
}

NAProgressPanelVC::NAProgressPanelVC(const QString& windowNibName, QWidget* parent)
    : QDialog(parent) {
    setObjectName(windowNibName);
}

void NAProgressPanelVC::loadWindow() {
    if (!isWindowLoaded()) {
        setStyleSheet(QString::fromLatin1(kSheetStyle));
        setFixedWidth(360);
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(28, 24, 28, 24);
        layout->setSpacing(14);
        informationLabel = new QLabel(this);
        informationLabel->setObjectName(QStringLiteral("information"));
        informationLabel->setAlignment(Qt::AlignCenter);
        informationLabel->setStyleSheet(QStringLiteral("font-size: 14px;"));
        progress = makeIndicator(this, "progress");
        layout->addWidget(informationLabel);
        layout->addWidget(progress);
    }
    setInformation(kPleaseWait);
    startAnimation(progress);
}

void NAProgressPanelVC::closeEvent(QCloseEvent* event) {
    event->ignore();
}

void NAProgressPanelVC::resetToDefault() {
    setInformation(kPleaseWait);
}

void NAProgressPanelVC::setInformation(const QString& text) {
    information_ = text;
    if (informationLabel)
        informationLabel->setText(text);
}

NAProgressPanel2VC::NAProgressPanel2VC(const QString& windowNibName, QWidget* parent)
    : QDialog(parent) {
    setObjectName(windowNibName);
}

void NAProgressPanel2VC::loadWindow() {
    if (!isWindowLoaded()) {
        setStyleSheet(QString::fromLatin1(kSheetStyle));
        setFixedWidth(460);
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(24, 22, 24, 20);
        layout->setSpacing(18);

        imageView = new QLabel(this);
        imageView->setObjectName(QStringLiteral("imageView"));
        imageView->setFixedSize(64, 64);
        layout->addWidget(imageView, 0, Qt::AlignTop);

        auto* column = new QVBoxLayout;
        column->setSpacing(8);
        information = new QLabel(QStringLiteral("Scanning for adware…"), this);
        information->setObjectName(QStringLiteral("information"));
        information->setStyleSheet(QStringLiteral("font-size: 15px; font-weight: 600;"));
        scanPathLabel = new QLabel(this);
        scanPathLabel->setObjectName(QStringLiteral("scan_path"));
        scanPathLabel->setStyleSheet(QStringLiteral("color: rgb(96, 108, 124); font-size: 11px;"));
        scanPathLabel->setMinimumWidth(320);
        scanPathLabel->setMaximumWidth(330);
        indicator = makeIndicator(this, "indicator");
        scannedLabel = new QLabel(this);
        scannedLabel->setObjectName(QStringLiteral("scaned_files_count"));
        threatsLabel = new QLabel(this);
        threatsLabel->setObjectName(QStringLiteral("threats_files_count"));
        timeLabel = new QLabel(this);
        timeLabel->setObjectName(QStringLiteral("time_used"));
        timeLabel->setStyleSheet(QStringLiteral("color: rgb(96, 108, 124);"));

        auto* buttons = new QHBoxLayout;
        buttons->addStretch(1);
        stopButton = new QPushButton(QStringLiteral("Stop"), this);
        stopButton->setObjectName(QStringLiteral("stopButton"));
        doneButton = new QPushButton(QStringLiteral("Done"), this);
        doneButton->setObjectName(QStringLiteral("doneButton"));
        for (QPushButton* button : {stopButton, doneButton}) {
            button->setStyleSheet(QString::fromLatin1(kButtonStyle));
            button->setAutoDefault(false);
            buttons->addWidget(button);
        }
        connect(stopButton, &QPushButton::clicked, this, &NAProgressPanel2VC::stopAction);
        connect(doneButton, &QPushButton::clicked, this, &NAProgressPanel2VC::doneActiobn);

        column->addWidget(information);
        column->addWidget(scanPathLabel);
        column->addWidget(indicator);
        column->addWidget(scannedLabel);
        column->addWidget(threatsLabel);
        column->addWidget(timeLabel);
        column->addSpacing(6);
        column->addLayout(buttons);
        layout->addLayout(column, 1);
    }
    setScan_path(kPleaseWait);
    imageView->setPixmap(applicationIconImage().pixmap(QSize(64, 64), devicePixelRatioF()));
}

void NAProgressPanel2VC::closeEvent(QCloseEvent* event) {
    event->ignore();
}

void NAProgressPanel2VC::setScan_path(const QString& text) {
    scan_path_ = text;
    if (scanPathLabel) {
        // Long paths keep their ends, which say most.
        scanPathLabel->setText(scanPathLabel->fontMetrics().elidedText(
            text, Qt::ElideMiddle, scanPathLabel->maximumWidth()));
        scanPathLabel->setToolTip(text);
    }
}

void NAProgressPanel2VC::setScaned_files_count(const QString& text) {
    scaned_files_count_ = text;
    if (scannedLabel)
        scannedLabel->setText(text);
}

void NAProgressPanel2VC::setThreats_files_count(const QString& text) {
    threats_files_count_ = text;
    if (threatsLabel)
        threatsLabel->setText(text);
}

void NAProgressPanel2VC::setTime_used(const QString& text) {
    time_used_ = text;
    if (timeLabel)
        timeLabel->setText(text);
}

void NAProgressPanel2VC::update(const QString& path, std::int64_t scaned_files_count,
                                std::int64_t threats_count, const QString&) {
    setScan_path(path);
    setScaned_files_count(QStringLiteral("Scanned Files: %1").arg(scaned_files_count));
    setThreats_files_count(QStringLiteral("Threat Found: %1").arg(threats_count));
}

void NAProgressPanel2VC::stopAction() {
    if (pvc_)
        pvc_->stop = true;
}

void NAProgressPanel2VC::doneActiobn() {
    endSheet(this);
}

}  // namespace sysmend
