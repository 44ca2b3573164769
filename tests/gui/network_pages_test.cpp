// The Firewall and ARP Cache pages: the status read from the firewall's preference file, the
// two states with and without access, the access chooser, polling only while the page is in a
// shown window, and the ARP guide sheet and help popover.
#include <QVBoxLayout>

#include "gui_test_env.h"
#include "network/na_arp_cache_pvc.h"
#include "network/na_firewall_pvc.h"
#include "sample/fake_volume.h"

using namespace sysmend;

using test::folderURL;

namespace {

bool samePicture(const QPixmap& a, const QPixmap& b) {
    return !a.isNull() && a.toImage() == b.toImage();
}

// A shown window with a content area, as the shell has. Made before the pages it shows, so
// that they go first.
struct Window : QWidget {
    QVBoxLayout* area = new QVBoxLayout(this);
    Window() {
        resize(720, 560);
        show();
    }
    void add(QWidget* page) {
        area->addWidget(page);
        page->show();
    }
};

}  // namespace

class NetworkPagesTest : public QObject {
    Q_OBJECT

  private:
    std::unique_ptr<sample::FakeVolume> volume() const {
        return std::make_unique<sample::FakeVolume>(env_.hostPath("").toStdString(), "alice");
    }

    static void grantPreferences() {
        AppSandboxFileAccess::fileAccess().persistPermissionPath("/Library/Preferences");
    }

    // Which of the page's two states shows: the status, or the access button.
    static void verifyShowsStatus(const NAFirewallPVC& page, bool status) {
        QCOMPARE(page.imageView->isVisibleTo(&page), status);
        QCOMPARE(page.status_text->isVisibleTo(&page), status);
        QCOMPARE(page.checkBtn->isVisibleTo(&page), !status);
    }

    test::GuiTestEnv env_;

  private slots:
    void initTestCase() {
        env_.setUp();
        volume()->mkdir("/Library/Preferences");
    }

    void cleanup() {
        test::GuiTestEnv::removeAllDefaults();
        QFile::remove(env_.hostPath("/Library/Preferences/com.apple.alf.plist"));
    }

    void showsTheFirewallState_data() {
        QTest::addColumn<int>("globalstate");  // -1: the file has no such key
        QTest::addColumn<bool>("writeFile");
        QTest::addColumn<bool>("on");
        QTest::newRow("off") << 0 << true << false;
        QTest::newRow("on") << 1 << true << true;
        QTest::newRow("essential services only") << 2 << true << true;
        QTest::newRow("no globalstate key") << -1 << true << true;
        QTest::newRow("no preference file") << -1 << false << true;
    }

    void showsTheFirewallState() {
        QFETCH(int, globalstate);
        QFETCH(bool, writeFile);
        QFETCH(bool, on);
        if (writeFile && globalstate >= 0) {
            volume()->setFirewall(globalstate);
        } else if (writeFile) {
            plist::Dictionary alf;
            alf.set("stealthenabled", std::int64_t{0});
            volume()->setFirewallPreferences(plist::Value(std::move(alf)));
        }
        grantPreferences();

        NAFirewallPVC page;
        page.loadView();
        QVERIFY(page.isAccessed());
        verifyShowsStatus(page, true);
        page.checkFirewallStatus();
        QCOMPARE(page.status_text->text(),
                 on ? QStringLiteral("Firewall is on") : QStringLiteral("Firewall is off"));
        QVERIFY(samePicture(page.imageView->pixmap(), on ? page.onImage() : page.offImage()));
        QCOMPARE(page.imageView->accessibleName(), page.status_text->text());
        QVERIFY(!samePicture(page.onImage(), page.offImage()));
    }

    void accessChooserConfirmsOnlyThePreferencesFolder() {
        volume()->setFirewall(0);
        volume()->mkdir("/Library/Preferences/SystemConfiguration");
        Window window;
        NAFirewallPVC page;
        page.loadView();
        window.add(&page);

        QTest::mouseClick(page.checkBtn, Qt::LeftButton);
        QFileDialog* chooser = page.sysOpenpanel();
        QVERIFY(chooser != nullptr);
        QCOMPARE(chooser->labelText(QFileDialog::Accept), QStringLiteral("Access"));
        auto* label = chooser->findChild<QLabel*>(QStringLiteral("accessoryLabel"));
        QVERIFY(label != nullptr);
        QCOMPARE(label->text(), QStringLiteral("For check firewall status in OSX, you need to "
                                               "allow access to your /Library/Preferences "
                                               "folder."));
        QCOMPARE(chooser->directory().absolutePath(), env_.hostPath("/Library/Preferences"));

        QVERIFY(page.panel(chooser, folderURL("/Library/Preferences")));
        QVERIFY(!page.panel(chooser, folderURL("/Library")));
        QVERIFY(!page.panel(chooser, folderURL("/Library/Preferences/SystemConfiguration")));
        QVERIFY(!page.panel(chooser, FileURL::fileURLWithPath("/Library/Preferences", false)));
        QVERIFY(!page.panel(nullptr, folderURL("/Library/Preferences")));

        // Another folder cannot be confirmed: the chooser stays open.
        chooser->setDirectory(env_.hostPath("/Library"));
        test::clickChoose(chooser);
        QVERIFY(chooser->isVisible());
        QVERIFY(!page.isAccessed());

        LogCapture log;
        chooser->setDirectory(env_.hostPath("/Library/Preferences"));
        test::clickChoose(chooser);
        QCOMPARE(log.lines(), std::vector<std::string>{"path==/Library/Preferences"});
        QVERIFY(page.isAccessed());
        verifyShowsStatus(page, true);
        QCOMPARE(page.status_text->text(), QStringLiteral("Firewall is off"));  // at once
        QVERIFY(page.fileAccess()->startAceess(folderURL("/Library/Preferences"), false));

        // The grant is found again by the next page without asking.
        NAFirewallPVC next;
        next.loadView();
        QVERIFY(next.isAccessed());
    }

