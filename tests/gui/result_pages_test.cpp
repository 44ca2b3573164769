// The result pages driven through their widgets: check boxes, Remove and start over on the
// Crashes result of a built volume, the startup page's list-only Remove, the adware removal
// with the browsers' lists and its failures, the display filter, the empty states and the
// App Viewer.
#include <QSignalSpy>
#include <QTest>
#include <filesystem>
#include <memory>
#include <string>

#include "adware/na_groups_hvc.h"
#include "app/app_delegate.h"
#include "appviewer/app_information.h"
#include "appviewer/na_app_view_hvc.h"
#include "crashes/crash_scan.h"
#include "gui_test_env.h"
#include "model/tool_records.h"
#include "platform/syslog.h"
#include "sample/fake_volume.h"
#include "startup/na_start_items_hvc.h"
#include "tools/na_tools.h"
#include "ui/na_result_cell_views.h"
#include "ui/na_sheet.h"

using namespace sysmend;

namespace {

QString tree(const NACategoryObj& category) {
    QStringList groups;
    for (const auto& g : category.groups())
        groups << QString::fromStdString(toString(*g));
    return groups.join(QLatin1Char(' '));
}

using test::cellAt;
using test::click;
using test::showPage;

void clickRow(NATableView* table, int row) {
    const QRect rect = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, rect.center() + QPoint(60, 0));
}

std::shared_ptr<NATreatObj> finding(const std::string& volumePath, const std::string& type = "") {
    auto treat = std::make_shared<NATreatObj>(volumePath, true);
    treat->setFileType(type);
    treat->setIsChecked(1);
    return treat;
}

std::shared_ptr<NAGroupObj> checkedGroup(const std::string& title, const NAFileobjArray& items) {
    auto group = std::make_shared<NAGroupObj>(title, ImageRef::named("malware_icon"));
    group->addFileObjs(items);
    group->setIsChecked(1);
    return group;
}

}  // namespace

class ResultPagesTest : public QObject {
    Q_OBJECT

  private:
    test::GuiTestEnv env_;

  private slots:
    void initTestCase() { env_.setUp(); }

    // Scan, check, uncheck, Remove and start over, all through the shell and real clicks.
    void crashReportsAreRemovedAsCheckedAndStartOverEmptiesTheResult() {
        sample::FakeVolume volume;
        ScopedVolume current(volume.volume());
        volume.addAppBundle("/Applications", "Crashy", "com.example.crashy");
        std::vector<std::string> reports;
        for (const char* name : {"Crashy_1.crash", "Crashy_2.crash", "Crashy_3.crash"})
            reports.push_back(volume.addCrashReport(name, "com.example.crashy"));

        AppDelegate delegate;
        delegate.applicationDidFinishLaunching();
        delegate.window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(delegate.window()));
        const std::shared_ptr<NACategoryObj> crashes = delegate.categorys()[1];
        scanCrashedApplications(crashes);
        crashes->setIsNeedRefresh(true);
        crashes->setDisplayState(1);
        delegate.displayViewController(*crashes);
        crashes->setIsNeedRefresh(false);

        auto* page = qobject_cast<NAGroupsHVC*>(delegate.HVC(*crashes));
        QVERIFY(page != nullptr);
        QCOMPARE(delegate.controllerView(), page);
        QCOMPARE(page->g_table()->rowCount(), 1);
        QCOMPARE(page->g_table()->selectedRow(), 0);
        QCOMPARE(page->c_table()->rowCount(), 3);
        QCOMPARE(page->summaryLabel()->text(), QString());
        QVERIFY(!page->removeButton()->isEnabled());

