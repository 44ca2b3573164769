#include "app/app_delegate.h"

#include <QAbstractTableModel>
#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTimer>
#include <array>

#include "adware/na_adware_removal_pvc.h"
#include "adware/na_groups_hvc.h"
#include "app/na_result_list_hvc.h"
#include "appviewer/na_app_view_hvc.h"
#include "appviewer/na_app_view_pvc.h"
#include "crashes/na_crashes_remover_pvc.h"
#include "network/na_arp_cache_pvc.h"
#include "network/na_firewall_pvc.h"
#include "settings/user_defaults.h"
#include "startup/na_start_items_hvc.h"
#include "startup/na_startup_items_pvc.h"
#include "ui/na_cell_base_view.h"
#include "ui/na_table_row_view.h"
#include "ui/named_image.h"

namespace sysmend {

namespace {

AppDelegate* currentDelegate = nullptr;

constexpr int kSidebarWidth = 200;
constexpr int kTitleStripHeight = 30;
const QColor kSelectedRowColor(11, 80, 208);
const QColor kTitleColor(45, 57, 71);

// Section rows are known by their place in the list, never by their category's type.
bool isSectionRow(int row) {
    return row == 0 || row == 5;
}

// The pages of each tool, by category type. A tool without a result page has one page only
// and never leaves its start page.
struct ToolPages {
    std::int64_t categoryType;
    std::unique_ptr<NARootPVC> (*makePVC)();
    std::unique_ptr<NARootHVC> (*makeHVC)();
};

template <class Page>
std::unique_ptr<NARootPVC> startPage() {
    return std::make_unique<Page>();
}
template <class Page>
std::unique_ptr<NARootHVC> resultPage() {
    return std::make_unique<Page>();
}

constexpr std::array<ToolPages, 6> kToolPages{{
    {2, startPage<NACrashesRemoverPVC>, resultPage<NAGroupsHVC>},    // Crashes
    {1, startPage<NAARPCachePVC>, nullptr},                          // ARP Cache
    {0, startPage<NAAppViewPVC>, resultPage<NAAppViewHVC>},          // App Viewer
    {6, startPage<NAStartupItemsPVC>, resultPage<NAStartItemsHVC>},  // Startup Items
    {4, startPage<NAFirewallPVC>, nullptr},                          // Firewall
    {3, startPage<NAAdwareRemovalPVC>, resultPage<NAGroupsHVC>},     // Vexbane
}};

const ToolPages* toolPages(std::int64_t categoryType) {
    for (const ToolPages& tool : kToolPages) {
        if (tool.categoryType == categoryType)
            return &tool;
    }
    return nullptr;
}

std::shared_ptr<NACategoryObj> sharedCategory(NACategoryObj& category) {
    return std::static_pointer_cast<NACategoryObj>(category.shared_from_this());
}

// The category list as the table sees it: its rows (section rows cannot be selected) and
// their cell views, both answered by the delegate.
class CategoryList : public QAbstractTableModel, public NATableViewDelegate {
  public:
    CategoryList(const AppDelegate& delegate, QObject* parent)
        : QAbstractTableModel(parent), delegate_(delegate) {}

    void reload() {
        beginResetModel();
        count_ = delegate_.numberOfRowsInTableView();
        endResetModel();
    }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : count_;
    }
    int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : 1;
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid() || index.row() >= count_ || role != Qt::DisplayRole)
            return {};
        return QString::fromStdString(
            delegate_.categorys()[static_cast<std::size_t>(index.row())]->title());
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override {
        if (!index.isValid() || index.row() >= count_)
            return Qt::NoItemFlags;
        Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
        if (delegate_.shouldSelectRow(index.row()))
            flags |= Qt::ItemIsSelectable;
        return flags;
    }

    QWidget* viewForTableColumn(NATableView*, int row) override {
        return row < count_ ? delegate_.viewForTableColumn(row) : nullptr;
    }

  private:
    const AppDelegate& delegate_;
    int count_ = 0;
};

}  // namespace

