// Sysmend without a mouse: Crashes and Vexbane driven from the choice of tool to Remove and
// Start Over with key presses only, on the sample volume; and, on every page and sheet met on
// the way, a check that each control a keyboard or screen reader reaches has a name and that
// each check box tells assistive technology the mark its model holds.
#include <QAbstractButton>
#include <QAccessible>
#include <QProcess>

#include "adware/na_adware_removal_pvc.h"
#include "app/na_result_list_hvc.h"
#include "app/na_start_page.h"
#include "appviewer/na_show_left_over_sheet.h"
#include "gui_test_env.h"
#include "network/na_arp_cache_pvc.h"
#include "sandbox/app_sandbox_file_access.h"
#include "ui/na_group_models.h"
#include "ui/na_os_check_button.h"
#include "ui/na_progress_panel_vc.h"

using namespace sysmend;
using namespace sysmend::test;

namespace {

QString describe(const QWidget* widget) {
    return QStringLiteral("%1 \"%2\"")
        .arg(QString::fromLatin1(widget->metaObject()->className()), widget->objectName());
}

// The mark a check box in a table's row stands for, from the table's model.
std::optional<qlonglong> markOfRow(const QWidget* box) {
    const NATableView* table = NATableView::enclosingTable(box);
    const int row = table ? table->rowForView(box) : -1;
    if (row < 0)
        return std::nullopt;
    return table->model()->index(row, 0).data(MarkRole).toLongLong();
}

}  // namespace

class KeyboardAccessTest : public QObject {
    Q_OBJECT

  private:
    QTemporaryDir scratch_;
    std::unique_ptr<AppDelegate> delegate_;

    QWidget* window() const { return delegate_->window(); }
    NACategoryObj& category(Row row) const { return categoryOf(*delegate_, row); }
    QString host(const std::string& volumePath) const {
        return QString::fromStdString(Volume::current().hostPath(volumePath));
    }

