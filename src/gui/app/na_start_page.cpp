#include "app/na_start_page.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <memory>

#include "app/app_delegate.h"
#include "ui/na_sheet.h"
#include "ui/named_image.h"

namespace sysmend {

namespace {

const char* const kStartButtonStyle =
    "QPushButton { color: white; background: rgb(11, 80, 208); border: none;"
    " border-radius: 22px; font-size: 15px; font-weight: 600; padding: 0 28px; }"
    "QPushButton:hover { background: rgb(26, 96, 226); }"
    "QPushButton:pressed { background: rgb(8, 62, 166); }"
    "QPushButton:disabled { background: rgb(184, 196, 216); }"
    // The keyboard's focus ring, in the house blue.
    "QPushButton:focus { border: 2px solid rgb(142, 178, 242); }";

}  // namespace

NAStartPage::NAStartPage(QWidget* parent) : NARootPVC(parent) {}

QThreadPool& NAStartPage::scanPool() {
    static QPointer<QThreadPool> pool;
    if (!pool)
        pool = new QThreadPool(QCoreApplication::instance());
    return *pool;
}

NAStartPage::~NAStartPage() {
    stopAndWaitForScan();
    // Shown over the window, the sheet belongs to it; its completion would outlive the page.
    delete progressPanel_;
}

void NAStartPage::stopAndWaitForScan() {
    // The scan reads the stop flag and posts back to this page: it must be over before either
    // goes.
    stop = true;
    if (scanTask_.valid())
        scanTask_.wait();
}

void NAStartPage::buildStartView(const QString& description, const QString& buttonTitle,
                                 std::function<void()> action) {
    auto category = categoryObj();
    const QString imageName =
        category ? QString::fromStdString(category->attachImage().value) : QString();
    const QString title = category ? QString::fromStdString(category->title()) : QString();

    auto* icon = new QLabel;
    icon->setObjectName(QStringLiteral("icon_view"));
    icon->setAlignment(Qt::AlignCenter);
    icon->setPixmap(namedImage(imageName, QSize(104, 104), devicePixelRatioF()));

    auto* titleLabel = new QLabel(title);
    titleLabel->setObjectName(QStringLiteral("title_view"));
    titleLabel->setAlignment(Qt::AlignCenter);
    titleLabel->setStyleSheet(
        QStringLiteral("color: rgb(45, 57, 71); font-size: 26px; font-weight: 600;"));

    auto* about = new QLabel(description);
    about->setObjectName(QStringLiteral("description_view"));
    about->setAlignment(Qt::AlignCenter);
    about->setWordWrap(true);
    about->setMaximumWidth(440);
    about->setStyleSheet(QStringLiteral("color: rgb(96, 108, 124); font-size: 14px;"));

    startButton_ = new QPushButton(buttonTitle);
    startButton_->setObjectName(QStringLiteral("startBtn"));
    startButton_->setCursor(Qt::PointingHandCursor);
    startButton_->setMinimumWidth(200);
    startButton_->setFixedHeight(44);
    startButton_->setStyleSheet(QString::fromLatin1(kStartButtonStyle));
    connect(startButton_, &QPushButton::clicked, this, [action = std::move(action)] { action(); });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 24, 40, 24);
    layout->addStretch(3);
    layout->addWidget(icon, 0, Qt::AlignHCenter);
    layout->addSpacing(20);
    layout->addWidget(titleLabel, 0, Qt::AlignHCenter);
    layout->addSpacing(10);
    // In a row of its own rather than aligned in the column, so that the column gives the
    // wrapped text the height it needs.
    auto* aboutRow = new QHBoxLayout;
    aboutRow->addStretch(1);
    aboutRow->addWidget(about, 4);
    aboutRow->addStretch(1);
    layout->addLayout(aboutRow);
    layout->addSpacing(34);
    layout->addWidget(startButton_, 0, Qt::AlignHCenter);
    layout->addStretch(4);
}

void NAStartPage::runScan(std::function<void()> work, std::function<void()> finished) {
    setIsSmartScaing(true);
    auto task = std::make_shared<std::packaged_task<void()>>(
        [this, work = std::move(work), finished = std::move(finished)]() mutable {
            work();
            // The page outlives this task (its destructor waits for it), so it can be the
            // context of the post; the call is dropped if the page goes before it runs.
            QMetaObject::invokeMethod(
                this,
                [this, finished = std::move(finished)] {
                    setIsSmartScaing(false);
                    finished();
                    if (handOverWhenScanEnds_) {
                        handOverWhenScanEnds_ = false;
                        handOver();
                    }
                },
                Qt::QueuedConnection);
        });
    scanTask_ = task->get_future();
    scanPool().start([task] { (*task)(); });
}

void NAStartPage::scanBehindWaitingSheet(std::function<void()> work) {
    // Set now, not when the posted steps run, so that a second press in between is ignored.
    setIsSmartScaing(true);
    QMetaObject::invokeMethod(
        this,
        [this, work = std::move(work)]() mutable {
            if (!progressPanel_) {
                progressPanel_ = new NAProgressPanelVC(QStringLiteral("NAProgressPanelVC"), this);
                progressPanel_->loadWindow();
            }
            beginSheet(this, progressPanel_, [this](int) { handOver(); });
            runScan(std::move(work), [this] { endSheet(progressPanel_); });
        },
        Qt::QueuedConnection);
}

void NAStartPage::handOver() {
    if (isSmartScaing()) {
        // The sheet went before its scan returned: the groups are still being written.
        stop = true;
        handOverWhenScanEnds_ = true;
        return;
    }
    auto category = categoryObj();
    if (!category)
        return;
    category->setIsNeedRefresh(true);
    category->setDisplayState(1);
    AppDelegate* shell = AppDelegate::current();
    // A scan whose sheet the user dismissed ends later, perhaps while another tool is shown:
    // its results then wait, marked for a rebuild, until the user comes back to this tool.
    if (shell && !shell->isShowing(*category))
        return;
    if (shell)
        shell->displayViewController(*category);
    category->setIsNeedRefresh(false);
}

}  // namespace sysmend
