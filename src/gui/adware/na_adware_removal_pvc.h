// The Vexbane tool's start page: loads the signature database with the page, runs the adware
// scan behind the scan sheet (path, counts, elapsed time, Stop and Done) and hands the findings,
// grouped by threat, over to the result page.
//
// GUI thread only. The scan runs on a pool thread and reads the page's stop flag, which the
// sheet's Stop button raises. Its visits come back to the GUI thread as posted calls, at most
// one waiting at a time and about one a frame, so a scan of hundreds of thousands of files
// neither fills the event queue nor slows down to show them; the counts and the path shown
// are the scan's exact ones once it has returned.
#pragma once

#include <QString>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "adware/adware_scan.h"
#include "app/na_start_page.h"
#include "ui/na_progress_panel_vc.h"

namespace sysmend {

class NAAdwareRemovalPVC : public NAStartPage {
    Q_OBJECT
  public:
    using Clock = std::chrono::steady_clock;

    explicit NAAdwareRemovalPVC(QWidget* parent = nullptr);
    ~NAAdwareRemovalPVC() override;

    // Builds the page, loads the signature database (one that cannot be loaded is logged and
    // leaves the page working with no signatures), makes the one-second timer and pauses it.
    void loadView() override;

    // The start button: asks for the home folder; granted, shows the scan sheet, starts the
    // clock and runs the scan on a pool thread. When the scan returns, stopped or not, the
    // sheet ends with kModalResponseContinue, the clock stops and the result page shows the
    // groups. Refused: nothing happens. Ignored while a scan runs.
    void scanAdware();

    // Before each scan: counts 0, timeelapsed "00:10:00", the category's groups and the
    // findings emptied, stop cleared, scanningFile the home folder.
    void initargs();

    // The timer's tick: timeelapsed from startScanDate, shown on the sheet.
    void update();

    // "Time Elapsed: hh:mm:ss", each part cut, never rounded.
    static QString timeFromInterval(double seconds);

    // The scan sheet, made on the first scan and kept.
    NAProgressPanel2VC* progressPanel2vc() const { return progressPanel2vc_; }
    QTimer* timer() const { return timer_; }

    // The signature database and the last scan's findings, in order of discovery (read them
    // only while no scan runs).
    const plist::Value& adwares() const;
    const TreatArray& treats() const;

    // As the GUI thread has seen them so far: exact when no scan runs.
    std::int64_t scanedFiles() const { return scanedFiles_; }
    std::int64_t threadFiles() const { return threadFiles_; }
    const QString& scanningFile() const { return scanningFile_; }
    const QString& timeelapsed() const { return timeelapsed_; }

    const std::optional<Clock::time_point>& startScanDate() const { return startScanDate_; }
    void setStartScanDate(Clock::time_point date) { startScanDate_ = date; }

  private:
    struct Visit {
        std::string path;
        std::int64_t scanned = 0;
        std::int64_t threats = 0;
    };

    // Pool thread: posts a copy of the visit unless a delivery is still waiting or was shown
    // less than a frame ago; the others are only counted by the scan.
    void relayVisit(const std::string& path, std::int64_t scanned, std::int64_t threats);
    // GUI thread: shows the visit and lets the next one be posted a frame later.
    void showVisit(const Visit& visit);
    void scanningPath(const Visit& visit);

    std::shared_ptr<AdwareScan> scan_;
    QPointer<NAProgressPanel2VC> progressPanel2vc_;
    QTimer* timer_ = nullptr;
    std::optional<Clock::time_point> startScanDate_;
    std::int64_t scanedFiles_ = 0;
    std::int64_t threadFiles_ = 0;
    QString timeelapsed_;
    QString scanningFile_;
    // Set by the scan's thread when it posts a visit, cleared by the GUI thread.
    std::atomic<bool> deliveryPending_{false};
};

}  // namespace sysmend