    // A key press where a user's would land: on the widget that has the focus.
    void press(int key) {
        // The offscreen platform does not give the window back its activation when a sheet
        // over it closes, as a desktop does: do it here.
        if (!QApplication::activeWindow() || !QApplication::activeWindow()->isVisible()) {
            window()->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(window()));
        }
        QWidget* target = QApplication::focusWidget();
        QTest::keyClick(target ? target : window(), static_cast<Qt::Key>(key));
        QTest::qWait(10);
    }
    void tabTo(const QWidget* wanted) {
        for (int i = 0; i < 12 && QApplication::focusWidget() != wanted; ++i)
            press(Qt::Key_Tab);
        QVERIFY2(QApplication::focusWidget() == wanted,
                 qPrintable(QStringLiteral("Tab never reached ") + describe(wanted) +
                            QStringLiteral(", focus on ") +
                            (QApplication::focusWidget() ? describe(QApplication::focusWidget())
                                                         : QStringLiteral("nothing"))));
    }

    // Every visible control of `top` that a keyboard or a pointer reaches names itself; every
    // check box reports checked, unchecked or mixed as its row's mark says; every table row
    // has a name and, where it can be checked, the model's state.
    void audit(QWidget* top, const QString& where) {
        QList<QWidget*> widgets = top->findChildren<QWidget*>();
        widgets.prepend(top);
        QStringList nameless;
        for (QWidget* widget : widgets) {
            if (!widget->isVisible())
                continue;
            const bool reachable =
                widget->focusPolicy() != Qt::NoFocus || qobject_cast<QAbstractButton*>(widget);
            QAccessibleInterface* node = QAccessible::queryAccessibleInterface(widget);
            QVERIFY(node != nullptr);
            if (reachable && node->text(QAccessible::Name).isEmpty())
                nameless << describe(widget);
            if (auto* box = qobject_cast<NAOSCheckButton*>(widget)) {
                QCOMPARE(node->role(), QAccessible::CheckBox);
                const QAccessible::State state = node->state();
                QCOMPARE(state.checked && !state.checkStateMixed, box->state() == 1);
                QCOMPARE(bool(state.checkStateMixed), box->state() == -1);
                if (const auto mark = markOfRow(box); mark && box->isEnabled())
                    QCOMPARE(box->state(), int(*mark));
            }
            auto* table = qobject_cast<NATableView*>(widget);
            if (!table || !node->tableInterface())
                continue;
            for (int row = 0; row < table->rowCount(); ++row) {
                QAccessibleInterface* cell = node->tableInterface()->cellAt(row, 0);
                QVERIFY(cell != nullptr);
                QVERIFY2(!cell->text(QAccessible::Name).isEmpty(),
                         qPrintable(where + QStringLiteral(": a nameless row")));
                const QModelIndex index = table->model()->index(row, 0);
                // A row tells checked or not; the mixed state is its check box's to tell.
                if (index.flags() & Qt::ItemIsUserCheckable)
                    QCOMPARE(bool(cell->state().checked), index.data(MarkRole).toLongLong() == 1);
            }
        }
        QVERIFY2(nameless.isEmpty(),
                 qPrintable(where + QStringLiteral(": no name on ") + nameless.join(u", ")));
    }

    // Audits every sheet shown over the window, and the window.
    void auditAll(const QString& where) {
        QCoreApplication::processEvents();
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (!top->isVisible())
                continue;
            // A page the shell let go must not linger as a window of its own.
            QVERIFY2(top == window() || top->inherits("QDialog") ||
                         (top->windowFlags() & Qt::Popup) == Qt::Popup,
                     qPrintable(where + QStringLiteral(": a stray window ") + describe(top)));
            audit(top, where);
        }
    }

  private slots:
    void initTestCase() {
        QVERIFY(scratch_.isValid());
        qputenv("SYSMEND_CONFIG_DIR", (scratch_.path() + QStringLiteral("/config")).toLocal8Bit());
        const QString volume = scratch_.path() + QStringLiteral("/volume");
        QCOMPARE(QProcess::execute(QStringLiteral(SYSMEND_CLI),
                                   {QStringLiteral("sample-volume"), volume}),
                 0);
        Volume::setCurrent(Volume(volume.toStdString(), "/Users/alice"));
        initGuiResources();
        delegate_ = launch();
        window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window()));

        // The folder prompt of a first run, reached and dismissed from the keyboard.
        auto* page = qobject_cast<NARootPVC*>(delegate_->controllerView());
        QVERIFY(page != nullptr);
        bool granted = true;
        page->grantUserPermission([&](bool answer) { granted = answer; });
        QTRY_VERIFY(page->userOpenpanel() && page->userOpenpanel()->isVisible());
        auditAll(QStringLiteral("folder prompt"));
        QTest::keyClick(page->userOpenpanel(), Qt::Key_Escape);
        QTRY_VERIFY(!granted);

        for (const char* folder : {"/Users/alice", "/Applications", "/Library/Preferences"})
            AppSandboxFileAccess::fileAccess().persistPermissionPath(folder);
    }

    // Up and Down walk the tools, over the section titles, each showing its page; every page
    // and the sheets of the tools without results pass the audit.
    void theCategoryListWalksEveryTool() {
        tabTo(delegate_->cTable());
        for (int row : {Crashes, ArpCache, AppViewer, StartupItems, Firewall, Vexbane}) {
            QCOMPARE(delegate_->cTable()->selectedRow(), row);
            QVERIFY(delegate_->controllerView() == delegate_->PVC(category(Row(row))));
            auditAll(QString::fromStdString(category(Row(row)).title()));
            press(Qt::Key_Down);
        }
        QCOMPARE(delegate_->cTable()->selectedRow(), int(Vexbane));  // the last tool stays
        for (int row = Vexbane; row > Crashes; --row)
            press(Qt::Key_Up);
        QCOMPARE(delegate_->cTable()->selectedRow(), int(Crashes));
    }

    void keyboardOnlyFromToolToRemoveAndStartOver_data() {
        QTest::addColumn<int>("tool");
        QTest::newRow("Crashes") << int(Crashes);
        QTest::newRow("Vexbane") << int(Vexbane);
    }

    // Key presses only: the tool from the list, Return on its start page, Space on a group and
    // on a second item, Remove and Start Over from the keyboard. The item unchecked with Space
    // stays on disk; every other finding goes, as with clicks.
    void keyboardOnlyFromToolToRemoveAndStartOver() {
        QFETCH(int, tool);
        tabTo(delegate_->cTable());
        while (delegate_->cTable()->selectedRow() < tool)
            press(Qt::Key_Down);
        while (delegate_->cTable()->selectedRow() > tool)
            press(Qt::Key_Up);
        NACategoryObj& shown = category(Row(tool));
        press(Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(shown.displayState(), 1, 20000);
        auto* page = qobject_cast<NAResultListHVC*>(delegate_->controllerView());
        QVERIFY(page != nullptr);
        QVERIFY(!shown.groups().empty());
        auditAll(QString::fromStdString(shown.title()) + QStringLiteral(" results"));

        tabTo(page->g_table());
        const std::shared_ptr<NAGroupObj> group = shown.groups()[0];
        const int before = int(group->isChecked());
        press(Qt::Key_Space);
        QCOMPARE(int(group->isChecked()), before == 1 ? 0 : 1);
        if (group->isChecked() != 1)
            press(Qt::Key_Space);
        QCOMPARE(group->isChecked(), 1);
        QVERIFY(group->contents().size() >= 2);

        tabTo(page->c_table());
        press(Qt::Key_Down);
        QCOMPARE(page->c_table()->selectedRow(), 1);
        press(Qt::Key_Space);
        const std::shared_ptr<NAFileobj> spared = group->contents()[1];
        QCOMPARE(spared->isChecked(), 0);
        QCOMPARE(group->isChecked(), -1);
        auditAll(QString::fromStdString(shown.title()) + QStringLiteral(" after Space"));
        QVERIFY(page->summaryLabel()->text().startsWith(QStringLiteral("%1 files | ").arg([&] {
            int checked = 0;
            for (const auto& g : shown.groups())
                for (const auto& item : g->contents())
                    checked += item->isChecked() == 1;
            return checked;
        }())));

        std::vector<std::string> removed;
        for (const auto& g : shown.groups())
            for (const auto& item : g->contents())
                if (item->isChecked() == 1)
                    removed.push_back(item->filePath());
        tabTo(page->removeButton());
        press(Qt::Key_Space);
        QTRY_VERIFY(!QFile::exists(host(removed.front())));
        for (const std::string& path : removed)
            QVERIFY2(!QFile::exists(host(path)), path.c_str());
        QVERIFY(QFile::exists(host(spared->filePath())));
        QCOMPARE(shown.groups().size(), 1u);
        QCOMPARE(shown.groups()[0]->contents(), NAFileobjArray{spared});

        tabTo(delegate_->startOverBtn());
        press(Qt::Key_Space);
        QCOMPARE(shown.displayState(), 0);
    }

    // The sheets the walks brought up once, shown again: the waiting and scan sheets, and the
    // ARP cache guide from its button.
    void theSheetsAreNamed() {
        for (QDialog* sheet :
             {static_cast<QDialog*>(
                  qobject_cast<NAStartPage*>(delegate_->PVC(category(Crashes)))->progressPanel()),
              static_cast<QDialog*>(
                  qobject_cast<NAAdwareRemovalPVC*>(delegate_->PVC(category(Vexbane)))
                      ->progressPanel2vc())}) {
            QVERIFY(sheet != nullptr);
            beginSheet(window(), sheet, {});
            auditAll(QString::fromLatin1(sheet->metaObject()->className()));
            endSheet(sheet);
        }
        auto* arp = qobject_cast<NAARPCachePVC*>(delegate_->PVC(category(ArpCache)));
        QVERIFY(arp != nullptr);
        arp->guideButton->click();
        QTRY_VERIFY(arp->helpWC() && arp->helpWC()->isVisible());
        auditAll(QStringLiteral("ARP cache guide"));
        arp->helpWC()->closeAction();
    }

    // The leftovers sheet: its list, its buttons and Escape, all from the keyboard.
    void theLeftoversSheetWorksWithoutAMouse() {
        auto* page = qobject_cast<NAResultListHVC*>(delegate_->HVC(category(Vexbane)));
        QVERIFY(page != nullptr);
        NAFileobjArray failed{std::make_shared<NAFileobj>("/Users/alice/Library/gone.plist")};
        NAShowLeftOverSheet sheet;
        sheet.loadWindow();
        sheet.setLeftOverFiles(&failed);
        bool ended = false;
        beginSheet(window(), &sheet, [&](int) { ended = true; });
        QVERIFY(QTest::qWaitForWindowExposed(&sheet));
        auditAll(QStringLiteral("leftovers sheet"));
        for (QAbstractButton* button : sheet.findChildren<QAbstractButton*>()) {
            if (button->isVisible())
                QVERIFY2(button->focusPolicy() & Qt::TabFocus, qPrintable(describe(button)));
        }
        QTest::keyClick(&sheet, Qt::Key_Escape);
        QVERIFY(ended);
        QVERIFY(failed.empty());
    }
};

QTEST_MAIN(KeyboardAccessTest)
#include "keyboard_access_test.moc"
