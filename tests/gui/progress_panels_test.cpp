// Sheets and the two progress panels: begin/end with their completion, ending a sheet that is
// not shown, the panels' texts, and Stop raising the page's flag without closing the sheet.
#include <QTest>
#include <limits>

#include "app/na_root_pvc.h"
#include "gui_test_env.h"
#include "ui/na_progress_panel_vc.h"
#include "ui/na_sheet.h"

using namespace sysmend;

class ProgressPanelsTest : public QObject {
    Q_OBJECT

  private:
    test::GuiTestEnv env_;

  private slots:
    void initTestCase() { env_.setUp(); }

    void sheetRunsItsCompletionOnceAndASecondEndIsHarmless() {
        QWidget window;
        window.resize(600, 400);
        window.show();
        NAProgressPanelVC panel;
        panel.loadWindow();
        QCOMPARE(panel.information(), QStringLiteral("Please wait ......"));
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
    }

    void escapeDoesNotEndAWaitingSheet() {
        QWidget window;
        window.show();
        NAProgressPanelVC panel;
        panel.loadWindow();
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
        QCOMPARE(panel.scaned_files_count(), QStringLiteral("Scanned Files: 0"));
        QCOMPARE(panel.threats_files_count(), QStringLiteral("Threat Found: 0"));
        QCOMPARE(panel.time_used(), QStringLiteral("Time Elapsed: 00:00:03"));
        QCOMPARE(panel.scan_path(), QStringLiteral("/Library/LaunchAgents/a.plist"));

        const std::int64_t big = std::numeric_limits<std::int64_t>::max();
        panel.update(QStringLiteral("x"), big, big - 1, {});
        QCOMPARE(panel.scaned_files_count(), QStringLiteral("Scanned Files: 9223372036854775807"));
        QCOMPARE(panel.threats_files_count(), QStringLiteral("Threat Found: 9223372036854775806"));
    }

    void stopRaisesThePagesFlagAndDoneEndsTheSheet() {
        QWidget window;
        window.show();
        NARootPVC page;
        NAProgressPanel2VC panel;
        panel.loadWindow();
        panel.setPvc(&page);
        int ended = 0;
        beginSheet(&window, &panel, [&](int) { ++ended; });

        QTest::mouseClick(panel.stopButton, Qt::LeftButton);
        QVERIFY(page.stop.load());
        QCOMPARE(ended, 0);
        QVERIFY(sheetParent(&panel) != nullptr);

        QTest::mouseClick(panel.doneButton, Qt::LeftButton);
        QCOMPARE(ended, 1);
        panel.doneActiobn();  // detached: nothing
        QCOMPARE(ended, 1);
    }
};

QTEST_MAIN(ProgressPanelsTest)
#include "progress_panels_test.moc"
