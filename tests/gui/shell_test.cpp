// The shell and the four scanning tools' start pages, driven through the real window: the
// category list and which page each selection shows, start over, close and the defaults reset;
// then press the start button, let the scan run behind its sheet, and find the results in the
// category and the result page on screen. Refused folder access changes nothing; the adware
// sheet counts every visit exactly without flooding the event queue, and its Stop and Done
// buttons reach the scan.
#include <QSemaphore>
#include <QThreadPool>
#include <filesystem>
#include <fstream>
#include <utility>

#include "adware/adware_scan.h"
#include "adware/na_adware_removal_pvc.h"
#include "adware/na_groups_hvc.h"
#include "adware/signature_database.h"
#include "adware/signature_loader.h"
#include "app/na_start_page.h"
#include "app/na_window_content_view_super_view.h"
#include "gui_test_env.h"
#include "sample/fake_volume.h"
#include "startup/na_start_items_hvc.h"
#include "tools/na_tools.h"
#include "ui/na_result_cell_views.h"

using namespace sysmend;

namespace {

// Keeps the scan pool's only thread busy until release(), so that a scan started meanwhile
// waits in the pool's queue; finish() (or going) waits for the pool and puts it back.
struct ScanPoolHold {
    QThreadPool& pool = NAStartPage::scanPool();
    const int threads = pool.maxThreadCount();
    QSemaphore gate;
    bool released = false;

    ScanPoolHold() {
        pool.setMaxThreadCount(1);
        pool.start([this] { gate.acquire(); });
    }
    ~ScanPoolHold() { finish(); }
    void release() {
        if (!std::exchange(released, true))
            gate.release();
    }
    void finish() {
        release();
        pool.waitForDone();
        pool.setMaxThreadCount(threads);
    }
};

using namespace test;

// A result page that records what the shell asks of it.
class RecordingHVC : public NARootHVC {
  public:
    void needRefreshUI() override { ++refreshes; }
    void startOver(QObject* sender) override { startOvers.push_back(sender); }

    int refreshes = 0;
    std::vector<QObject*> startOvers;
};

QStringList titlesOf(const NAGroupObjArray& groups) {
    QStringList titles;
    for (const auto& group : groups)
        titles << QString::fromStdString(group->title()) + "[" +
                      QString::number(group->contents().size()) + "]";
    return titles;
}

plist::Value threat(const std::string& name, const std::string& list, const std::string& string) {
    plist::Dictionary entry;
    entry.set("name", name);
    entry.set(list, plist::Array{plist::Value(string)});
    return entry;
}

// Counts the calls posted to an object (queued functors and slots) as they are delivered.
using MetaCallCounter = EventCounter<QEvent::MetaCall>;

}  // namespace

class ShellTest : public QObject {
    Q_OBJECT

  private:
    NACategoryObj& category(Row row) const { return categoryOf(*delegate_, row); }

    // The page in the content area, checked to be really placed there.
    QWidget* shownPage() const {
        QWidget* page = delegate_->controllerView();
        if (page && page->parentWidget() != delegate_->vc_contentView())
            return nullptr;
        return page;
    }

    // Selects the tool in the list, as a click would, and returns its start page.
    NAStartPage* showTool(Row row) {
        clickRow(delegate_->cTable(), row);
        auto* page = qobject_cast<NAStartPage*>(delegate_->PVC(category(row)));
        if (page && delegate_->controllerView() != page)
            return nullptr;
        return page;
    }

    static void pressStart(NAStartPage* page) {
        QVERIFY(page != nullptr);
        auto* start = page->findChild<QPushButton*>(QStringLiteral("startBtn"));
        QVERIFY(start != nullptr && start->isEnabled());
        QTest::mouseClick(start, Qt::LeftButton);
    }

    bool showsResultPage(Row row) const {
        QWidget* shown = delegate_->controllerView();
        return shown != nullptr && shown == delegate_->HVC(category(row)) &&
               shown->parentWidget() == delegate_->vc_contentView() &&
               delegate_->startOverBtn()->isVisible();
    }

    void grantHome() const {
        AppSandboxFileAccess::fileAccess().persistPermissionPath(volume_->home());
    }

    // A small database of three threats, two of them sharing a name, written where the
    // Vexbane page loads it from.
    plist::Value useDatabase() {
        plist::Value database(plist::Array{
            threat("Genieo", "launch", "com.genieo.engine.plist"),
            threat("VSearch", "launchContent", "com.v.daemon"),
            threat("Genieo", "app", "Genieo.app"),
        });
        const std::string file = files_.filePath(QStringLiteral("signatures.cx")).toStdString();
        const Data bytes = encryptSignatureDatabase(database);
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        setSignatureFile(file);
        return database;
    }

