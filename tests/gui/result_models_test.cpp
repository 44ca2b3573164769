// The result tables' models and the table that shows them: marks set through either model
// reach the engine and come back through the other, resets and in-place changes stay within
// the model contract, and a table of 100,000 rows keeps cell views for the rows in view only.
#include <QAbstractItemModelTester>
#include <QLabel>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <memory>
#include <set>
#include <string>

#include "gui_test_env.h"
#include "ui/na_group_models.h"
#include "ui/na_outline_view.h"
#include "ui/na_table_view.h"

using namespace sysmend;

namespace {

std::shared_ptr<NAFileobj> item(const std::string& name, std::int64_t mark = 1) {
    auto file = std::make_shared<NAFileobj>();
    file->setFileName(name);
    file->setFilePath("/Users/alice/" + name);
    file->setFileSize(100);
    file->setIsChecked(mark);
    return file;
}

std::shared_ptr<NAGroupObj> group(const std::string& title,
                                  std::initializer_list<std::shared_ptr<NAFileobj>> items) {
    auto result = std::make_shared<NAGroupObj>(title, ImageRef::none());
    for (const auto& file : items)
        result->addFileObj(file);
    result->setIsChecked(1);
    return result;
}

QString tree(const NACategoryObj& category) {
    QStringList groups;
    for (const auto& g : category.groups())
        groups << QString::fromStdString(toString(*g));
    return groups.join(QLatin1Char(' '));
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

// A flat model of a given number of rows, for the table's own behaviour.
class CountModel : public QAbstractTableModel {
  public:
    explicit CountModel(int rows) : rows_(rows) {}
    void setRows(int rows) {
        beginResetModel();
        rows_ = rows;
        endResetModel();
    }
    void removeLast(int count) {
        beginRemoveRows({}, rows_ - count, rows_ - 1);
        rows_ -= count;
        endRemoveRows();
    }
    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : rows_;
    }
    int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : 1;
    }
    QVariant data(const QModelIndex& index, int role) const override {
        return role == Qt::DisplayRole ? QVariant(index.row()) : QVariant();
    }

  private:
    int rows_;
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

class ResultModelsTest : public QObject {
    Q_OBJECT

  private:
    test::GuiTestEnv env_;

  private slots:
    void initTestCase() { env_.setUp(); }

    void marksGoThroughTheEngineAndBackThroughTheOtherModel() {
        auto category = std::make_shared<NACategoryObj>();
        category->groups() = {group("A", {item("a1"), item("a2"), item("a3")}),
                              group("B", {item("b1")})};
        TestedModels models(category);
        NAGroupsModel& groups = models.groups;
        NAGroupContentsModel& contents = models.contents;
        QCOMPARE(groups.rowCount(), 2);
        QCOMPARE(contents.rowCount(), 3);
        QCOMPARE(groups.index(1, 0).data().toString(), QStringLiteral("B"));
        QCOMPARE(contents.index(2, 0).data(Qt::ToolTipRole).toString(),
                 QStringLiteral("/Users/alice/a3"));

        // An item unchecked: its group turns mixed, which the other model reports once told.
        QSignalSpy groupChanges(&groups, &QAbstractItemModel::dataChanged);
        QVERIFY(contents.setData(contents.index(1, 0), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(tree(*category), QStringLiteral("A[-1]{a1[1] a2[0] a3[1]} B[1]{b1[1]}"));
        groups.checkMarksChanged();
        QCOMPARE(groupChanges.count(), 1);
        QCOMPARE(groups.index(0, 0).data(Qt::CheckStateRole).toInt(),
                 static_cast<int>(Qt::PartiallyChecked));
        QCOMPARE(groups.index(0, 0).data(MarkRole).toLongLong(), -1);

        // The group checked again: every item follows.
        QSignalSpy itemChanges(&contents, &QAbstractItemModel::dataChanged);
        QVERIFY(groups.setData(groups.index(0, 0), Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(tree(*category), QStringLiteral("A[1]{a1[1] a2[1] a3[1]} B[1]{b1[1]}"));
        contents.checkMarksChanged();
        QCOMPARE(itemChanges.count(), 1);
        QCOMPARE(itemChanges.first().at(0).toModelIndex().row(), 0);
        QCOMPARE(itemChanges.first().at(1).toModelIndex().row(), 2);
        QCOMPARE(contents.index(1, 0).data(Qt::CheckStateRole).toInt(),
                 static_cast<int>(Qt::Checked));

        // A mark given as it is: -1 goes down to every item.
        QVERIFY(groups.setData(groups.index(1, 0), -1, MarkRole));
        QCOMPARE(tree(*category), QStringLiteral("A[1]{a1[1] a2[1] a3[1]} B[-1]{b1[-1]}"));
        QVERIFY(!groups.setData(groups.index(1, 0), QStringLiteral("x"), Qt::CheckStateRole));
        QVERIFY(!groups.setData(groups.index(1, 0), 0, Qt::DisplayRole));
    }

    void aGroupWithoutItemsCannotBeChecked() {
        auto category = std::make_shared<NACategoryObj>();
        auto empty = std::make_shared<NAGroupObj>("Empty", ImageRef::none());
        empty->setIsChecked(1);
        category->groups() = {empty};
        NAGroupsModel groups;
        groups.setCategoryObj(category);
        QVERIFY(!(groups.flags(groups.index(0, 0)) & Qt::ItemIsUserCheckable));
        QVERIFY(!groups.setData(groups.index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(empty->isChecked(), 1);
    }

    void inPlaceChangesShowOnlyAfterAReset() {
        auto category = std::make_shared<NACategoryObj>();
        category->groups() = {group("A", {item("a1"), item("a2")}), group("B", {item("b1")}),
                              group("C", {item("c1")})};
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
                category->groups().push_back(group("D", {}));
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
        model.removeLast(3);
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
        NAOutLineView tree;
        QAbstractItemView* view = outline ? static_cast<QAbstractItemView*>(&tree) : &table;
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

QTEST_MAIN(ResultModelsTest)
#include "result_models_test.moc"
