// The shell: start-up, the category list, which page each selection shows, start over, quit
// on close and the defaults reset.
#include <QSignalSpy>
#include <QTest>
#include <memory>

#include "app/app_delegate.h"
#include "app/na_window_content_view_super_view.h"
#include "gui_test_env.h"

using namespace sysmend;

namespace {

// A result page that records what the shell asks of it.
class RecordingHVC : public NARootHVC {
  public:
    void needRefreshUI() override { ++refreshes; }
    void startOver(QObject* sender) override { startOvers.push_back(sender); }

    int refreshes = 0;
    std::vector<QObject*> startOvers;
};

enum Row { System, Crashes, ArpCache, AppViewer, StartupItems, Security, Firewall, Vexbane };

}  // namespace

class AppDelegateTest : public QObject {
    Q_OBJECT

  private:
    NACategoryObj& category(Row row) const {
        return *delegate_->categorys().at(static_cast<std::size_t>(row));
    }

    void clickRow(Row row) const {
        NATableView* table = delegate_->cTable();
        const QRect rect = table->visualRect(table->model()->index(row, 0));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, rect.center());
    }

    // The page in the content area, checked to be really placed there.
    QWidget* shownPage() const {
        QWidget* page = delegate_->controllerView();
        if (page && page->parentWidget() != delegate_->vc_contentView())
            return nullptr;
        return page;
    }

    test::GuiTestEnv env_;
    std::unique_ptr<AppDelegate> delegate_;
    std::unique_ptr<QSignalSpy> selections_;

  private slots:
    void initTestCase() { env_.setUp(); }

    void init() {
        delegate_ = std::make_unique<AppDelegate>();
        delegate_->applicationDidFinishLaunching();
        delegate_->window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(delegate_->window()));
        selections_ = std::make_unique<QSignalSpy>(delegate_->cTable()->selectionModel(),
                                                   &QItemSelectionModel::selectionChanged);
    }

    void cleanup() {
        selections_.reset();
        delegate_.reset();
    }

    void listsTwoSectionsAndSixTools() {
        QStringList titles;
        QList<qint64> types;
        for (const auto& c : delegate_->categorys()) {
            titles << QString::fromStdString(c->title());
            types << c->categoryType();
        }
        QCOMPARE(titles, QStringList({"System", "Crashes", "ARP Cache", "App Viewer",
                                      "Startup Items", "Security", "Firewall", "Vexbane"}));
        // "Security" keeps 0: the second 100 went to "System".
        QCOMPARE(types, QList<qint64>({100, 2, 1, 0, 6, 0, 4, 3}));
        QCOMPARE(delegate_->cTable()->rowCount(), 8);
        for (int row = 0; row < 8; ++row) {
            const bool section = row == System || row == Security;
            QCOMPARE(delegate_->cTable()->rowHeight(row), section ? 24 : 32);
            QVERIFY(delegate_->cTable()->cellWidget(row, 0) != nullptr);
        }
    }

    void launchShowsTheCrashesStartPage() {
        NACategoryObj& crashes = category(Crashes);
        QVERIFY(delegate_->PVC(crashes) != nullptr);
        QCOMPARE(shownPage(), delegate_->PVC(crashes));
        QCOMPARE(delegate_->PVC(crashes)->categoryObj().get(), &crashes);
        QCOMPARE(delegate_->c_title_text()->text(), QStringLiteral("Crashes"));
        QVERIFY(delegate_->startOverBtn()->isHidden());
        QCOMPARE(delegate_->titlebarAcessoryView()->linePosition(), 2);
        QCOMPARE(delegate_->cTable()->selectedRow(), 1);
        // Selecting the row at start-up must not count as a second visit.
        QVERIFY(delegate_->HVC(crashes) == nullptr);
        QCOMPARE(AppDelegate::current(), delegate_.get());
    }

    void sectionRowsCannotBeSelected() {
        QWidget* before = shownPage();
        clickRow(System);
        clickRow(Security);
        QCOMPARE(selections_->count(), 0);
        QCOMPARE(delegate_->cTable()->selectedRow(), 1);
        QCOMPARE(shownPage(), before);
        QCOMPARE(delegate_->c_title_text()->text(), QStringLiteral("Crashes"));

        // The same clicks do reach the list: a tool row is selected at once.
        clickRow(StartupItems);
        QCOMPARE(selections_->count(), 1);
        QCOMPARE(delegate_->c_title_text()->text(), QStringLiteral("Startup Items"));
    }

    void oneStartPageToolsAlwaysShowTheirStartPage() {
        for (Row row : {ArpCache, Firewall}) {
            NACategoryObj& tool = category(row);
            clickRow(row);
            NARootPVC* startPage = delegate_->PVC(tool);
            clickRow(Crashes);
            // They have no result state: a display state left at 1 changes nothing.
            tool.setDisplayState(1);
            clickRow(row);
            QCOMPARE(delegate_->PVC(tool), startPage);
            QCOMPARE(delegate_->c_title_text()->text(), QString::fromStdString(tool.title()));
            QVERIFY(delegate_->PVC(tool) != nullptr);
            QCOMPARE(shownPage(), delegate_->PVC(tool));
            QVERIFY(delegate_->HVC(tool) == nullptr);
            QVERIFY(delegate_->startOverBtn()->isHidden());
            QCOMPARE(delegate_->titlebarAcessoryView()->linePosition(), 2);
        }
        QCOMPARE(selections_->count(), 6);
    }

    void secondVisitMakesTheResultPageButShowsTheStartPage() {
        NACategoryObj& crashes = category(Crashes);
        NARootPVC* startPage = delegate_->PVC(crashes);
        clickRow(Firewall);
        QCOMPARE(shownPage(), delegate_->PVC(category(Firewall)));
        QVERIFY(startPage->parentWidget() == nullptr);  // taken out, not destroyed

        clickRow(Crashes);
        QCOMPARE(selections_->count(), 2);
        QVERIFY(delegate_->HVC(crashes) != nullptr);
        QCOMPARE(delegate_->HVC(crashes)->categoryObj().get(), &crashes);
        QCOMPARE(delegate_->PVC(crashes), startPage);
        QCOMPARE(shownPage(), startPage);
        QVERIFY(delegate_->startOverBtn()->isHidden());
    }

    void crashesAndVexbaneHaveTheirOwnResultPages() {
        clickRow(Vexbane);
        clickRow(Crashes);
        clickRow(Vexbane);
        QCOMPARE(selections_->count(), 3);
        NARootHVC* crashesResult = delegate_->HVC(category(Crashes));
        NARootHVC* vexbaneResult = delegate_->HVC(category(Vexbane));
        QVERIFY(crashesResult && vexbaneResult);
        QVERIFY(crashesResult != vexbaneResult);
        QCOMPARE(vexbaneResult->categoryObj().get(), &category(Vexbane));
    }

    void resultStateShowsTheResultPageAndStartOverNeedsASelectedRow() {
        NACategoryObj& crashes = category(Crashes);
        auto owned = std::make_unique<RecordingHVC>();
        RecordingHVC* result = owned.get();
        delegate_->setHVC(crashes, std::move(owned));
        QCOMPARE(result->categoryObj().get(), &crashes);
        crashes.setDisplayState(1);
        delegate_->displayViewController(crashes);
        QCOMPARE(shownPage(), result);
        QCOMPARE(result->refreshes, 1);
        QVERIFY(!delegate_->startOverBtn()->isHidden());
        QCOMPARE(delegate_->titlebarAcessoryView()->linePosition(), 1);

        delegate_->cTable()->clearSelection();
        QTest::mouseClick(delegate_->startOverBtn(), Qt::LeftButton);
        QVERIFY(result->startOvers.empty());

        clickRow(Crashes);
        QCOMPARE(result->refreshes, 2);
        QTest::mouseClick(delegate_->startOverBtn(), Qt::LeftButton);
        QCOMPARE(result->startOvers.size(), std::size_t{1});
        QCOMPARE(result->startOvers.front(), delegate_->startOverBtn());
    }

    void closeButtonClosesTheWindow() {
        QSignalSpy closing(delegate_->window(), &NAMainWindow::windowWillClose);
        auto* closeButton =
            delegate_->windowContentviewSuperView()->findChild<NAWindowCloseButton*>();
        QVERIFY(closeButton != nullptr);
        QTest::mouseClick(closeButton, Qt::LeftButton);
        QCOMPARE(closing.count(), 1);
        QVERIFY(!delegate_->window()->isVisible());
    }

    void emptyUserDifoRemovesEveryKey() {
        UserDefaults& defaults = UserDefaults::standardUserDefaults();
        defaults.setBool(true, "haveRunBefor");
        defaults.setObject(plist::Value(std::string("x")), "bd_file:///Users/alice/");
        QCOMPARE(defaults.keys().size(), std::size_t{2});

        delegate_->emptyUserDifo();
        QVERIFY(defaults.keys().empty());
        QVERIFY(UserDefaults(defaults.filePath()).keys().empty());
    }
};

QTEST_MAIN(AppDelegateTest)
#include "app_delegate_test.moc"
