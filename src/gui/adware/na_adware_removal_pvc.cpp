#include "adware/na_adware_removal_pvc.h"

#include <exception>
#include <utility>

#include "adware/signature_loader.h"
#include "platform/syslog.h"
#include "platform/volume.h"
#include "ui/na_sheet.h"
#include "ui/na_timer.h"

namespace sysmend {

namespace {

// About one frame: visits that come faster are not shown one by one.
constexpr std::chrono::milliseconds kShowInterval(16);

}  // namespace

NAAdwareRemovalPVC::NAAdwareRemovalPVC(QWidget* parent) : NAStartPage(parent) {}

NAAdwareRemovalPVC::~NAAdwareRemovalPVC() {
    // The scan's progress callback uses this page's members.
    stopAndWaitForScan();
    delete progressPanel2vc_;
}

void NAAdwareRemovalPVC::loadView() {
    NAStartPage::loadView();
    buildStartView(QStringLiteral("Check launch agents, applications and the extensions of "
                                  "Safari, Chrome, Opera and Firefox against known adware, and "
                                  "remove what is found."),
                   QStringLiteral("Start Scan"), [this] { scanAdware(); });

    plist::Value database = plist::Array{};
    try {
        database = loadSignatureDatabase();
    } catch (const std::exception& error) {
        // The page still works; with no signatures a scan finds nothing.
        logLine(std::string("signature database not loaded: ") + error.what());
    }
    scan_ = std::make_shared<AdwareScan>(std::move(database), categoryObj());
    scan_->useStopFlag(stop);  // the sheet's Stop button raises the page's flag
    scan_->setProgress([this](const std::string& path, std::int64_t scanned, std::int64_t threats) {
        relayVisit(path, scanned, threats);
    });
    initargs();

    timer_ = new QTimer(this);
    timer_->setInterval(1000);
    connect(timer_, &QTimer::timeout, this, [this] { update(); });
    timer_->start();
    pauseTimer(timer_);
}

void NAAdwareRemovalPVC::scanAdware() {
    if (!scan_ || isSmartScaing())
        return;
    grantUserPermission([this](bool granted) {
        if (!granted)
            return;
        if (!progressPanel2vc_) {
            progressPanel2vc_ = new NAProgressPanel2VC(QStringLiteral("NAProgressPanel2VC"), this);
            progressPanel2vc_->loadWindow();
            progressPanel2vc_->setPvc(this);
        }
        startAnimation(progressPanel2vc_->indicator);
        beginSheet(this, progressPanel2vc_, [this](int) { handOver(); });
        initargs();
        progressPanel2vc_->update(scanningFile_, 0, 0, QString());
        startScanDate_ = Clock::now();
        resumeTimer(timer_);

        runScan(
            // Pool thread: the scan writes the findings and the category's groups.
            [scan = scan_] { scan->analysisAdware(); },
            // GUI thread, once the scan has returned: the last counts, then the sheet ends and
            // its completion shows the result page.
            [this] {
                scanningPath({scan_->scanningFile(), scan_->scanedFiles(), scan_->threadFiles()});
                endSheet(progressPanel2vc_, kModalResponseContinue);
                pauseTimer(timer_);
            });
    });
}

void NAAdwareRemovalPVC::initargs() {
    scanedFiles_ = 0;
    threadFiles_ = 0;
    // What the sheet says before the clock's first tick.
    timeelapsed_ = QStringLiteral("00:10:00");
    if (scan_)
        scan_->initargs();  // the groups, the findings and the stop flag
    stop = false;
    scanningFile_ = QString::fromStdString(Volume::current().home());
}

void NAAdwareRemovalPVC::update() {
    if (startScanDate_) {
        const std::chrono::duration<double> elapsed = Clock::now() - *startScanDate_;
        timeelapsed_ = timeFromInterval(elapsed.count());
    }
    if (progressPanel2vc_)
        progressPanel2vc_->setTime_used(timeelapsed_);
}

QString NAAdwareRemovalPVC::timeFromInterval(double seconds) {
    return QString::fromStdString(AdwareScan::timeFromInterval(seconds));
}

const plist::Value& NAAdwareRemovalPVC::adwares() const {
    static const plist::Value none = plist::Array{};
    return scan_ ? scan_->adwares() : none;
}

const TreatArray& NAAdwareRemovalPVC::treats() const {
    static const TreatArray none;
    return scan_ ? scan_->treats() : none;
}

void NAAdwareRemovalPVC::relayVisit(const std::string& path, std::int64_t scanned,
                                    std::int64_t threats) {
    // Only this thread sets the flag, so testing before setting it is no race.
    if (deliveryPending_.load(std::memory_order_relaxed))
        return;
    deliveryPending_.store(true, std::memory_order_relaxed);
    // The page waits for its scan before it goes, so it is alive here.
    QMetaObject::invokeMethod(
        this, [this, visit = Visit{path, scanned, threats}] { showVisit(visit); },
        Qt::QueuedConnection);
}

void NAAdwareRemovalPVC::showVisit(const Visit& visit) {
    scanningPath(visit);
    QTimer::singleShot(kShowInterval, this,
                       [this] { deliveryPending_.store(false, std::memory_order_relaxed); });
}

void NAAdwareRemovalPVC::scanningPath(const Visit& visit) {
    scanedFiles_ = visit.scanned;
    threadFiles_ = visit.threats;
    scanningFile_ = QString::fromStdString(visit.path);
    if (progressPanel2vc_)
        progressPanel2vc_->update(scanningFile_, scanedFiles_, threadFiles_, QString());
}

}  // namespace sysmend
