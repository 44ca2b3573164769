// The result pages driven through their widgets: the startup page's list-only Remove, the
// adware removal with the browsers' lists and its failures, the display filter, the empty
// states and the App Viewer; and under them the tables' models, whose marks set through either
// model reach the engine and come back through the other, and the table that keeps cell views
// for the rows in view only.
#include <QAbstractItemModelTester>
#include <QScrollBar>
#include <QStringListModel>
#include <set>

#include "adware/na_groups_hvc.h"
#include "appviewer/app_information.h"
#include "appviewer/na_app_view_hvc.h"
#include "gui_test_env.h"
#include "model/tool_records.h"
#include "startup/na_start_items_hvc.h"
#include "tools/na_tools.h"
#include "ui/na_group_models.h"
#include "ui/na_outline_view.h"
#include "ui/na_result_cell_views.h"
#include "ui/na_table_view.h"

using namespace sysmend;
using namespace sysmend::test;

namespace {

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

// A tool's result of the given type (0: none) and groups.
std::shared_ptr<NACategoryObj> toolResult(const std::string& title, std::int64_t type,
                                          NAGroupObjArray groups = {}) {
    auto category = std::make_shared<NACategoryObj>(title, ImageRef::none());
    category->setCategoryType(type);
    category->groups() = std::move(groups);
    return category;
}

std::shared_ptr<NAFileobj> item(const std::string& name, std::int64_t mark = 1) {
    auto file = std::make_shared<NAFileobj>();
    file->setFileName(name);
    file->setFilePath("/Users/alice/" + name);
    file->setFileSize(100);
    file->setIsChecked(mark);
    return file;
}

// Makes a label per row and counts what the table asks.
class LabelCells : public NATableViewDelegate {
  public:
    explicit LabelCells(const QAbstractItemModel& model) : model_(model) {}

    QWidget* viewForTableColumn(NATableView*, int row) override {
        if (row >= model_.rowCount())
            return nullptr;
        ++made;
        return new QLabel(QString::number(row));
    }
    void tableViewSelectionDidChange(NATableView* table) override {
        selections.push_back(table->selectedRow());
    }

    int made = 0;
    std::vector<int> selections;

  private:
    const QAbstractItemModel& model_;
};

// A flat model of a given number of rows, for the table's own behaviour; setRows() resets it.
struct CountModel : QStringListModel {
    explicit CountModel(int rows) { setRows(rows); }
    void setRows(int rows) { setStringList(QStringList(rows, QString())); }
};

// Both models over a category, the contents showing its first group, each watched by a model
// tester for as long as they live.
struct TestedModels {
    explicit TestedModels(const std::shared_ptr<NACategoryObj>& category) {
        groups.setCategoryObj(category);
        contents.setGroup(groups.groupAt(0));
    }

    NAGroupsModel groups;
    NAGroupContentsModel contents;
    QAbstractItemModelTester groupsTester{&groups,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest};
    QAbstractItemModelTester contentsTester{&contents,
                                            QAbstractItemModelTester::FailureReportingMode::QtTest};
};

std::set<int> rowsWithCells(const NATableView& table) {
    std::set<int> rows;
    for (int row = 0; row < table.rowCount(); ++row) {
        if (table.cellWidget(row))
            rows.insert(row);
    }
    return rows;
}

}  // namespace

class ResultPagesTest : public QObject {
    Q_OBJECT

  private:
    GuiTestEnv env_;

  private slots:
    void initTestCase() { env_.setUp(); }

