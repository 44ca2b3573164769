// A walk through every tool of the window on the sample volume, as a new user would take it,
// grabbing each page (and each sheet over it) to a PNG:
//
//   gui_tour [OUTDIR]
//
// It writes a fresh sample volume and user defaults into a temporary folder, grants the folders
// the tools ask for (as a user who has used them before), and then for each tool: shows its
// start page, starts it, waits for the result page, and comes back with Start Over. With no
// OUTDIR the pictures go to the temporary folder and are dropped: ctest runs it that way as an
// end-to-end check that every page comes up with content.
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>
#include <functional>

#include "adware/na_adware_removal_pvc.h"
#include "app/app_delegate.h"
#include "app/na_result_list_hvc.h"
#include "app/na_start_page.h"
#include "appviewer/na_show_left_over_sheet.h"
#include "network/na_arp_cache_helper_wc.h"
#include "network/na_arp_cache_pvc.h"
#include "network/na_firewall_pvc.h"
#include "platform/volume.h"
#include "sandbox/app_sandbox_file_access.h"
#include "ui/na_progress_panel_vc.h"
#include "ui/na_sheet.h"
#include "ui/named_image.h"

using namespace sysmend;

namespace {

enum Row { Crashes = 1, ArpCache = 2, AppViewer = 3, StartupItems = 4, Firewall = 6, Vexbane = 7 };

int failures = 0;

void fail(const QString& what) {
    std::fprintf(stderr, "gui_tour: %s\n", qPrintable(what));
    ++failures;
}

// Spins the event loop until `done` holds or `ms` have passed.
bool waitFor(const std::function<bool()>& done, int ms = 20000) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > ms)
            return false;
        QTest::qWait(20);
    }
    return true;
}

class Tour {
  public:
    Tour(AppDelegate& delegate, QString outDir) : delegate_(delegate), out_(std::move(outDir)) {}

    NACategoryObj& category(Row row) const {
        return *delegate_.categorys().at(static_cast<std::size_t>(row));
    }

    void select(Row row) {
        delegate_.cTable()->selectRow(row);
        QTest::qWait(50);
    }