    void withoutAccessOnlyTheAccessButtonShowsAndCancelKeepsIt() {
        volume()->setFirewall(0);
        Window window;
        NAFirewallPVC page;
        page.loadView();
        QVERIFY(!page.isAccessed());
        verifyShowsStatus(page, false);
        page.checkFirewallStatus();  // nothing to read without access
        QVERIFY(page.status_text->text().isEmpty());

        // Cancelling the chooser keeps the access button and saves nothing.
        window.add(&page);
        page.checkFirewallStatus(page.checkBtn);
        QVERIFY(page.sysOpenpanel() != nullptr);

        LogCapture log;
        page.sysOpenpanel()->reject();
        QCOMPARE(log.lines(), std::vector<std::string>{"path==(null)"});
        QVERIFY(!page.isAccessed());
        verifyShowsStatus(page, false);
        QVERIFY(UserDefaults::standardUserDefaults().keys().empty());
    }

    void pollsOnlyWhileInAShownWindow() {
        volume()->setFirewall(1);
        grantPreferences();
        Window window;
        NAFirewallPVC page;
        page.loadView();
        QVERIFY(!page.timer()->isActive());
        QCOMPARE(page.timer()->interval(), 4000);
        // Far longer than any wait below: a status that appears came from the tick that
        // resuming gives at once.
        page.timer()->setInterval(60 * 60 * 1000);

        window.add(&page);
        QVERIFY(page.timer()->isActive());
        QTRY_COMPARE(page.status_text->text(), QStringLiteral("Firewall is on"));

        // Leaving the window (the shell takes the page out of its content area) pauses.
        page.setParent(nullptr);
        QVERIFY(!page.timer()->isActive());
        volume()->setFirewall(0);

        window.add(&page);
        QVERIFY(page.timer()->isActive());
        QTRY_COMPARE(page.status_text->text(), QStringLiteral("Firewall is off"));

        // A window that is hidden counts as leaving it too.
        window.hide();
        QVERIFY(!page.timer()->isActive());
        volume()->setFirewall(2);
        window.show();
        QVERIFY(page.timer()->isActive());
        QTRY_COMPARE(page.status_text->text(), QStringLiteral("Firewall is on"));
    }

    void arpGuideSheetIsMadeOnceAndHelpOpensAPopover() {
        Window window;
        NAARPCachePVC page;
        page.loadView();
        window.add(&page);
        QVERIFY(page.helpWC() == nullptr);

        QTest::mouseClick(page.guideButton, Qt::LeftButton);
        NAArpCacheHelperWC* sheet = page.helpWC();
        QVERIFY(sheet != nullptr);
        QCOMPARE(sheetParent(sheet), static_cast<QWidget*>(&window));

        QTest::mouseClick(sheet->closeButton(), Qt::LeftButton);
        QVERIFY(sheetParent(sheet) == nullptr);
        sheet->closeAction();  // not shown: nothing happens
        QVERIFY(!sheet->isVisible());

        page.arpCache_help_action(page.guideButton);
        QCOMPARE(page.helpWC(), sheet);
        QCOMPARE(sheetParent(sheet), static_cast<QWidget*>(&window));
        sheet->closeAction();
        QVERIFY(sheetParent(sheet) == nullptr);

        // Help opens a popover on its button.
        QVERIFY(!page.popOver()->isVisible());
        QTest::mouseClick(page.helpButton, Qt::LeftButton);
        QVERIFY(page.popOver()->isVisible());
        QCOMPARE(page.popOver()->anchor(), static_cast<QWidget*>(page.helpButton));
        // Above the button, where there is room on the screen.
        const QRect button(page.helpButton->mapToGlobal(QPoint(0, 0)), page.helpButton->size());
        if (page.popOver()->shownEdge() == NAPopover::Edge::Top)
            QVERIFY(page.popOver()->geometry().bottom() < button.top());
        else
            QVERIFY(page.popOver()->geometry().top() > button.bottom());
        page.popOver()->close();
    }
};

QTEST_MAIN(NetworkPagesTest)
#include "network_pages_test.moc"