    // The Vexbane page shown, over a volume with three threats on it.
    NAAdwareRemovalPVC* showAdware() {
        volume_->addLaunchJob(volume_->home() + "/Library/LaunchAgents", "com.genieo.engine.plist",
                              "com.genieo.engine");
        volume_->addLaunchJob("/Library/LaunchDaemons", "com.vsearch.daemon.plist", "com.v.daemon");
        volume_->addAppBundle("/Applications", "Aperture Lite", "com.example.aperture");
        volume_->addAppBundle("/Applications", "Genieo", "com.genieo.app");
        grantHome();
        return qobject_cast<NAAdwareRemovalPVC*>(showTool(Vexbane));
    }

    // The same scan without the page, for the counts the sheet must end with.
    static std::unique_ptr<AdwareScan> engineScan(const plist::Value& database, bool stopped) {
        auto scan = std::make_unique<AdwareScan>(database, std::weak_ptr<NACategoryObj>());
        scan->initargs();
        scan->setStop(stopped);
        scan->analysisAdware();
        return scan;
    }

    static QStringList findingsOf(const TreatArray& treats) {
        QStringList out;
        for (const auto& treat : treats)
            out << QString::fromStdString(treat->title() + ": " + treat->filePath());
        return out;
    }

    GuiTestEnv env_;
    std::unique_ptr<sample::FakeVolume> volume_;
    std::unique_ptr<AppDelegate> delegate_;
    std::unique_ptr<QSignalSpy> selections_;
    QTemporaryDir files_;

  private slots:
    void initTestCase() {
        env_.setUp();
        QVERIFY(files_.isValid());
    }

    void init() {
        volume_ = std::make_unique<sample::FakeVolume>("alice");
        Volume::setCurrent(volume_->volume());
        delegate_ = launch();
        selections_ = std::make_unique<QSignalSpy>(delegate_->cTable()->selectionModel(),
                                                   &QItemSelectionModel::selectionChanged);
    }

    void cleanup() {
        selections_.reset();
        delegate_.reset();  // each page waits for its scan
        GuiTestEnv::removeAllDefaults();
        setSignatureFile("");
        volume_.reset();
    }

    void launchListsTheToolsAndShowsTheCrashesStartPage() {
        QStringList titles;
        QList<qint64> types;
        for (const auto& c : delegate_->categorys()) {
            titles << QString::fromStdString(c->title());
            types << c->categoryType();
        }
        QCOMPARE(titles, QStringList({"System", "Crashes", "ARP Cache", "App Viewer",
                                      "Startup Items", "Security", "Firewall", "Vexbane"}));
        // "Security" keeps 0: the second 100 went to "System".
        QCOMPARE(types, QList<qint64>({100, 2, 1, 0, 6, 0, 4, 3}));

        NACategoryObj& crashes = category(Crashes);
        QVERIFY(delegate_->PVC(crashes) != nullptr);
        QCOMPARE(shownPage(), delegate_->PVC(crashes));
        QCOMPARE(delegate_->c_title_text()->text(), QStringLiteral("Crashes"));
        QVERIFY(delegate_->startOverBtn()->isHidden());
        QCOMPARE(delegate_->titlebarAcessoryView()->linePosition(), 2);
        QCOMPARE(delegate_->cTable()->selectedRow(), 1);
        // Selecting the row at start-up must not count as a second visit.
        QVERIFY(delegate_->HVC(crashes) == nullptr);
        QCOMPARE(AppDelegate::current(), delegate_.get());
    }

    void sectionRowsCannotBeSelected() {
        QWidget* before = shownPage();
        clickRow(delegate_->cTable(), System);
        clickRow(delegate_->cTable(), Security);
        QCOMPARE(selections_->count(), 0);
        QCOMPARE(delegate_->cTable()->selectedRow(), 1);
        QCOMPARE(shownPage(), before);

        // The same clicks do reach the list: a tool row is selected at once.
        clickRow(delegate_->cTable(), StartupItems);
        QCOMPARE(selections_->count(), 1);
        QCOMPARE(delegate_->c_title_text()->text(), QStringLiteral("Startup Items"));
    }