    // The window, with any dialog shown over it painted where it stands.
    void shoot(const QString& name) {
        QWidget* window = delegate_.window();
        QCoreApplication::processEvents();
        QPixmap picture = window->grab();
        QPainter painter(&picture);
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (top == window || !top->isVisible() || !top->inherits("QDialog"))
                continue;
            const QPoint at = window->mapFromGlobal(top->mapToGlobal(QPoint(0, 0)));
            painter.drawPixmap(at, top->grab());
        }
        painter.end();
        const QString file = out_ + QLatin1Char('/') + name + QStringLiteral(".png");
        if (picture.isNull() || !picture.save(file))
            fail(QStringLiteral("could not save %1").arg(file));
        else
            std::printf("%s\n", qPrintable(file));
    }

    // Starts a scanning tool from its button and waits for its result page.
    void scanTool(Row row, const QString& name) {
        select(row);
        shoot(name + QStringLiteral("-start"));
        auto* page = qobject_cast<NARootPVC*>(delegate_.controllerView());
        QPushButton* button =
            page ? page->findChild<QPushButton*>(QStringLiteral("startBtn")) : nullptr;
        if (!button) {
            fail(name + QStringLiteral(": no start button"));
            return;
        }
        button->click();
        if (!waitFor([&] { return category(row).displayState() == 1; })) {
            fail(name + QStringLiteral(": no result page"));
            return;
        }
        QTest::qWait(150);
        if (category(row).groups().empty())
            fail(name + QStringLiteral(": found nothing on the sample volume"));
        shoot(name + QStringLiteral("-result"));
        if (row == Crashes) {  // the content table as the keyboard leaves it, with its focus ring
            auto* result = qobject_cast<NAResultListHVC*>(delegate_.controllerView());
            delegate_.window()->activateWindow();
            if (!QTest::qWaitForWindowActive(delegate_.window()) || !result)
                fail(QStringLiteral("crashes: no active result page to focus"));
            else
                result->c_table()->setFocus(Qt::TabFocusReason);
            QTest::qWait(50);
            shoot(QStringLiteral("crashes-focus-ring"));
        }
        delegate_.startOverBtn()->click();
        QTest::qWait(50);
        if (category(row).displayState() != 0)
            fail(name + QStringLiteral(": Start Over did not go back"));
    }

    void firewall() {
        select(Firewall);
        auto* page = qobject_cast<NAFirewallPVC*>(delegate_.controllerView());
        if (!page) {
            fail(QStringLiteral("firewall: no page"));
            return;
        }
        waitFor([&] { return page->isAccessed(); }, 2000);
        QTest::qWait(100);
        shoot(QStringLiteral("firewall"));
    }

    void arpCache() {
        select(ArpCache);
        shoot(QStringLiteral("arp-cache"));
        auto* page = qobject_cast<NAARPCachePVC*>(delegate_.controllerView());
        if (!page || !page->guideButton) {
            fail(QStringLiteral("arp cache: no page"));
            return;
        }
        page->guideButton->click();
        QTest::qWait(100);
        shoot(QStringLiteral("arp-cache-guide"));
        if (page->helpWC())
            page->helpWC()->closeAction();
    }

    // The home-folder prompt of a user who has not granted it yet; cancelled.
    void homeFolderPrompt() {
        select(Crashes);
        auto* page = qobject_cast<NARootPVC*>(delegate_.controllerView());
        if (!page) {
            fail(QStringLiteral("prompt: no page"));
            return;
        }
        bool answered = false;
        page->grantUserPermission([&](bool) { answered = true; });
        if (!waitFor([&] { return page->userOpenpanel() && page->userOpenpanel()->isVisible(); },
                     3000)) {
            fail(QStringLiteral("prompt: no chooser"));
            return;
        }
        QTest::qWait(200);
        shoot(QStringLiteral("home-folder-prompt"));
        page->userOpenpanel()->reject();
        waitFor([&] { return answered; }, 3000);
    }

    // A sheet of a page shown again over its window, to see it at rest.
    void shootSheet(QDialog* sheet, const QString& name) {
        if (!sheet) {
            fail(name + QStringLiteral(": no sheet"));
            return;
        }
        beginSheet(delegate_.window(), sheet, {});
        QTest::qWait(100);
        shoot(name);
        endSheet(sheet);
    }

    void waitingSheet() {
        select(Crashes);
        auto* page = qobject_cast<NAStartPage*>(delegate_.controllerView());
        shootSheet(page ? page->progressPanel() : nullptr, QStringLiteral("waiting-sheet"));
    }

    void scanSheet() {
        select(Vexbane);
        auto* page = qobject_cast<NAAdwareRemovalPVC*>(delegate_.controllerView());
        NAProgressPanel2VC* sheet = page ? page->progressPanel2vc() : nullptr;
        if (sheet)
            sheet->setTime_used(QStringLiteral("Time Elapsed: 00:00:01"));
        shootSheet(sheet, QStringLiteral("vexbane-scan-sheet"));
    }

    // Vexbane again, with one finding gone from the disk before Remove: it lands on the
    // leftovers sheet while the others are removed.
    void leftovers(const QString& volume) {
        select(Vexbane);
        auto* start = qobject_cast<NAStartPage*>(delegate_.controllerView());
        if (!start || !start->startButton()) {
            fail(QStringLiteral("leftovers: no start page"));
            return;
        }
        start->startButton()->click();
        if (!waitFor([&] { return category(Vexbane).displayState() == 1; })) {
            fail(QStringLiteral("leftovers: no result page"));
            return;
        }
        QTest::qWait(150);
        const QString gone = volume + QStringLiteral("/Users/alice/Library/Safari/my-homepage.xml");
        if (!QFile::remove(gone))
            fail(QStringLiteral("leftovers: could not take away %1").arg(gone));
        auto* page = qobject_cast<NAResultListHVC*>(delegate_.controllerView());
        if (!page || !page->removeButton()) {
            fail(QStringLiteral("leftovers: no result page"));
            return;
        }
        page->removeButton()->click();
        NAShowLeftOverSheet* sheet = nullptr;
        if (!waitFor(
                [&] {
                    sheet = page->showloftoversheet();
                    return sheet && sheetParent(sheet);
                },
                3000)) {
            fail(QStringLiteral("leftovers: no sheet"));
            return;
        }
        QTest::qWait(150);
        shoot(QStringLiteral("vexbane-leftovers"));
        sheet->doneActiobn();
        QTest::qWait(50);
        shoot(QStringLiteral("vexbane-after-remove"));
        delegate_.startOverBtn()->click();
    }

  private:
    AppDelegate& delegate_;
    QString out_;
};

}  // namespace

int main(int argc, char* argv[]) {
    QTemporaryDir scratch;
    if (!scratch.isValid())
        return 2;
    qputenv("SYSMEND_CONFIG_DIR", (scratch.path() + QStringLiteral("/config")).toLocal8Bit());
    const QString volume = scratch.path() + QStringLiteral("/volume");
    if (QProcess::execute(QStringLiteral(SYSMEND_CLI), {QStringLiteral("sample-volume"), volume}) !=
        0) {
        std::fprintf(stderr, "gui_tour: could not write the sample volume\n");
        return 2;
    }
    Volume::setCurrent(Volume(volume.toStdString(), "/Users/alice"));

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Sysmend"));
    initGuiResources();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/sysmend.svg")));
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : scratch.path();
    QDir().mkpath(out);

    AppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    delegate.window()->show();
    QTest::qWait(1200);  // the window comes to the front after a second

    Tour tour(delegate, out);
    tour.shoot(QStringLiteral("launch"));
    tour.homeFolderPrompt();

    // From here on, a user who granted the folders: no chooser comes up.
    AppSandboxFileAccess& access = AppSandboxFileAccess::fileAccess();
    for (const char* folder : {"/Users/alice", "/Applications", "/Library/Preferences"})
        access.persistPermissionPath(folder);
    tour.scanTool(Crashes, QStringLiteral("crashes"));
    tour.arpCache();
    tour.scanTool(AppViewer, QStringLiteral("app-viewer"));
    tour.scanTool(StartupItems, QStringLiteral("startup-items"));
    tour.firewall();
    tour.scanTool(Vexbane, QStringLiteral("vexbane"));
    tour.waitingSheet();
    tour.scanSheet();
    tour.leftovers(volume);
    return failures == 0 ? 0 : 1;
}