AppDelegate::AppDelegate() : window_(std::make_unique<NAMainWindow>()) {
    currentDelegate = this;
    window_->setWindowTitle(QStringLiteral("Sysmend"));
    window_->setFixedSize(920, 600);

    auto* windowLayout = new QVBoxLayout(window_.get());
    windowLayout->setContentsMargins(0, 0, 0, 0);
    contentView_ = new QWidget;
    windowLayout->addWidget(contentView_);
    auto* columns = new QHBoxLayout(contentView_);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(0);

    // Sidebar: the application's name under the title strip, then the category list.
    auto* sidebar = new QWidget;
    sidebar->setFixedWidth(kSidebarWidth);
    auto* sidebarColumn = new QVBoxLayout(sidebar);
    sidebarColumn->setContentsMargins(0, kTitleStripHeight + 8, 0, 12);
    sidebarColumn->setSpacing(16);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(18, 0, 12, 0);
    header->setSpacing(10);
    auto* appIcon = new QLabel;
    appIcon->setPixmap(applicationIconImage().pixmap(QSize(30, 30), window_->devicePixelRatioF()));
    auto* appName = new QLabel(QStringLiteral("Sysmend"));
    appName->setStyleSheet(QStringLiteral("color: white; font-size: 17px; font-weight: 600;"));
    header->addWidget(appIcon);
    header->addWidget(appName, 1);
    sidebarColumn->addLayout(header);
    cTable_ = new NATableView;
    cTable_->setStyleSheet(QStringLiteral("QTableView { background: transparent; }"));
    cTable_->viewport()->setAutoFillBackground(false);
    auto* categoryList = new CategoryList(*this, cTable_);
    cTable_->setModel(categoryList);
    cTable_->setTableDelegate(categoryList);
    // First in the Tab order; Up and Down switch tools as a click does.
    cTable_->setFocusPolicy(Qt::StrongFocus);
    cTable_->setAccessibleName(QStringLiteral("Tools"));
    sidebarColumn->addWidget(cTable_, 1);
    columns->addWidget(sidebar);

    // Content column: the title strip (placed by addCustomTitleBar) over the page.
    auto* content = new QWidget;
    contentColumn_ = new QVBoxLayout(content);
    contentColumn_->setContentsMargins(0, 0, 0, 0);
    contentColumn_->setSpacing(0);
    vc_contentView_ = new QWidget;
    // A press on a page must not reach the title bar behind it and move the window.
    vc_contentView_->setAttribute(Qt::WA_NoMousePropagation);
    auto* pageLayout = new QVBoxLayout(vc_contentView_);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    contentColumn_->addWidget(vc_contentView_, 1);
    columns->addWidget(content, 1);

    titlebarAcessoryView_ = new NALineView;
    auto* strip = new QGridLayout(titlebarAcessoryView_);
    strip->setContentsMargins(14, 0, 14, 0);
    c_title_text_ = new QLabel;
    c_title_text_->setStyleSheet(
        QStringLiteral("color: rgb(45, 57, 71); font-size: 13px; font-weight: 600;"));
    startOverBtn_ = new QPushButton(QStringLiteral("Start Over"));
    startOverBtn_->setCursor(Qt::PointingHandCursor);
    startOverBtn_->setStyleSheet(QStringLiteral(
        "QPushButton { color: rgb(11, 80, 208); background: transparent; border: 1px solid "
        "rgb(184, 196, 216); border-radius: 10px; padding: 2px 10px; font-size: 12px; }"
        "QPushButton:pressed { background: rgb(232, 238, 250); }"
        "QPushButton:focus { border: 2px solid rgb(142, 178, 242); }"));
    strip->addWidget(c_title_text_, 0, 0, Qt::AlignCenter);
    strip->addWidget(startOverBtn_, 0, 0, Qt::AlignLeft | Qt::AlignVCenter);

    connect(startOverBtn_, &QPushButton::clicked, this, &AppDelegate::startOverAction);

    // Return presses the shown start page's main button, wherever the focus is in the window.
    for (const QKeySequence& key : {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)}) {
        auto* shortcut = new QShortcut(key, window_.get());
        connect(shortcut, &QShortcut::activated, this, [this] {
            auto* page = qobject_cast<NARootPVC*>(controllerView_);
            QAbstractButton* button = page ? page->mainButton() : nullptr;
            if (button && button->isVisible() && button->isEnabled())
                button->click();
        });
    }
    connect(cTable_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &AppDelegate::tableViewSelectionDidChange);
}

AppDelegate::~AppDelegate() {
    if (currentDelegate == this)
        currentDelegate = nullptr;
}

AppDelegate* AppDelegate::current() {
    return currentDelegate;
}

