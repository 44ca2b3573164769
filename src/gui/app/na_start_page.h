// What the scanning tools' start pages share: their look (the tool's icon and title, a line or
// two on what the tool does, one big start button), the scan that runs on a pool thread behind
// a sheet, and the hand-over to the result page.
//
// The order of a run is what keeps the pool thread and the result page apart, since the scan
// writes the category's groups without a lock:
//   1. the scan fills the category's groups on a pool thread;
//   2. when it has returned, the GUI thread ends the sheet;
//   3. the sheet's completion hands over, and only then does the result page read the groups.
// A sheet ended while its scan still runs (the adware sheet's Done button) stops the scan and
// hands over when it has returned, so step 3 never overtakes step 1.
//
// GUI thread only, but for the work given to runScan. A page that goes while its scan runs
// raises stop and waits for the scan to return.
#pragma once

#include <QPointer>
#include <QPushButton>
#include <QString>
#include <QThreadPool>
#include <functional>
#include <future>

#include "app/na_root_pvc.h"
#include "ui/na_progress_panel_vc.h"

namespace sysmend {

class NAStartPage : public NARootPVC {
    Q_OBJECT
  public:
    explicit NAStartPage(QWidget* parent = nullptr);
    ~NAStartPage() override;

    // The pool the scans run on: a pool of their own, since Qt's global pool also serves the
    // raster paint engine, which must not wait behind a scan. Made on first use, owned by the
    // application object.
    static QThreadPool& scanPool();

    // The big button; null before buildStartView.
    QPushButton* startButton() const { return startButton_; }
    QAbstractButton* mainButton() const override { return startButton_; }

    // The waiting sheet ("Please wait ......") of the pages that use scanBehindWaitingSheet;
    // made on their first scan and kept.
    NAProgressPanelVC* progressPanel() const { return progressPanel_; }

  protected:
    // Lays the page out around the category's icon and title (the category must be set) and
    // connects the button, named "startBtn", to `action`.
    void buildStartView(const QString& description, const QString& buttonTitle,
                        std::function<void()> action);

    // Runs `work` on a pool thread, then `finished` on the GUI thread (dropped when the page
    // went in between). isSmartScaing holds from here until `finished` is called.
    void runScan(std::function<void()> work, std::function<void()> finished);

    // The sequence of the tools whose sheet only asks the user to wait, posted to the GUI
    // thread: make the waiting sheet once, begin it with the hand-over as its completion, run
    // `work` on a pool thread, and end the sheet when `work` has returned.
    void scanBehindWaitingSheet(std::function<void()> work);

    // Raises stop and waits until a running scan has returned. The destructor does it; a page
    // whose scan uses members of its own calls it first in its own destructor.
    void stopAndWaitForScan();

    // The sheet's completion: the category's isNeedRefresh on, displayState 1, the shell shows
    // the result page (which rebuilds from the groups), isNeedRefresh off.
    void handOver();

  private:
    QPushButton* startButton_ = nullptr;
    QPointer<NAProgressPanelVC> progressPanel_;
    std::future<void> scanTask_;
    bool handOverWhenScanEnds_ = false;
};

}  // namespace sysmend
