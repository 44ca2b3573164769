// The start pages' folder prompts: a saved grant is used without asking; otherwise the
// chooser lets only the asked folder be confirmed, saves the grant on OK and nothing on
// cancel.
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <optional>

#include "app/na_root_pvc.h"
#include "gui_test_env.h"
#include "platform/syslog.h"

using namespace sysmend;

class RootPVCTest : public QObject {
    Q_OBJECT

  private:
    static FileURL folderURL(const char* volumePath) {
        return FileURL::fileURLWithPath(volumePath, true);
    }

    static bool showsLabel(const QFileDialog* panel, const QString& text) {
        for (const QLabel* label : panel->findChildren<QLabel*>()) {
            if (label->text() == text)
                return true;
        }
        return false;
    }

    // Presses the chooser's default button, as the user would.
    static void clickChoose(QFileDialog* panel) {
        auto* buttons = panel->findChild<QDialogButtonBox*>();
        QVERIFY(buttons != nullptr);
        QPushButton* choose = buttons->button(QDialogButtonBox::Open);
        QVERIFY(choose != nullptr);
        QTest::mouseClick(choose, Qt::LeftButton);
    }

    test::GuiTestEnv env_;
    NARootPVC page_;

  private slots:
    void initTestCase() {
        env_.setUp();
        page_.loadView();
        QVERIFY(page_.fileAccess() == &AppSandboxFileAccess::fileAccess());
    }

    void cleanup() { test::GuiTestEnv::removeAllDefaults(); }

    void savedGrantAnswersWithoutAChooser() {
        page_.fileAccess()->persistPermissionPath("/Users/alice");
        std::optional<bool> granted;
        page_.grantUserPermission([&](bool ok) { granted = ok; });
        QCOMPARE(granted, std::optional<bool>(true));
        QVERIFY(page_.userOpenpanel() == nullptr);
    }

    void homeChooserConfirmsOnlyTheHomeFolder() {
        std::optional<bool> granted;
        page_.grantUserPermission([&](bool ok) { granted = ok; });
        QFileDialog* panel = page_.userOpenpanel();
        QVERIFY(panel != nullptr);
        QVERIFY(!granted);
        QCOMPARE(panel->labelText(QFileDialog::Accept), QStringLiteral("Choose Home Folder"));
        QVERIFY(showsLabel(panel,
                           "For Sysmend to function correctly, you need to allow access "
                           "to your home folder."));

        QVERIFY(page_.panel(panel, folderURL("/Users/alice")));
        QVERIFY(!page_.panel(panel, folderURL("/Users")));
        QVERIFY(!page_.panel(panel, folderURL("/Users/alice/Documents")));
        QVERIFY(!page_.panel(panel, folderURL("/Applications")));
        QVERIFY(!page_.panel(nullptr, folderURL("/Users/alice")));

        // Confirming another folder is refused: the chooser stays open.
        panel->setDirectory(env_.hostPath("/Users/alice/Documents"));
        clickChoose(panel);
        QVERIFY(!granted);
        QVERIFY(panel->isVisible());

        LogCapture log;
        panel->setDirectory(env_.hostPath("/Users/alice"));
        clickChoose(panel);
        QCOMPARE(granted, std::optional<bool>(true));
        QCOMPARE(log.lines(), std::vector<std::string>{"path==/Users/alice"});
        QVERIFY(page_.fileAccess()->startAceess(folderURL("/Users/alice"), false));
    }

    void cancellingTheApplicationsChooserSavesNothing() {
        std::optional<bool> granted;
        page_.graintAppPrmission([&](bool ok) { granted = ok; });
        QFileDialog* panel = page_.appOpenpanel();
        QVERIFY(panel != nullptr);
        QCOMPARE(panel->labelText(QFileDialog::Accept),
                 QStringLiteral("Choose Application Folder"));
        QVERIFY(showsLabel(panel,
                           "For Sysmend to function correctly, you need to allow access "
                           "to your Application folder."));
        QVERIFY(page_.panel(panel, folderURL("/Applications")));
        QVERIFY(!page_.panel(panel, folderURL("/Users/alice")));

        panel->reject();
        QCOMPARE(granted, std::optional<bool>(false));
        QVERIFY(UserDefaults::standardUserDefaults().keys().empty());
        QVERIFY(!page_.fileAccess()->startAceess(folderURL("/Applications"), false));
    }
};

QTEST_MAIN(RootPVCTest)
#include "root_pvc_test.moc"
