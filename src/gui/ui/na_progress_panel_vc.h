// The two sheets a page shows while work runs.
//
// NAProgressPanelVC: a spinning indicator over the text "Please wait ......", shown while a
// scan or a removal runs. NAProgressPanel2VC: the scan sheet of the adware tool, with the
// application's icon, the path being looked at, the counts of scanned files and threats, the
// elapsed time, and Stop and Done buttons.
//
// A panel is both its window controller and its window: the page makes it once, sends it
// loadWindow and keeps it; beginSheet/endSheet (ui/na_sheet.h) show and end it. GUI thread
// only: background work posts its updates to the GUI thread.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QString>
#include <cstdint>

#include "app/na_root_pvc.h"

namespace sysmend {

class NAProgressPanelVC : public QDialog {
    Q_OBJECT
  public:
    // `windowNibName` names the layout; the users pass "NAProgressPanelVC".
    explicit NAProgressPanelVC(const QString& windowNibName = QStringLiteral("NAProgressPanelVC"),
                               QWidget* parent = nullptr);

    // Builds the window (once), shows "Please wait ......" and starts the indicator.
    void loadWindow();
    bool isWindowLoaded() const { return progress != nullptr; }
    // Shows "Please wait ......" again.
    void resetToDefault();

    const QString& information() const { return information_; }
    void setInformation(const QString& text);

    QProgressBar* progress = nullptr;  // indeterminate while loaded
    QLabel* informationLabel = nullptr;

  protected:
    // Escape and the window's close do not end the sheet: its owner ends it when the work
    // is done, and the work's results must not be read before.
    void reject() override {}
    void closeEvent(QCloseEvent* event) override;

  private:
    QString information_;
};

class NAProgressPanel2VC : public QDialog {
    Q_OBJECT
  public:
    explicit NAProgressPanel2VC(const QString& windowNibName = QStringLiteral("NAProgressPanel2VC"),
                                QWidget* parent = nullptr);

    // Builds the window (once), shows "Please wait ......" as the path and the application's
    // icon.
    void loadWindow();
    bool isWindowLoaded() const { return indicator != nullptr; }

    // The page whose stop flag the Stop button raises; held weakly.
    NARootPVC* pvc() const { return pvc_; }
    void setPvc(NARootPVC* page) { pvc_ = page; }

    // The texts the sheet shows; each setter updates its label.
    const QString& scan_path() const { return scan_path_; }
    void setScan_path(const QString& text);
    const QString& scaned_files_count() const { return scaned_files_count_; }
    void setScaned_files_count(const QString& text);
    const QString& threats_files_count() const { return threats_files_count_; }
    void setThreats_files_count(const QString& text);
    const QString& time_used() const { return time_used_; }
    void setTime_used(const QString& text);

    // Shows the path, "Scanned Files: <scanned>" and "Threat Found: <threats>". The time is
    // accepted and not shown: the page's own timer sets time_used.
    void update(const QString& path, std::int64_t scaned_files_count, std::int64_t threats_count,
                const QString& time_used);

    // Stop: raises the page's stop flag; the sheet stays until the scan ends it.
    void stopAction();
    // Done: ends the sheet when it is shown.
    void doneActiobn();

    QProgressBar* indicator = nullptr;
    QLabel* information = nullptr;
    QLabel* imageView = nullptr;
    QLabel* scanPathLabel = nullptr;
    QLabel* scannedLabel = nullptr;
    QLabel* threatsLabel = nullptr;
    QLabel* timeLabel = nullptr;
    QPushButton* stopButton = nullptr;
    QPushButton* doneButton = nullptr;

  protected:
    // As for the waiting panel: only Done or the scan's end close the sheet.
    void reject() override {}
    void closeEvent(QCloseEvent* event) override;

  private:
    QPointer<NARootPVC> pvc_;
    QString scan_path_;
    QString scaned_files_count_;
    QString threats_files_count_;
    QString time_used_;
};

// Starts or stops a progress bar's busy animation (an indeterminate bar animates while shown).
void startAnimation(QProgressBar* indicator);
void stopAnimation(QProgressBar* indicator);

}  // namespace sysmend
