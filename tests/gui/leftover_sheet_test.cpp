// The leftovers sheet: its rows over the owner's own list, Done emptying that list whether the
// sheet is shown or not, the search button showing a file's folder, and the help popover.
#include <QAbstractItemModelTester>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>
#include <QUrl>
#include <memory>

#include "appviewer/app_view_help_vc.h"
#include "appviewer/na_left_over_show_view.h"
#include "appviewer/na_show_left_over_sheet.h"
#include "gui_test_env.h"
#include "ui/na_sheet.h"
#include "ui/na_table_row_view.h"

using namespace sysmend;

// Stands in for the file viewer: records the addresses it is asked to open.
class UrlRecorder : public QObject {
    Q_OBJECT
  public:
    QList<QUrl> opened;

  public slots:
    void open(const QUrl& url) { opened << url; }
};

class LeftoverSheetTest : public QObject {
    Q_OBJECT

  private:
    std::shared_ptr<NAFileobj> item(const QString& volumePath) const {
        auto file = std::make_shared<NAFileobj>();
        file->setFilePath(volumePath.toStdString());
        file->setFileIcon(ImageRef::fileIcon(volumePath.toStdString()));
        return file;
    }

    NALeftOverShowView* cell(NAShowLeftOverSheet& sheet, int row) const {
        return qobject_cast<NALeftOverShowView*>(sheet.table()->cellWidget(row));
    }

    test::GuiTestEnv env_;
    UrlRecorder viewer_;