        auto* groupCell = cellAt<NAGroupTableBaseCellView>(page->g_table(), 0);
        QVERIFY(groupCell != nullptr);
        QCOMPARE(groupCell->title_view->text(), QStringLiteral("Crashy"));
        QCOMPARE(cellAt<NAFilelistCellBaseView>(page->c_table(), 0)->name_text->text(),
                 QStringLiteral("Crashy_1.crash"));
        click(groupCell->checkBtn);
        const NAFileobjArray& items = crashes->groups()[0]->contents();
        QCOMPARE(tree(*crashes), QStringLiteral("Crashy[1]{[1] [1] [1]}"));
        QCOMPARE(page->summaryLabel()->text(),
                 QString::fromStdString("3 files | " +
                                        recal_size(items[0]->fileSize() + items[1]->fileSize() +
                                                   items[2]->fileSize())));
        QCOMPARE(cellAt<NAFilelistCellBaseView>(page->c_table(), 1)->checkBtn->state(), 1);

        // Keep the second report.
        click(cellAt<NAFilelistCellBaseView>(page->c_table(), 1)->checkBtn);
        QCOMPARE(tree(*crashes), QStringLiteral("Crashy[-1]{[1] [0] [1]}"));
        QCOMPARE(page->summaryLabel()->text(),
                 QString::fromStdString("2 files | " +
                                        recal_size(items[0]->fileSize() + items[2]->fileSize())));
        QCOMPARE(page->c_table()->selectedRow(), 1);
        QCOMPARE(cellAt<NAGroupTableBaseCellView>(page->g_table(), 0)->checkBtn->state(), -1);
        QCOMPARE(page->removeButton()->text(), QStringLiteral("Remove"));

        click(page->removeButton());
        QVERIFY(page->progressPanel() != nullptr);
        QVERIFY(sheetParent(page->progressPanel()) == nullptr);
        QVERIFY(!std::filesystem::exists(volume.host(reports[0])));
        QVERIFY(std::filesystem::exists(volume.host(reports[1])));
        QVERIFY(!std::filesystem::exists(volume.host(reports[2])));
        QCOMPARE(tree(*crashes), QStringLiteral("Crashy[-1]{[0]}"));
        QCOMPARE(crashes->groups()[0]->contents()[0]->filePath(), reports[1]);
        QCOMPARE(page->c_table()->rowCount(), 1);
        QCOMPARE(page->summaryLabel()->text(), QString());

