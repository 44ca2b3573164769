// The folder choosers. The start pages' prompts: a saved grant is used without asking;
// otherwise the chooser lets only the asked folder be confirmed, saves the grant on OK and
// nothing on cancel. The chooser the folder grants show when they ask the user: what it shows,
// which folders it lets through, cancel, and a call from a worker thread that waits for the
// chooser to close.
#include <QAbstractProxyModel>
#include <QFileSystemModel>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <functional>
#include <optional>
#include <thread>

#include "app/na_root_pvc.h"
#include "gui_test_env.h"
#include "sandbox/app_sandbox_file_access.h"
#include "sandbox/na_permission_panel.h"

using namespace sysmend;
using test::clickChoose;
using test::folderURL;

class FolderAccessTest : public QObject {
    Q_OBJECT

  private:
    static bool showsLabel(const QFileDialog* panel, const QString& text) {
        for (const QLabel* label : panel->findChildren<QLabel*>()) {
            if (label->text() == text)
                return true;
        }
        return false;
    }

    // Runs `act` on the chooser once it runs modally. A chooser that `act` leaves open (a
    // failed check returns early) is cancelled, so that the test goes on.
    void whenShown(std::function<void(QFileDialog*)> act) {
        connect(
            &panel_, &NAPermissionPanel::panelWillRun, this,
            [act = std::move(act)](QFileDialog* chooser) {
                QTimer::singleShot(0, chooser, [act, chooser] {
                    act(chooser);
                    if (chooser->isVisible())
                        chooser->reject();
                });
            },
            Qt::SingleShotConnection);
    }

    // The default button, as a click on it does.
    static void confirm(QFileDialog* chooser) { static_cast<QDialog*>(chooser)->accept(); }

    // Whether the chooser's list offers a folder for selection.
    static bool listsAsEnabled(QFileDialog* chooser, const QString& hostPath) {
        auto* files = qobject_cast<QFileSystemModel*>(chooser->proxyModel()->sourceModel());
        if (!files)
            return false;
        const QModelIndex index = chooser->proxyModel()->mapFromSource(files->index(hostPath));
        const Qt::ItemFlags flags = chooser->proxyModel()->flags(index);
        return (flags & Qt::ItemIsEnabled) && (flags & Qt::ItemIsSelectable);
    }

    AppSandboxFileAccess& access() { return AppSandboxFileAccess::fileAccess(); }

    test::GuiTestEnv env_;
    NAPermissionPanel panel_;
    NARootPVC page_;

  private slots:
    void initTestCase() {
        env_.setUp();
        page_.loadView();
        QVERIFY(page_.fileAccess() == &AppSandboxFileAccess::fileAccess());
        access().setPermissionPanel(&panel_);
    }

    void cleanupTestCase() { access().setPermissionPanel(nullptr); }

    void cleanup() { test::GuiTestEnv::removeAllDefaults(); }

    void savedGrantAnswersWithoutAChooser() {
        page_.fileAccess()->persistPermissionPath("/Users/alice");
        std::optional<bool> granted;
        page_.grantUserPermission([&](bool ok) { granted = ok; });
        QCOMPARE(granted, std::optional<bool>(true));
        QVERIFY(page_.userOpenpanel() == nullptr);
    }

    void startPagePromptsConfirmOnlyTheirFolder_data() {
        QTest::addColumn<bool>("home");
        QTest::addColumn<bool>("choose");
        QTest::newRow("home folder, chosen") << true << true;
        QTest::newRow("Applications, cancelled") << false << false;
    }

    // The chooser names its folder, refuses any other and saves the grant only when chosen.
    void startPagePromptsConfirmOnlyTheirFolder() {
        QFETCH(bool, home);
        QFETCH(bool, choose);
        const std::string folder = home ? "/Users/alice" : "/Applications";
        std::optional<bool> granted;
        const auto answer = [&](bool ok) { granted = ok; };
        home ? page_.grantUserPermission(answer) : page_.graintAppPrmission(answer);
        QFileDialog* panel = home ? page_.userOpenpanel() : page_.appOpenpanel();
        QVERIFY(panel != nullptr);
        QVERIFY(!granted);
        QCOMPARE(panel->labelText(QFileDialog::Accept),
                 home ? QStringLiteral("Choose Home Folder")
                      : QStringLiteral("Choose Application Folder"));
        QVERIFY(showsLabel(panel, QStringLiteral("For Sysmend to function correctly, you need to "
                                                 "allow access to your %1 folder.")
                                      .arg(home ? "home" : "Application")));

        QVERIFY(page_.panel(panel, folderURL(folder.c_str())));
        for (const char* other :
             {"/Users", "/Users/alice/Documents", home ? "/Applications" : "/Users/alice"})
            QVERIFY2(!page_.panel(panel, folderURL(other)), other);
        QVERIFY(!page_.panel(nullptr, folderURL(folder.c_str())));

        // Confirming another folder is refused: the chooser stays open.
        panel->setDirectory(env_.hostPath("/Users/alice/Documents"));
        clickChoose(panel);
        QVERIFY(!granted);
        QVERIFY(panel->isVisible());

        LogCapture log;
        if (choose) {
            panel->setDirectory(env_.hostPath(QString::fromStdString(folder)));
            clickChoose(panel);
            QCOMPARE(log.lines(), std::vector<std::string>{"path==" + folder});
        } else {
            panel->reject();
            QVERIFY(UserDefaults::standardUserDefaults().keys().empty());
        }
        QCOMPARE(granted, std::optional<bool>(choose));
        QCOMPARE(page_.fileAccess()->startAceess(folderURL(folder.c_str()), false), choose);
    }