  private slots:
    void initTestCase() {
        env_.setUp();
        QVERIFY(QDir(env_.hostPath("")).mkpath(QStringLiteral("Library/LaunchAgents")));
        QFile agent(env_.hostPath("/Library/LaunchAgents/com.example.agent.plist"));
        QVERIFY(agent.open(QIODevice::WriteOnly));
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &viewer_, "open");
    }

    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    void init() { viewer_.opened.clear(); }

    void anEmptyListShowsAnEmptyTable() {
        NAShowLeftOverSheet sheet;
        sheet.loadWindow();
        QAbstractItemModelTester tester(sheet.table()->model(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(sheet.leftOverFiles() != nullptr);
        QVERIFY(sheet.leftOverFiles()->empty());
        QCOMPARE(sheet.table()->rowCount(), 0);
        QVERIFY(!sheet.appIconImageView()->pixmap().isNull());
    }

    void showsTheOwnersListAndDoneEmptiesIt() {
        NAFileobjArray failed{item("/Library/LaunchAgents/com.example.agent.plist"),
                              item("/Users/alice/Library/Gone Folder/gone.txt")};
        failed[1]->setFileIcon(ImageRef::none());

        // The window goes last: it holds the sheet while the sheet is shown over it.
        QWidget window;
        window.resize(720, 560);
        window.show();
        NAShowLeftOverSheet sheet;
        sheet.loadWindow();
        QAbstractItemModelTester tester(sheet.table()->model(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        sheet.setLeftOverFiles(&failed);
        QCOMPARE(sheet.leftOverFiles(), &failed);

        bool ended = false;
        beginSheet(&window, &sheet, [&](int) { ended = true; });
        QVERIFY(QTest::qWaitForWindowExposed(&sheet));

        QCOMPARE(sheet.table()->rowCount(), 2);
        for (int row = 0; row < 2; ++row) {
            NALeftOverShowView* rowCell = cell(sheet, row);
            QVERIFY(rowCell != nullptr);
            QCOMPARE(rowCell->representItem(), failed[static_cast<std::size_t>(row)]);
            QCOMPARE(rowCell->path_view->toolTip(),
                     QString::fromStdString(failed[static_cast<std::size_t>(row)]->filePath()));
            QVERIFY(!rowCell->icon_view->pixmap().isNull());  // a generic icon without one
            QCOMPARE(sheet.table()->rowHeight(row), 32);
        }
        auto* rows = qobject_cast<NATableRowView*>(sheet.table()->itemDelegate());
        QVERIFY(rows != nullptr);
        QCOMPARE(rows->selectedBgColor(), QColor(230, 230, 230));

        QTest::mouseClick(sheet.doneButton(), Qt::LeftButton);
        QVERIFY(ended);
        QVERIFY(sheetParent(&sheet) == nullptr);
        QVERIFY(failed.empty());  // the owner's own list
        QCOMPARE(sheet.table()->rowCount(), 0);
    }

    void escapeIsDone() {
        NAFileobjArray failed{item("/Library/LaunchAgents/com.example.agent.plist")};
        QWidget window;
        window.show();
        NAShowLeftOverSheet sheet;
        sheet.loadWindow();
        sheet.setLeftOverFiles(&failed);
        beginSheet(&window, &sheet);
        QTest::keyClick(&sheet, Qt::Key_Escape);
        QVERIFY(sheetParent(&sheet) == nullptr);
        QVERIFY(failed.empty());
    }

    void doneOnADetachedSheetOnlyEmptiesTheList() {
        NAFileobjArray failed{item("/Library/LaunchAgents/com.example.agent.plist")};
        NAShowLeftOverSheet sheet;
        sheet.loadWindow();
        sheet.setLeftOverFiles(&failed);
        QCOMPARE(sheet.table()->rowCount(), 1);
        sheet.doneActiobn();
        QVERIFY(failed.empty());
        QCOMPARE(sheet.table()->rowCount(), 0);
        QVERIFY(!sheet.isVisible());
    }

    void searchShowsTheFilesFolder() {
        NAFileobjArray failed{item("/Library/LaunchAgents/com.example.agent.plist"),
                              item("/Users/alice/Library/Gone Folder/gone.txt")};
        NAShowLeftOverSheet sheet;
        sheet.loadWindow();
        sheet.setLeftOverFiles(&failed);
        sheet.show();
        QVERIFY(QTest::qWaitForWindowExposed(&sheet));

        QTest::mouseClick(cell(sheet, 0)->search_btn, Qt::LeftButton);
        // A file that is gone shows the nearest folder that is still there.
        QTest::mouseClick(cell(sheet, 1)->search_btn, Qt::LeftButton);
        QCOMPARE(viewer_.opened,
                 QList<QUrl>({QUrl::fromLocalFile(env_.hostPath("/Library/LaunchAgents")),
                              QUrl::fromLocalFile(env_.hostPath("/Users/alice"))}));
        sheet.hide();
    }

    void helpOpensTheExplanationInAPopover() {
        NAShowLeftOverSheet sheet;
        sheet.loadWindow();
        sheet.show();
        QVERIFY(sheet.popOver() == nullptr);
        QTest::mouseClick(sheet.helpButton(), Qt::LeftButton);
        NAPopover* popover = sheet.popOver();
        QVERIFY(popover != nullptr);
        QVERIFY(popover->isVisible());
        QVERIFY(qobject_cast<AppViewHelpVC*>(popover->contentViewController()) != nullptr);
        QCOMPARE(popover->anchor(), static_cast<QWidget*>(sheet.helpButton()));
        // The words must hold for a file that is still there and one already gone, and not
        // ask to remove again items the list no longer shows.
        QString words;
        for (QWidget* shown : {static_cast<QWidget*>(&sheet), static_cast<QWidget*>(popover)})
            for (const QLabel* label : shown->findChildren<QLabel*>())
                words += label->text() + QLatin1Char('\n');
        QVERIFY(words.contains(QStringLiteral("already gone")));
        QVERIFY(!words.contains(QStringLiteral("are still on your disk")));
        QVERIFY(!words.contains(QStringLiteral("remove the items again")));
        popover->close();

        sheet.helpMessage(sheet.helpButton());
        QCOMPARE(sheet.popOver(), popover);  // made once
        QVERIFY(popover->isVisible());
        popover->close();
        sheet.hide();
    }
};

QTEST_MAIN(LeftoverSheetTest)
#include "leftover_sheet_test.moc"