void AppDelegate::applicationDidFinishLaunching() {
    addCustomTitleBar();
    loadCategorys();
    displayViewController(*categorys_[1]);
    connect(window_.get(), &NAMainWindow::windowWillClose, this, &AppDelegate::windowWillClose);
    QTimer::singleShot(1000, window_.get(), [window = window_.get()] {
        window->show();
        window->raise();
        window->activateWindow();
    });
    // The row of the page just shown, selected silently: a selection change would show the
    // page a second time and so make Crashes' result page before any scan.
    const QSignalBlocker blocker(cTable_->selectionModel());
    cTable_->selectRow(1);
    cTable_->viewport()->update();
}

void AppDelegate::addCustomTitleBar() {
    windowContentviewSuperView_ = new NAWindowContentViewSuperView;
    windowContentviewSuperView_->setSplitX(kSidebarWidth);
    // Behind the content: the content moves into the drawn title bar, which fills the window.
    window_->layout()->replaceWidget(contentView_, windowContentviewSuperView_);
    auto* behind = new QVBoxLayout(windowContentviewSuperView_);
    behind->setContentsMargins(0, 0, 0, 0);
    behind->addWidget(contentView_);

    auto* closeButton = new NAWindowCloseButton(windowContentviewSuperView_);
    closeButton->move(12, (kTitleStripHeight - closeButton->height()) / 2);
    closeButton->raise();
    connect(closeButton, &NAWindowCloseButton::clicked, window_.get(), &QWidget::close);

    titlebarAcessoryView_->setFixedHeight(kTitleStripHeight);
    contentColumn_->insertWidget(0, titlebarAcessoryView_);
    titlebarAcessoryView_->setLinePosition(2);
}

void AppDelegate::loadCategorys() {
    auto make = [](const char* title, ImageRef image, std::int64_t type) {
        auto category = std::make_shared<NACategoryObj>(title, std::move(image));
        category->setCategoryType(type);
        return category;
    };
    auto system = make("System", ImageRef::none(), 100);
    auto security = std::make_shared<NACategoryObj>("Security", ImageRef::none());
    // "Security" was meant to be 100 as well, but the value went to "System" a second time,
    // so "Security" keeps 0. Nothing depends on a section row's type: they are known by
    // their row.
    system->setCategoryType(100);
    // The empty-folder tool is made but deliberately never listed, so it cannot be reached.
    make("Empty Folders", ImageRef::named("emptyFolders"), 5);

    categorys_ = {
        system,
        make("Crashes", ImageRef::named("crashes"), 2),
        make("ARP Cache", ImageRef::named("arpCaches"), 1),
        make("App Viewer", ImageRef::named("appviewer"), 0),
        make("Startup Items", ImageRef::named("startup"), 6),
        security,
        make("Firewall", ImageRef::named("firewall"), 4),
        make("Vexbane", ImageRef::named("adware"), 3),
    };

    const QSignalBlocker blocker(cTable_->selectionModel());
    static_cast<CategoryList*>(cTable_->model())->reload();
    for (int row = 0; row < numberOfRowsInTableView(); ++row) {
        cTable_->setRowHeight(row, heightOfRow(row));
        delete cTable_->itemDelegateForRow(row);
        cTable_->setItemDelegateForRow(row, rowViewForRow(row));
    }
    cTable_->reloadData();
}

QWidget* AppDelegate::viewForTableColumn(int row) const {
    const NACategoryObj& category = *categorys_[static_cast<std::size_t>(row)];
    const QString title = QString::fromStdString(category.title());
    if (isSectionRow(row)) {
        auto* cell = NASplitCellBaseView::initwithNib();
        if (cell && cell->title_view) {
            QFont font = cell->title_view->font();
            font.setPixelSize(11);
            font.setWeight(QFont::DemiBold);
            font.setCapitalization(QFont::AllUppercase);
            font.setLetterSpacing(QFont::AbsoluteSpacing, 0.6);
            cell->title_view->setFont(font);
            cell->title_view->setText(title);
        }
        return cell;
    }
    auto* cell = NACategoryCellBaseView::initwithNib();
    if (cell && cell->title_view && cell->icon_view) {
        QFont font = cell->title_view->font();
        font.setPixelSize(13);
        cell->title_view->setFont(font);
        cell->title_view->setText(title);
        cell->icon_view->setPixmap(namedImage(QString::fromStdString(category.attachImage().value),
                                              cell->icon_view->size(),
                                              window_->devicePixelRatioF()));
    }
    return cell;
}