    void startupRemoveOnlyTakesCheckedWebItemsOffTheList() {
        const std::string job = "/Library/LaunchAgents/com.example.agent.plist";
        env_.writeFile(job);

        auto category = toolResult("Startup Items", 6);
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
        QVERIFY(env_.exists(job));
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
        for (const std::string& path :
             {safari + "/Bad.safariextz", safari + "/Extensions.plist",
              profile + "/extensions/bad@example.xpi", profile + "/extensions.json",
              std::string("/Users/alice/keep.txt"), std::string("/Users/alice/also.txt")})
            env_.writeFile(path, "x");
        auto category = toolResult("Vexbane", 3);
        auto gone = finding("/Users/alice/Library/LaunchAgents/gone.plist");
        auto keep = finding("/Users/alice/keep.txt");
        category->groups() = {
            checkedGroup("Threat",
                         {finding(safari + "/Bad.safariextz", "com.apple.safari.extension"),
                          finding(profile + "/extensions/bad@example.xpi", "xpi"), gone}),
            checkedGroup("Other", {finding("/Users/alice/also.txt"), keep})};
        keep->setIsChecked(0);  // the user's choice: kept, and its group left mixed
        auto page = showPage<NAGroupsHVC>(category);
        QCOMPARE(cellAt<NAGroupTableBaseCellView>(page->g_table(), 1)->checkBtn->state(), -1);

        LogCapture log;
        click(page->removeButton());
        QCOMPARE(log.lines(), std::vector<std::string>{"fire fox"});
        for (const std::string& path :
             {safari + "/Bad.safariextz", safari + "/Extensions.plist",
              profile + "/extensions/bad@example.xpi", profile + "/extensions.json",
              std::string("/Users/alice/also.txt")})
            QVERIFY2(!env_.exists(path), path.c_str());
        QVERIFY(env_.exists("/Users/alice/keep.txt"));
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

    void theDisplayFilterParksAllButMaliciousCookies() {
        auto cookie = std::make_shared<NABrowserObj>();
        cookie->setDomain("tracker.example");
        cookie->setIsMaliciousCookie(true);
        auto plain = finding("/Users/alice/plain");
        auto category = toolResult("Vexbane", 3, {checkedGroup("Mixed", {plain, cookie})});
        auto page = showPage<NAGroupsHVC>(category);
        QCOMPARE(page->c_table()->rowCount(), 2);
        const QString summary = page->summaryLabel()->text();

        page->setDisplayIndex(1);
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
        auto category = toolResult("Startup Items", 0);
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
        auto category =
            toolResult("Vexbane", 0, {checkedGroup("Genieo", {finding("/Users/alice/genieo")})});
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
        auto category = toolResult("App Viewer", 0);
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

        clickRow(page->g_table(), 5, 60);
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

        auto empty = toolResult("App Viewer", 0);
        auto emptyPage = showPage<NAAppViewHVC>(empty);
        QVERIFY(emptyPage->contents_view_superview()->isHidden());
        QVERIFY(emptyPage->g_table()->isVisible());
    }
    void marksGoThroughTheEngineAndBackThroughTheOtherModel() {
        auto category = std::make_shared<NACategoryObj>();
        auto empty = std::make_shared<NAGroupObj>("Empty", ImageRef::none());
        empty->setIsChecked(1);
        category->groups() = {checkedGroup("A", {item("a1"), item("a2"), item("a3")}),
                              checkedGroup("B", {item("b1")}), empty};
        TestedModels models(category);
        NAGroupsModel& groups = models.groups;
        NAGroupContentsModel& contents = models.contents;
        QCOMPARE(groups.index(1, 0).data().toString(), QStringLiteral("B"));
        QCOMPARE(contents.index(2, 0).data(Qt::ToolTipRole).toString(),
                 QStringLiteral("/Users/alice/a3"));

        // An item unchecked: its group turns mixed, which the other model reports once told.
        QSignalSpy groupChanges(&groups, &QAbstractItemModel::dataChanged);
        QVERIFY(contents.setData(contents.index(1, 0), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(tree(*category),
                 QStringLiteral("A[-1]{a1[1] a2[0] a3[1]} B[1]{b1[1]} Empty[1]{}"));
        groups.checkMarksChanged();
        QCOMPARE(groupChanges.count(), 1);
        QCOMPARE(groups.index(0, 0).data(Qt::CheckStateRole).toInt(),
                 static_cast<int>(Qt::PartiallyChecked));

        // The group checked again: every item follows, reported as one range.
        QSignalSpy itemChanges(&contents, &QAbstractItemModel::dataChanged);
        QVERIFY(groups.setData(groups.index(0, 0), Qt::Checked, Qt::CheckStateRole));
        contents.checkMarksChanged();
        QCOMPARE(itemChanges.count(), 1);
        QCOMPARE(itemChanges.first().at(0).toModelIndex().row(), 0);
        QCOMPARE(itemChanges.first().at(1).toModelIndex().row(), 2);
        QCOMPARE(contents.index(1, 0).data(Qt::CheckStateRole).toInt(),
                 static_cast<int>(Qt::Checked));

        // A mark given as it is: -1 goes down to every item. Other values are refused, and a
        // group without items cannot be checked at all.
        QVERIFY(groups.setData(groups.index(1, 0), -1, MarkRole));
        QCOMPARE(tree(*category),
                 QStringLiteral("A[1]{a1[1] a2[1] a3[1]} B[-1]{b1[-1]} Empty[1]{}"));
        QVERIFY(!groups.setData(groups.index(1, 0), QStringLiteral("x"), Qt::CheckStateRole));
        QVERIFY(!groups.setData(groups.index(1, 0), 0, Qt::DisplayRole));
        QVERIFY(!(groups.flags(groups.index(2, 0)) & Qt::ItemIsUserCheckable));
        QVERIFY(!groups.setData(groups.index(2, 0), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(empty->isChecked(), 1);
    }

    void inPlaceChangesShowOnlyAfterAReset() {
        auto category = std::make_shared<NACategoryObj>();
        category->groups() = {checkedGroup("A", {item("a1"), item("a2")}),
                              checkedGroup("B", {item("b1")}), checkedGroup("C", {item("c1")})};
        TestedModels models(category);
        NAGroupsModel& groups = models.groups;
        NAGroupContentsModel& contents = models.contents;

        // Changed behind the models' back: they keep the count they announced, and a row that
        // has gone answers nothing instead of reading past the array.
        category->groups().pop_back();
        category->groups().pop_back();
        QCOMPARE(groups.rowCount(), 3);
        QVERIFY(!groups.index(2, 0).data().isValid());
        QVERIFY(groups.groupAt(2) == nullptr);
        groups.reload();
        QCOMPARE(groups.rowCount(), 1);

        QSignalSpy resets(&contents, &QAbstractItemModel::modelReset);
        groups.changeGroups([&] {
            contents.changeContents([&] {
                category->groups()[0]->removeFileObj(category->groups()[0]->contents()[0]);
                category->groups().push_back(checkedGroup("D", {}));
            });
        });
        QCOMPARE(resets.count(), 1);
        QCOMPARE(groups.rowCount(), 2);
        QCOMPARE(contents.rowCount(), 1);
        QCOMPARE(contents.index(0, 0).data().toString(), QStringLiteral("a2"));
        QCOMPARE(groups.rowOfGroup(category->groups()[1].get()), 1);

        contents.setGroup(nullptr);
        QCOMPARE(contents.rowCount(), 0);
        groups.setCategoryObj({});
        QCOMPARE(groups.rowCount(), 0);
    }

    void aHugeTableHoldsCellViewsForTheRowsInViewOnly() {
        CountModel model(100000);
        LabelCells cells(model);
        NATableView table;
        table.resize(300, 400);
        table.setModel(&model);
        table.setRowHeight(40);
        table.setTableDelegate(&cells);
        table.show();
        QVERIFY(QTest::qWaitForWindowExposed(&table));

        const std::set<int> top = rowsWithCells(table);
        QVERIFY(top.count(0));
        QVERIFY(top.size() >= 10 && top.size() <= 20);
        QCOMPARE(static_cast<int>(top.size()), cells.made);

        table.verticalScrollBar()->setValue(table.verticalScrollBar()->maximum());
        const std::set<int> bottom = rowsWithCells(table);
        QVERIFY(bottom.count(99999));
        QVERIFY(!bottom.count(0));
        QVERIFY(bottom.size() <= 20);

        // A row that changes gets a fresh cell; the others are left alone.
        QWidget* before = table.cellWidget(99990);
        QWidget* neighbour = table.cellWidget(99991);
        QVERIFY(before && neighbour);
        const int madeBefore = cells.made;
        emit model.dataChanged(model.index(99990, 0), model.index(99990, 0));
        QVERIFY(table.cellWidget(99990) != before);
        QCOMPARE(table.cellWidget(99991), neighbour);
        QCOMPARE(cells.made, madeBefore + 1);
        QCOMPARE(table.rowForView(table.cellWidget(99991)), 99991);
        QCOMPARE(NATableView::enclosingTable(table.cellWidget(99991)), &table);
    }

    void aTableThatMustKeepASelectionKeepsOne() {
        CountModel model(5);
        LabelCells cells(model);
        NATableView table;
        table.resize(300, 400);
        table.setModel(&model);
        table.setAllowsEmptySelection(false);
        table.setTableDelegate(&cells);
        table.show();
        QVERIFY(QTest::qWaitForWindowExposed(&table));

        table.selectRowIndexes(3);
        QCOMPARE(cells.selections, std::vector<int>{3});

        // A reload keeps the row and tells no one.
        model.setRows(5);
        QCOMPARE(table.selectedRow(), 3);
        QCOMPARE(cells.selections, std::vector<int>{3});

        // A cell that holds the focus is made anew without the focus moving the selection on.
        table.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&table));
        QWidget* focused = table.cellWidget(3);
        focused->setFocusPolicy(Qt::StrongFocus);
        focused->setFocus();
        QVERIFY(focused->hasFocus());
        emit model.dataChanged(model.index(0, 0), model.index(4, 0));
        QCOMPARE(table.selectedRow(), 3);
        QCOMPARE(cells.selections, std::vector<int>{3});

        // The user cannot take the selection away.
        const QRect row3 = table.visualRect(model.index(3, 0));
        QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::ControlModifier, row3.center());
        QCOMPARE(table.selectedRow(), 3);

        // Rows that go move the selection to the nearest one left, and say so.
        model.removeRows(2, 3);
        QCOMPARE(table.selectedRow(), 1);
        model.setRows(1);
        QCOMPARE(table.selectedRow(), 0);
        QCOMPARE(cells.selections.back(), 0);
        model.setRows(0);
        QCOMPARE(table.selectedRow(), -1);
        QCOMPARE(cells.selections.back(), -1);
    }

    void emptyTablesDrawTheirEmptyState_data() {
        QTest::addColumn<bool>("outline");
        QTest::newRow("table") << false;
        QTest::newRow("outline") << true;
    }

    void emptyTablesDrawTheirEmptyState() {
        QFETCH(bool, outline);
        CountModel model(0);
        NATableView table;
        NAOutLineView outlineView;
        QAbstractItemView* view = outline ? static_cast<QAbstractItemView*>(&outlineView) : &table;
        view->resize(360, 400);
        view->setModel(&model);
        view->setStyleSheet(QStringLiteral("QAbstractItemView { background: white; }"));
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view));

        auto inkInMiddle = [&] {
            const QImage image = view->viewport()->grab().toImage();
            const QRect middle(image.width() / 2 - 60, image.height() / 2 - 80, 120, 140);
            int ink = 0;
            for (int y = middle.top(); y <= middle.bottom(); ++y) {
                for (int x = middle.left(); x <= middle.right(); ++x)
                    ink += image.pixelColor(x, y).lightness() < 245 ? 1 : 0;
            }
            return ink;
        };
        QVERIFY(inkInMiddle() > 200);
        model.setRows(3);
        QCOMPARE(inkInMiddle(), 0);
    }
};

QTEST_MAIN(ResultPagesTest)
#include "result_pages_test.moc"