        click(delegate.startOverBtn());
        QCOMPARE(crashes->displayState(), 0);
        QVERIFY(crashes->groups().empty());
        QCOMPARE(crashes->infromation(), std::string());
        QCOMPARE(delegate.controllerView(), delegate.PVC(*crashes));
        QCOMPARE(page->g_table()->rowCount(), 0);
        QCOMPARE(page->c_table()->rowCount(), 0);
    }

    void startupRemoveOnlyTakesCheckedWebItemsOffTheList() {
        const std::string job = "/Library/LaunchAgents/com.example.agent.plist";
        QVERIFY(QDir().mkpath(env_.hostPath(QStringLiteral("/Library/LaunchAgents"))));
        QFile file(env_.hostPath(QString::fromStdString(job)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();

        auto category = std::make_shared<NACategoryObj>("Startup Items", ImageRef::none());
        category->setCategoryType(6);
        auto item = std::make_shared<NAStartupItemObj>(job, false);
        item->setItem_id("com.example.agent");
        item->setLoaded_using(job);
        item->setFull_path("/Applications/Example.app");
        auto startup = std::make_shared<NAGroupObj>("Example", ImageRef::none());
        startup->addFileObj(item);
        auto a = std::make_shared<NAFileobj>();
        a->setFileName("a");
        auto b = std::make_shared<NAFileobj>();
        b->setFileName("b");
        auto web = std::make_shared<NAWebGroup>("Web", ImageRef::none());
        web->setBrowserType(1);
        web->addFileObjs({a, b});
        category->groups() = {startup, web};
        auto page = showPage<NAStartItemsHVC>(category);

        auto* jobCell = cellAt<NAStartupItemInformationCellBaseView>(page->c_table(), 0);
        QVERIFY(jobCell != nullptr);
        QCOMPARE(jobCell->itemID_text->text(), QStringLiteral("com.example.agent"));
        QVERIFY(jobCell->representObj() == item);

        click(cellAt<NAGroupTableBaseCellView>(page->g_table(), 0)->checkBtn);
        a->setIsChecked(1);
        page->updateCheckState();
        QCOMPARE(tree(*category),
                 QStringLiteral("Example[1]{com.example.agent[1]} Web[-1]{a[1] b[0]}"));
        QCOMPARE(page->summaryLabel()->text(),
                 QString::fromStdString("2 files | " + recal_size(item->fileSize())));

        click(page->removeButton());
        QVERIFY(page->progressPanel() != nullptr);
        QVERIFY(sheetParent(page->progressPanel()) == nullptr);
        QVERIFY(QFile::exists(env_.hostPath(QString::fromStdString(job))));
        QCOMPARE(tree(*category), QStringLiteral("Example[1]{com.example.agent[1]} Web[0]{b[0]}"));
        QCOMPARE(page->g_table()->rowCount(), 2);

        // Startup groups are not web groups: another Remove shows the sheet and changes nothing.
        QSignalSpy ended(page->progressPanel(), &QDialog::finished);
        click(page->removeButton());
        QCOMPARE(ended.count(), 1);
        QCOMPARE(tree(*category), QStringLiteral("Example[1]{com.example.agent[1]} Web[0]{b[0]}"));

        // Nothing checked any more: Remove does nothing, not even the sheet.
        click(cellAt<NAGroupTableBaseCellView>(page->g_table(), 0)->checkBtn);
        QVERIFY(!page->removeButton()->isEnabled());
        page->removeAction(nullptr);
        QCOMPARE(ended.count(), 1);
    }

    void adwareRemovalTakesTheBrowserListsAndReportsFailures() {
        const std::string safari = "/Users/alice/Library/Safari/Extensions";
        const std::string profile =
            "/Users/alice/Library/Application Support/Firefox/Profiles/p.default";
        for (const std::string& folder : {safari, profile + "/extensions"})
            QVERIFY(QDir().mkpath(env_.hostPath(QString::fromStdString(folder))));
        for (const std::string& path :
             {safari + "/Bad.safariextz", safari + "/Extensions.plist",
              profile + "/extensions/bad@example.xpi", profile + "/extensions.json",
              std::string("/Users/alice/keep.txt")}) {
            QFile file(env_.hostPath(QString::fromStdString(path)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("x");
        }
        auto category = std::make_shared<NACategoryObj>("Vexbane", ImageRef::none());
        category->setCategoryType(3);
        auto gone = finding("/Users/alice/Library/LaunchAgents/gone.plist");
        auto keep = finding("/Users/alice/keep.txt");
        category->groups() = {
            checkedGroup("Threat",
                         {finding(safari + "/Bad.safariextz", "com.apple.safari.extension"),
                          finding(profile + "/extensions/bad@example.xpi", "xpi"), gone}),
            checkedGroup("Other", {keep})};
        keep->setIsChecked(0);
        auto page = showPage<NAGroupsHVC>(category);
        QCOMPARE(cellAt<NAGroupTableBaseCellView>(page->g_table(), 1)->checkBtn->state(), 0);

        LogCapture log;
        click(page->removeButton());
        QCOMPARE(log.lines(), std::vector<std::string>{"fire fox"});
        for (const std::string& path :
             {safari + "/Bad.safariextz", safari + "/Extensions.plist",
              profile + "/extensions/bad@example.xpi", profile + "/extensions.json"})
            QVERIFY2(!QFile::exists(env_.hostPath(QString::fromStdString(path))), path.c_str());
        QVERIFY(QFile::exists(env_.hostPath(QStringLiteral("/Users/alice/keep.txt"))));
        QCOMPARE(tree(*category), QStringLiteral("Other[0]{keep[0]}"));
        QCOMPARE(page->g_table()->rowCount(), 1);
        QVERIFY(page->currentGroup() == category->groups()[0]);

        // The finding that could not be removed is on the leftovers sheet, which shares the
        // page's list.
        QVERIFY(page->removeFaildFiles() == NAFileobjArray{gone});
        NAShowLeftOverSheet* sheet = page->showloftoversheet();
        QVERIFY(sheet != nullptr);
        QVERIFY(sheetParent(sheet) != nullptr);
        QCOMPARE(sheet->leftOverFiles(), &page->removeFaildFiles());
        sheet->doneActiobn();
        QVERIFY(page->removeFaildFiles().empty());
    }

    // A finding whose box the user cleared stays on disk and in its group after Remove.
    void anUncheckedFindingIsKept() {
        const std::string agents = "/Users/alice/Library/LaunchAgents/";
        QVERIFY(QDir().mkpath(env_.hostPath(QString::fromStdString(agents))));
        for (const char* name : {"bad.plist", "spared.plist"}) {
            QFile file(env_.hostPath(QString::fromStdString(agents + name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        auto category = std::make_shared<NACategoryObj>("Vexbane", ImageRef::none());
        category->setCategoryType(3);
        category->groups() = {checkedGroup(
            "Threat", {finding(agents + "bad.plist"), finding(agents + "spared.plist")})};
        auto page = showPage<NAGroupsHVC>(category);

        click(cellAt<NAFilelistCellBaseView>(page->c_table(), 1)->checkBtn);
        QCOMPARE(tree(*category), QStringLiteral("Threat[-1]{bad[1] spared[0]}"));
        click(page->removeButton());
        QVERIFY(!QFile::exists(env_.hostPath(QString::fromStdString(agents + "bad.plist"))));
        QVERIFY(QFile::exists(env_.hostPath(QString::fromStdString(agents + "spared.plist"))));
        QCOMPARE(tree(*category), QStringLiteral("Threat[0]{spared[0]}"));
        QVERIFY(page->removeFaildFiles().empty());
    }

    void theDisplayFilterParksAllButMaliciousCookies() {
        auto cookie = std::make_shared<NABrowserObj>();
        cookie->setDomain("tracker.example");
        cookie->setIsMaliciousCookie(true);
        auto plain = finding("/Users/alice/plain");
        auto category = std::make_shared<NACategoryObj>("Vexbane", ImageRef::none());
        category->setCategoryType(3);
        category->groups() = {checkedGroup("Mixed", {plain, cookie})};
        auto page = showPage<NAGroupsHVC>(category);
        QCOMPARE(page->c_table()->rowCount(), 2);
        const QString summary = page->summaryLabel()->text();

        page->setDisplayIndex(1);
        QCOMPARE(page->displayIndex(), 1);
        QCOMPARE(tree(*category), QStringLiteral("Mixed[1]{tracker.example[1] cache{plain[1]}}"));
        QCOMPARE(page->c_table()->rowCount(), 1);
        // Hidden items still count.
        page->updateCheckState();
        QCOMPARE(page->summaryLabel()->text(), summary);

        page->setDisplayIndex(0);
        QCOMPARE(tree(*category), QStringLiteral("Mixed[1]{tracker.example[1] plain[1]}"));
        QCOMPARE(page->c_table()->rowCount(), 2);
    }

    void anEmptyResultShowsNoItems() {
        auto category = std::make_shared<NACategoryObj>("Startup Items", ImageRef::none());
        auto page = showPage<NAStartItemsHVC>(category);
        QVERIFY(page->c_view()->hiddenSubviews());
        QVERIFY(page->g_table()->isHidden());
        QCOMPARE(page->summaryLabel()->text(), QString());
        QCOMPARE(page->removeButton()->text(), QStringLiteral("Remove"));
        QCOMPARE(category->btnTitle(), std::string("Remove"));
        QVERIFY(page->viewForTableColumn(page->g_table(), 0) == nullptr);

        category->groups() = {checkedGroup("One", {finding("/Users/alice/one")})};
        category->setIsNeedRefresh(true);
        page->needRefreshUI();
        QVERIFY(!page->c_view()->hiddenSubviews());
        QVERIFY(page->g_table()->isVisible());
        QVERIFY(page->viewForTableColumn(page->g_table(), 1) == nullptr);
        QVERIFY(page->viewForTableColumn(page->c_table(), 1) == nullptr);
    }

    // Made on a visit while a scan may still be filling the groups: nothing is read until the
    // hand-over.
    void aPageMadeBeforeTheHandOverReadsNoGroups() {
        auto category = std::make_shared<NACategoryObj>("Vexbane", ImageRef::none());
        category->groups() = {checkedGroup("Genieo", {finding("/Users/alice/genieo")})};
        auto page = std::make_unique<NAGroupsHVC>();
        page->setCategoryObj(category);
        page->loadView();
        page->resize(720, 540);
        page->show();
        QCOMPARE(page->g_table()->rowCount(), 0);
        QVERIFY(!page->removeButton()->isEnabled());

        category->setIsNeedRefresh(true);
        page->needRefreshUI();
        QCOMPARE(page->g_table()->rowCount(), 1);
        QCOMPARE(page->c_table()->rowCount(), 1);
        QVERIFY(page->removeButton()->isEnabled());
    }

    void theAppViewerShowsTheSelectedApplicationAndRemovesNothing() {
        auto category = std::make_shared<NACategoryObj>("App Viewer", ImageRef::none());
        for (int app = 0; app < 200; ++app) {
            auto group = std::make_shared<NAGroupObj>("App " + std::to_string(app),
                                                      ImageRef::fileTypeIcon("app"));
            for (int row = 0; row < 20; ++row) {
                group->addFileObj(NAAppSingleInformation::initWithKeyAndValue(
                    "Key " + std::to_string(row), "App " + std::to_string(app)));
            }
            group->setIsChecked(1);
            category->groups().push_back(group);
        }
        category->groups().push_back(std::make_shared<NAGroupObj>("Bare", ImageRef::none()));
        category->groups().back()->setIsChecked(1);
        auto page = showPage<NAAppViewHVC>(category);
        QVERIFY(page->contents_view_superview()->isVisible());

        clickRow(page->g_table(), 5);
        QCOMPARE(page->g_table()->selectedRow(), 5);
        QCOMPARE(page->c_table()->rowCount(), 20);
        auto* row = cellAt<NALabelKeyAndValueCellBaseView>(page->c_table(), 3);
        QVERIFY(row != nullptr);
        QCOMPARE(row->key_text->text(), QStringLiteral("Key 3"));
        QCOMPARE(row->value_text->text(), QStringLiteral("App 5"));

        // An application without rows has nothing to check.
        page->g_table()->scrollToBottom();
        auto* bare = cellAt<NAGroupTableBaseCellView>(page->g_table(), 200);
        QVERIFY(bare != nullptr);
        QVERIFY(!bare->checkBtn->isEnabled());
        QCOMPARE(bare->checkBtn->state(), 0);

        const QString before = tree(*category);
        click(page->removeButton());
        QSignalSpy ended(page->progressPanel(), &QDialog::finished);
        page->removeAction(nullptr);
        QCOMPARE(ended.count(), 1);
        QCOMPARE(tree(*category), before);

        auto empty = std::make_shared<NACategoryObj>("App Viewer", ImageRef::none());
        auto emptyPage = showPage<NAAppViewHVC>(empty);
        QVERIFY(emptyPage->contents_view_superview()->isHidden());
        QVERIFY(emptyPage->g_table()->isVisible());
    }
};

QTEST_MAIN(ResultPagesTest)
#include "result_pages_test.moc"