    void showsTheRequestAndEnablesOnlyTheAskedFolderAndItsAncestors() {
        bool checked = false;
        whenShown([&](QFileDialog* chooser) {
            QCOMPARE(panel_.openPanel(), chooser);
            QCOMPARE(chooser->windowTitle(), QStringLiteral("Allow Access"));
            QCOMPARE(chooser->labelText(QFileDialog::Accept), QStringLiteral("Allow"));
            auto* message = chooser->findChild<QLabel*>(QStringLiteral("messageLabel"));
            QVERIFY(message != nullptr && message->isVisible());
            QCOMPARE(message->text(), QStringLiteral("Sysmend needs to access this path to "
                                                     "continue. Click Allow to continue."));
            QVERIFY(chooser->testOption(QFileDialog::ShowDirsOnly));
            QVERIFY(chooser->testOption(QFileDialog::ReadOnly));
            QVERIFY(!(chooser->filter() & QDir::Hidden));

            // The asked folder is missing: the chooser opens at its nearest existing ancestor.
            QCOMPARE(chooser->directory().absolutePath(), env_.hostPath("/Users/alice"));
            QVERIFY(listsAsEnabled(chooser, env_.hostPath("/Users")));
            QVERIFY(listsAsEnabled(chooser, env_.hostPath("/Users/alice")));
            QVERIFY(!listsAsEnabled(chooser, env_.hostPath("/Users/alice/Documents")));
            QVERIFY(!listsAsEnabled(chooser, env_.hostPath("/Applications")));

            // A folder the request does not cover cannot be confirmed.
            chooser->setDirectory(env_.hostPath("/Users/alice/Documents"));
            confirm(chooser);
            QVERIFY(chooser->isVisible());
            checked = true;
            chooser->reject();
        });
        const auto chosen = access().askPermissionForUrl(folderURL("/Users/alice/Missing/Deeper"));
        QVERIFY(checked);
        QVERIFY(!chosen);
        QVERIFY(panel_.openPanel() == nullptr);
    }

    void choosingTheFolderGrantsAccess() {
        whenShown([&](QFileDialog* chooser) {
            chooser->setDirectory(env_.hostPath("/Users/alice/Documents"));
            confirm(chooser);
        });
        bool ran = false;
        QVERIFY(access().accessFilePath(
            "/Users/alice/Documents", [&] { ran = true; }, true));
        QVERIFY(ran);
        // Saved: the next start needs no chooser.
        QVERIFY(access().startAceess(folderURL("/Users/alice/Documents"), false));
    }

    void cancellingRefusesAccessAndSavesNothing() {
        whenShown([](QFileDialog* chooser) { chooser->reject(); });
        bool ran = false;
        QVERIFY(!access().accessFilePath(
            "/Applications", [&] { ran = true; }, true));
        QVERIFY(!ran);
        QVERIFY(UserDefaults::standardUserDefaults().keys().empty());
    }

    void workerThreadWaitsUntilTheChooserCloses() {
        std::atomic<bool> returned{false};
        std::optional<bool> returnedWhileShown;
        bool shownOnGuiThread = false;
        whenShown([&](QFileDialog* chooser) {
            returnedWhileShown = returned.load();
            shownOnGuiThread = QThread::currentThread() == thread();
            chooser->setDirectory(env_.hostPath("/Applications"));
            confirm(chooser);
        });

        std::optional<FileURL> chosen;
        std::thread worker([&] {
            chosen = access().askPermissionForUrl(folderURL("/Applications"));
            returned = true;
        });
        QTRY_VERIFY(returned.load());
        worker.join();
        QCOMPARE(returnedWhileShown, std::optional<bool>(false));
        QVERIFY(shownOnGuiThread);
        QVERIFY(chosen.has_value());
        QCOMPARE(chosen->path(), std::string("/Applications"));
    }
};

QTEST_MAIN(FolderAccessTest)
#include "folder_access_test.moc"