    void aSecondVisitShowsTheStartPage_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("results");
        QTest::newRow("Crashes") << int{Crashes} << true;
        QTest::newRow("Vexbane") << int{Vexbane} << true;
        QTest::newRow("ARP Cache") << int{ArpCache} << false;
        QTest::newRow("Firewall") << int{Firewall} << false;
    }

    // A second visit makes the tool's own result page, if it has one, but shows the start
    // page, which was taken out of the window in between and not destroyed.
    void aSecondVisitShowsTheStartPage() {
        QFETCH(int, row);
        QFETCH(bool, results);
        NACategoryObj& tool = category(Row(row));
        showTool(Row(row));
        NARootPVC* startPage = delegate_->PVC(tool);
        QVERIFY(startPage != nullptr);
        showTool(row == Crashes ? Vexbane : Crashes);
        QVERIFY(startPage->parentWidget() == nullptr);
        if (!results)
            tool.setDisplayState(1);  // no result state: a display state left at 1 changes nothing
        clickRow(delegate_->cTable(), row);
        QCOMPARE(delegate_->PVC(tool), startPage);
        QCOMPARE(shownPage(), startPage);
        QVERIFY(delegate_->startOverBtn()->isHidden());
        QCOMPARE(delegate_->HVC(tool) != nullptr, results);
        if (results)
            QCOMPARE(delegate_->HVC(tool)->categoryObj().get(), &tool);
    }

    void resultStateShowsTheResultPageAndStartOverNeedsASelectedRow() {
        NACategoryObj& crashes = category(Crashes);
        auto owned = std::make_unique<RecordingHVC>();
        RecordingHVC* result = owned.get();
        delegate_->setHVC(crashes, std::move(owned));
        QCOMPARE(result->categoryObj().get(), &crashes);
        crashes.setDisplayState(1);
        delegate_->displayViewController(crashes);
        QCOMPARE(shownPage(), result);
        QCOMPARE(result->refreshes, 1);
        QVERIFY(!delegate_->startOverBtn()->isHidden());
        QCOMPARE(delegate_->titlebarAcessoryView()->linePosition(), 1);

        delegate_->cTable()->clearSelection();
        QTest::mouseClick(delegate_->startOverBtn(), Qt::LeftButton);
        QVERIFY(result->startOvers.empty());

        clickRow(delegate_->cTable(), Crashes);
        QCOMPARE(result->refreshes, 2);
        QTest::mouseClick(delegate_->startOverBtn(), Qt::LeftButton);
        QCOMPARE(result->startOvers, std::vector<QObject*>{delegate_->startOverBtn()});
    }

    void closeButtonClosesTheWindowAndTheResetRemovesEveryDefault() {
        QSignalSpy closing(delegate_->window(), &NAMainWindow::windowWillClose);
        click(delegate_->windowContentviewSuperView()->findChild<NAWindowCloseButton*>());
        QCOMPARE(closing.count(), 1);
        QVERIFY(!delegate_->window()->isVisible());

        UserDefaults& defaults = UserDefaults::standardUserDefaults();
        defaults.setBool(true, "haveRunBefor");
        defaults.setObject(plist::Value(std::string("x")), "bd_file:///Users/alice/");
        delegate_->emptyUserDifo();
        QVERIFY(defaults.keys().empty());
        QVERIFY(UserDefaults(defaults.filePath()).keys().empty());
    }

    // Scan, check, uncheck, Remove, start over and scan again, all by clicks. An unchecked
    // report stays; starting over empties the result so the next scan does not add to it.
    void crashReportsFromScanToRemovalAndBack() {
        volume_->addAppBundle("/Applications", "CloudSync", "com.example.cloudsync");
        volume_->addAppBundle("/Applications", "Tune Player", "org.example.tuneplayer");
        volume_->addCrashReport("CloudSync_1.crash", "com.example.cloudsync");
        volume_->addCrashReport("CloudSync_2.crash", "com.example.cloudsync");
        volume_->addCrashReport("Tune Player_1.crash", "org.example.tuneplayer");
        volume_->addCrashReport("Gone_1.crash", "com.example.gone");
        grantHome();
        NACategoryObj& crashes = category(Crashes);
        crashes.groups().push_back(std::make_shared<NAGroupObj>("Earlier", ImageRef::none()));

        auto* page = qobject_cast<NAStartPage*>(delegate_->controllerView());
        QVERIFY(page != nullptr && page == delegate_->PVC(crashes));
        pressStart(page);
        QTRY_COMPARE(crashes.displayState(), std::int64_t{1});
        QCOMPARE(titlesOf(crashes.groups()), QStringList({"CloudSync[2]", "Tune Player[1]"}));
        QVERIFY(!crashes.isNeedRefresh());
        QVERIFY(showsResultPage(Crashes));
        QVERIFY(sheetParent(page->progressPanel()) == nullptr);

        auto* result = qobject_cast<NAGroupsHVC*>(delegate_->HVC(crashes));
        QVERIFY(result != nullptr);
        QCOMPARE(result->g_table()->rowCount(), 2);
        QCOMPARE(result->summaryLabel()->text(), QString());
        QVERIFY(!result->removeButton()->isEnabled());
        const int row = 0;
        clickRow(result->g_table(), row, 60);
        QCOMPARE(result->g_table()->selectedRow(), row);
        auto* groupCell = cellAt<NAGroupTableBaseCellView>(result->g_table(), row);
        QCOMPARE(groupCell->title_view->text(), QStringLiteral("CloudSync"));
        QCOMPARE(result->c_table()->rowCount(), 2);
        QCOMPARE(cellAt<NAFilelistCellBaseView>(result->c_table(), 0)->name_text->text(),
                 QStringLiteral("CloudSync_1.crash"));
        click(groupCell->checkBtn);
        QCOMPARE(tree(crashes), QStringLiteral("CloudSync[1]{[1] [1]} Tune Player[0]{[0]}"));
        click(cellAt<NAFilelistCellBaseView>(result->c_table(), 1)->checkBtn);
        QCOMPARE(tree(crashes), QStringLiteral("CloudSync[-1]{[1] [0]} Tune Player[0]{[0]}"));
        QCOMPARE(cellAt<NAGroupTableBaseCellView>(result->g_table(), row)->checkBtn->state(), -1);
        QCOMPARE(result->c_table()->selectedRow(), 1);
        const NAFileobjArray reports = result->currentGroup()->contents();
        QCOMPARE(result->summaryLabel()->text(),
                 QString::fromStdString("1 files | " + recal_size(reports[0]->fileSize())));

        click(result->removeButton());
        QVERIFY(!std::filesystem::exists(volume_->host(reports[0]->filePath())));
        QVERIFY(std::filesystem::exists(volume_->host(reports[1]->filePath())));
        QCOMPARE(tree(crashes), QStringLiteral("CloudSync[-1]{[0]} Tune Player[0]{[0]}"));
        QCOMPARE(result->c_table()->rowCount(), 1);
        QCOMPARE(result->summaryLabel()->text(), QString());

        click(delegate_->startOverBtn());
        QCOMPARE(crashes.displayState(), std::int64_t{0});
        QVERIFY(crashes.groups().empty());
        QCOMPARE(crashes.infromation(), std::string());
        QCOMPARE(result->g_table()->rowCount(), 0);
        QCOMPARE(result->c_table()->rowCount(), 0);
        QVERIFY(delegate_->controllerView() == page);
        pressStart(page);
        QTRY_COMPARE(crashes.displayState(), std::int64_t{1});
        QCOMPARE(titlesOf(crashes.groups()), QStringList({"CloudSync[1]", "Tune Player[1]"}));
        QVERIFY(showsResultPage(Crashes));
    }

    // Jobs are grouped by the application they name; starting over empties the list.
    void startupItemsFromScanToTheListAndBack() {
        volume_->addAppBundle("/Applications", "CloudSync", "com.example.cloudsync");
        volume_->addLaunchJob(volume_->home() + "/Library/LaunchAgents",
                              "com.example.cloudsync.plist", "com.example.cloudsync");
        volume_->addLaunchJob("/Library/LaunchAgents", "com.example.cloudsync.helper.plist",
                              "com.example.cloudsync");
        volume_->addLaunchJob("/Library/LaunchDaemons", "org.example.tool.plist",
                              "org.example.tool");  // names no application
        grantHome();
        NACategoryObj& startup = category(StartupItems);

        NAStartPage* page = showTool(StartupItems);
        for (int scan = 0; scan < 2; ++scan) {
            pressStart(page);
            QTRY_COMPARE(startup.displayState(), std::int64_t{1});
            QCOMPARE(titlesOf(startup.groups()), QStringList({"CloudSync[1]", "CloudSync[1]"}));
            QVERIFY(showsResultPage(StartupItems));
            click(delegate_->startOverBtn());
            QVERIFY(delegate_->controllerView() == page);
        }
    }

    void applicationsAreListedWithoutAskingForAFolder() {
        volume_->addAppBundle("/Applications", "CloudSync", "com.example.cloudsync");
        volume_->addAppBundle("/Applications/Media Tools", "Tune Player", "org.example.tune");
        sample::AppSpec broken;
        broken.name = "Half Installed";
        broken.omitBundleName = true;
        volume_->addApp(broken);
        NACategoryObj& apps = category(AppViewer);
        apps.groups().push_back(std::make_shared<NAGroupObj>("Earlier", ImageRef::none()));

        NAStartPage* page = showTool(AppViewer);
        pressStart(page);

        QTRY_COMPARE(apps.displayState(), std::int64_t{1});
        QStringList titles;
        for (const auto& group : apps.groups())
            titles << QString::fromStdString(group->title());
        QCOMPARE(titles, QStringList({"CloudSync", "Tune Player"}));
        QVERIFY(showsResultPage(AppViewer));
        QVERIFY(page->userOpenpanel() == nullptr);
    }

    void refusedFolderAccessChangesNothing_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("groupsLeft");
        // Crashes empties its groups before it asks; the others leave them alone.
        QTest::newRow("Crashes") << int{Crashes} << 0;
        QTest::newRow("Startup Items") << int{StartupItems} << 1;
        QTest::newRow("Vexbane") << int{Vexbane} << 1;
    }

    void refusedFolderAccessChangesNothing() {
        QFETCH(int, row);
        QFETCH(int, groupsLeft);
        const Row tool = static_cast<Row>(row);
        NACategoryObj& cat = category(tool);
        NAStartPage* page =
            tool == Crashes ? qobject_cast<NAStartPage*>(delegate_->PVC(cat)) : showTool(tool);
        cat.groups().push_back(std::make_shared<NAGroupObj>("Earlier", ImageRef::none()));
        pressStart(page);
        QFileDialog* chooser = page->userOpenpanel();
        QVERIFY(chooser != nullptr);
        QVERIFY(chooser->isVisible());
        chooser->reject();
        QCoreApplication::processEvents();

        QCOMPARE(cat.displayState(), std::int64_t{0});
        QCOMPARE(static_cast<int>(cat.groups().size()), groupsLeft);
        QVERIFY(delegate_->controllerView() == page);
        QVERIFY(!page->isSmartScaing());
        QVERIFY(page->progressPanel() == nullptr);
        if (auto* adware = qobject_cast<NAAdwareRemovalPVC*>(page))
            QVERIFY(adware->progressPanel2vc() == nullptr);
    }

    void adwareScanCountsEveryVisitAndGroupsFindingsByThreat() {
        const plist::Value database = useDatabase();
        // Plenty of visits: every job file is looked at twice.
        for (int i = 0; i < 300; ++i)
            volume_->addLaunchJob("/Library/LaunchAgents",
                                  "org.example.job" + std::to_string(i) + ".plist",
                                  "org.example.job" + std::to_string(i));
        auto* page = showAdware();
        QVERIFY(page != nullptr);
        const auto expected = engineScan(database, false);
        QVERIFY(expected->scanedFiles() > 600);
        QVERIFY(!page->timer()->isActive());
        MetaCallCounter posted;
        page->installEventFilter(&posted);
        LogCapture log;
        pressStart(page);
        NAProgressPanel2VC* sheet = page->progressPanel2vc();
        QVERIFY(sheet != nullptr);
        QVERIFY(sheetParent(sheet) != nullptr);
        QVERIFY(page->timer()->isActive());

        // Let the whole scan run while the GUI thread takes no events: its visits must not
        // pile up as posted calls.
        NAStartPage::scanPool().waitForDone();
        NACategoryObj& adware = category(Vexbane);
        QTRY_COMPARE(adware.displayState(), std::int64_t{1});
        QVERIFY2(posted.count <= 3, qPrintable(QString::number(posted.count)));

        QCOMPARE(titlesOf(adware.groups()), QStringList({"Genieo[2]", "VSearch[1]"}));
        QCOMPARE(findingsOf(page->treats()), findingsOf(expected->treats()));
        QCOMPARE(sheet->scaned_files_count(),
                 QStringLiteral("Scanned Files: %1").arg(expected->scanedFiles()));
        QCOMPARE(sheet->threats_files_count(), QStringLiteral("Threat Found: 3"));
        QCOMPARE(sheet->scan_path(), QString::fromStdString(expected->scanningFile()));
        QCOMPARE(page->scanedFiles(), expected->scanedFiles());
        QVERIFY(sheetParent(sheet) == nullptr);
        QVERIFY(!page->timer()->isActive());
        QVERIFY(showsResultPage(Vexbane));
        QVERIFY(log.lines() == std::vector<std::string>{"adware==3"});
    }

    void stopOrDoneEndsTheAdwareScanAtItsNextTest_data() {
        QTest::addColumn<bool>("done");
        QTest::newRow("Stop") << false;
        QTest::newRow("Done, then another tool") << true;
    }

    // Stop ends the scan at its next test and leaves the sheet up. Done also closes the sheet;
    // the result page then follows only once the scan has returned, and waits for the user if
    // they have moved on. Either way what was found so far is kept.
    void stopOrDoneEndsTheAdwareScanAtItsNextTest() {
        QFETCH(bool, done);
        const plist::Value database = useDatabase();
        auto* page = showAdware();
        QVERIFY(page != nullptr);
        NACategoryObj& adware = category(Vexbane);

        // Hold the scan in the pool's queue until the button has been pressed.
        ScanPoolHold hold;
        pressStart(page);
        NAProgressPanel2VC* sheet = page->progressPanel2vc();
        QVERIFY(sheet != nullptr);
        click(done ? sheet->doneButton : sheet->stopButton);
        QVERIFY(page->stop);
        QCoreApplication::processEvents();
        QCOMPARE(sheetParent(sheet) != nullptr, !done);
        NAStartPage* crashes = nullptr;
        if (done) {
            QCOMPARE(adware.displayState(), std::int64_t{0});
            QVERIFY(page->isSmartScaing());
            crashes = showTool(Crashes);
            QVERIFY(crashes != nullptr);
        }
        hold.release();
        QTRY_COMPARE(adware.displayState(), std::int64_t{1});
        hold.finish();

        // The scan stopped at its first test: only the first launch agent was looked at.
        const auto stopped = engineScan(database, true);
        QCOMPARE(findingsOf(page->treats()), findingsOf(stopped->treats()));
        QCOMPARE(titlesOf(adware.groups()), QStringList({"Genieo[1]"}));
        QCOMPARE(sheet->scaned_files_count(),
                 QStringLiteral("Scanned Files: %1").arg(stopped->scanedFiles()));
        QVERIFY(!page->isSmartScaing());
        QVERIFY(!page->timer()->isActive());
        if (done) {
            QTest::qWait(50);
            QCOMPARE(delegate_->controllerView(), crashes);
            QVERIFY(adware.isNeedRefresh());
            showTool(Vexbane);
            QVERIFY(!adware.isNeedRefresh());
        }
        QVERIFY(showsResultPage(Vexbane));
        auto* result = qobject_cast<NAGroupsHVC*>(delegate_->HVC(adware));
        QVERIFY(result != nullptr);
        QCOMPARE(result->g_table()->rowCount(), 1);
    }

    void adwarePageWorksWithoutItsDatabaseAndShowsTheElapsedTime() {
        const std::string file = files_.filePath(QStringLiteral("broken.cx")).toStdString();
        std::ofstream(file) << "not a database";
        setSignatureFile(file);
        volume_->addLaunchJob(volume_->home() + "/Library/LaunchAgents", "com.genieo.engine.plist",
                              "com.genieo.engine");
        grantHome();

        LogCapture log;
        auto* page = qobject_cast<NAAdwareRemovalPVC*>(showTool(Vexbane));
        QVERIFY(page != nullptr);
        QVERIFY(log.lines() == std::vector<std::string>{
                                   "signature database not loaded: error-code-1000: has bug"});
        QVERIFY(page->adwares().asArray() && page->adwares().asArray()->empty());
        QCOMPARE(page->timeelapsed(), QStringLiteral("00:10:00"));

        pressStart(page);
        NACategoryObj& adware = category(Vexbane);
        QTRY_COMPARE(adware.displayState(), std::int64_t{1});
        QVERIFY(adware.groups().empty());
        QVERIFY(page->scanedFiles() > 0);

        page->setStartScanDate(NAAdwareRemovalPVC::Clock::now() -
                               std::chrono::milliseconds(3725900));
        page->update();
        QCOMPARE(page->timeelapsed(), QStringLiteral("Time Elapsed: 01:02:05"));
        QCOMPARE(page->progressPanel2vc()->time_used(), QStringLiteral("Time Elapsed: 01:02:05"));
    }
};

QTEST_MAIN(ShellTest)
#include "shell_test.moc"