NATableRowView* AppDelegate::rowViewForRow(int) {
    return new NATableRowView(kSelectedRowColor, cTable_);
}

bool AppDelegate::shouldSelectRow(int row) const {
    return !isSectionRow(row);
}

int AppDelegate::heightOfRow(int row) const {
    return isSectionRow(row) ? 24 : 32;
}

void AppDelegate::tableViewSelectionDidChange() {
    const int row = cTable_->selectedRow();
    if (row >= 0 && row < numberOfRowsInTableView())
        displayViewController(*categorys_[static_cast<std::size_t>(row)]);
}

void AppDelegate::displayViewController(NACategoryObj& category) {
    if (controllerView_ && controllerView_->parentWidget())
        controllerView_->setParent(nullptr);

    const ToolPages* tool = toolPages(category.categoryType());
    if (tool) {
        const bool atStart = category.displayState() == 0;
        if (atStart && !PVC(category)) {
            setPVC(category, tool->makePVC());
            PVC(category)->loadView();
        } else if (tool->makeHVC && !HVC(category)) {
            // Made on the second visit even before any scan: the page then exists, empty, for
            // the hand-over.
            setHVC(category, tool->makeHVC());
            HVC(category)->loadView();
        }
    }

    c_title_text_->setText(QString::fromStdString(category.title()));
    // A one-page tool has no result state to show.
    const bool showsResult = category.displayState() != 0 && tool && tool->makeHVC;
    if (showsResult) {
        startOverBtn_->show();
        NARootHVC* page = HVC(category);
        if (page)
            page->needRefreshUI();
        // A hand-over that waited for the user to come back is consumed by this showing.
        category.setIsNeedRefresh(false);
        controllerView_ = page;
        titlebarAcessoryView_->setLinePosition(1);
    } else {
        controllerView_ = PVC(category);
        startOverBtn_->hide();
        titlebarAcessoryView_->setLinePosition(2);
    }

    if (controllerView_) {
        vc_contentView_->layout()->addWidget(controllerView_);
        controllerView_->show();
    }
    // Tab goes from the category list through the page: on a result page its two tables,
    // Remove, then Start Over in the title strip (made first, it would otherwise come first).
    if (auto* page = qobject_cast<NAResultListHVC*>(showsResult ? controllerView_ : nullptr)) {
        QWidget::setTabOrder(cTable_, page->g_table());
        QWidget::setTabOrder(page->g_table(), page->c_table());
        QWidget::setTabOrder(page->c_table(), page->removeButton());
        QWidget::setTabOrder(page->removeButton(), startOverBtn_);
    }
}

bool AppDelegate::isShowing(const NACategoryObj& category) const {
    const int row = cTable_->selectedRow();
    return row >= 0 && row < numberOfRowsInTableView() &&
           categorys_[static_cast<std::size_t>(row)].get() == &category;
}

void AppDelegate::startOverAction() {
    const int row = cTable_->selectedRow();
    if (row < 0 || row >= numberOfRowsInTableView())
        return;
    if (NARootHVC* page = HVC(*categorys_[static_cast<std::size_t>(row)]))
        page->startOver(startOverBtn_);
}

void AppDelegate::emptyUserDifo() {
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    for (const std::string& key : defaults.keys()) {
        defaults.removeObjectForKey(key);
        defaults.synchronize();
    }
}

void AppDelegate::windowWillClose() {
    QCoreApplication::quit();
}

NARootPVC* AppDelegate::PVC(const NACategoryObj& category) const {
    auto it = pages_.find(&category);
    return it == pages_.end() ? nullptr : it->second.PVC.get();
}

NARootHVC* AppDelegate::HVC(const NACategoryObj& category) const {
    auto it = pages_.find(&category);
    return it == pages_.end() ? nullptr : it->second.HVC.get();
}

void AppDelegate::setPVC(NACategoryObj& category, std::unique_ptr<NARootPVC> page) {
    if (page)
        page->setCategoryObj(sharedCategory(category));
    pages_[&category].PVC = std::move(page);
}

void AppDelegate::setHVC(NACategoryObj& category, std::unique_ptr<NARootHVC> page) {
    if (page)
        page->setCategoryObj(sharedCategory(category));
    pages_[&category].HVC = std::move(page);
}

}  // namespace sysmend
