// Sheets: begin/end with their completion, ending a sheet that is not shown, the progress
// panels' texts; and the leftovers sheet, its rows over the owner's own list, Done emptying
// that list whether the sheet is shown or not, the search button showing a file's folder, and
// the help popover.
#include <QAbstractItemModelTester>
#include <QDesktopServices>
#include <QUrl>
#include <limits>

#include "appviewer/app_view_help_vc.h"
#include "appviewer/na_left_over_show_view.h"
#include "appviewer/na_show_left_over_sheet.h"
#include "gui_test_env.h"
#include "ui/na_progress_panel_vc.h"

using namespace sysmend;

// Stands in for the file viewer: records the addresses it is asked to open.
class UrlRecorder : public QObject {
    Q_OBJECT
  public:
    QList<QUrl> opened;

  public slots:
    void open(const QUrl& url) { opened << url; }
};

class SheetsTest : public QObject {
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
        env_.writeFile("/Library/LaunchAgents/com.example.agent.plist");
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &viewer_, "open");
    }

    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    void init() { viewer_.opened.clear(); }

    void sheetRunsItsCompletionOnceAndASecondEndIsHarmless() {
        QWidget window;
        window.resize(600, 400);
        window.show();
        NAProgressPanelVC panel;
        panel.loadWindow();
        QCOMPARE(panel.informationLabel->text(), QStringLiteral("Please wait ......"));
        QCOMPARE(panel.progress->maximum(), 0);  // busy

        QVERIFY(sheetParent(&panel) == nullptr);
        endSheet(&panel);  // not shown: nothing happens

        std::vector<int> codes;
        beginSheet(&window, &panel, [&](int code) { codes.push_back(code); });
        QCOMPARE(sheetParent(&panel), &window);
        QVERIFY(panel.isModal() || panel.windowModality() != Qt::NonModal);

        endSheet(&panel, kModalResponseContinue);
        endSheet(&panel, 5);
        QCOMPARE(codes, std::vector<int>{kModalResponseContinue});
        QVERIFY(sheetParent(&panel) == nullptr);

        // Shown again with a new completion: only the new one runs.
        std::vector<int> second;
        beginSheet(&window, &panel, [&](int code) { second.push_back(code); });
        endSheet(&panel, 1);
        QCOMPARE(codes.size(), std::size_t{1});
        QCOMPARE(second, std::vector<int>{1});

        // Escape and closing do not end a sheet that waits for work.
        int ended = 0;
        beginSheet(&window, &panel, [&](int) { ++ended; });
        QTest::keyClick(&panel, Qt::Key_Escape);
        panel.close();
        QCOMPARE(ended, 0);
        QVERIFY(sheetParent(&panel) != nullptr);
        endSheet(&panel);
        QCOMPARE(ended, 1);
    }

    void scanPanelShowsCountsAndLeavesTheTimeToItsPage() {
        NAProgressPanel2VC panel;
        panel.loadWindow();
        QCOMPARE(panel.scan_path(), QStringLiteral("Please wait ......"));
        QVERIFY(!panel.imageView->pixmap().isNull());

        panel.setTime_used(QStringLiteral("Time Elapsed: 00:00:03"));
        panel.update(QStringLiteral("/Library/LaunchAgents/a.plist"), 0, 0,
                     QStringLiteral("ignored"));
        QCOMPARE(panel.time_used(), QStringLiteral("Time Elapsed: 00:00:03"));

        const std::int64_t big = std::numeric_limits<std::int64_t>::max();
        panel.update(QStringLiteral("x"), big, big - 1, {});
        QCOMPARE(panel.scaned_files_count(), QStringLiteral("Scanned Files: 9223372036854775807"));
        QCOMPARE(panel.threats_files_count(), QStringLiteral("Threat Found: 9223372036854775806"));
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
        QCOMPARE(sheet.table()->rowCount(), 0);
        QVERIFY(!sheet.appIconImageView()->pixmap().isNull());
        sheet.setLeftOverFiles(&failed);

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
        }

        QTest::mouseClick(sheet.doneButton(), Qt::LeftButton);
        QVERIFY(ended);
        QVERIFY(sheetParent(&sheet) == nullptr);
        QVERIFY(failed.empty());  // the owner's own list
        QCOMPARE(sheet.table()->rowCount(), 0);

        // Done on a sheet that is not shown only empties the list.
        failed = {item("/Library/LaunchAgents/com.example.agent.plist")};
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

QTEST_MAIN(SheetsTest)
#include "sheets_test.moc"
