#include "app/na_result_list_hvc.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>

#include "adware/groups_removal.h"
#include "app/app_delegate.h"
#include "app/check_summary.h"
#include "ui/item_image.h"
#include "ui/na_result_cell_views.h"
#include "ui/na_sheet.h"

namespace sysmend {

namespace {

const QString kGroupTableIdentifier = QStringLiteral("gTable");
const QColor kSelectedGroupColor(11, 80, 208);
constexpr int kGroupTableWidth = 260;
constexpr int kGroupRowHeight = 48;
constexpr int kBottomBarHeight = 60;

const char* const kRemoveButtonStyle =
    "QPushButton { background: rgb(11, 80, 208); color: white; border: none; border-radius: 6px;"
    " padding: 0 28px; min-height: 32px; font-size: 13px; font-weight: 600; }"
    "QPushButton:hover { background: rgb(26, 98, 228); }"
    "QPushButton:pressed { background: rgb(8, 62, 166); }"
    "QPushButton:disabled { background: rgb(190, 203, 226); }"
    "QPushButton:focus { border: 2px solid rgb(142, 178, 242); }";

}  // namespace

NAResultListHVC::NAResultListHVC(QWidget* parent) : NARootHVC(parent) {}

NAResultListHVC::~NAResultListHVC() {
    // The table models call back into the page while they go; let them go first.
    if (g_table_)
        g_table_->setTableDelegate(nullptr);
    if (c_table_)
        c_table_->setTableDelegate(nullptr);
    // The sheets hang from the window, which may outlive the page; the leftovers sheet must
    // not keep pointing at this page's list.
    delete showloftoversheet_;
    delete progressPanel_;
}

void NAResultListHVC::loadView() {
    setAutoFillBackground(true);
    QPalette background = palette();
    background.setColor(QPalette::Window, Qt::white);
    setPalette(background);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    c_view_ = new NANoContentView;
    auto* tables = new QHBoxLayout(c_view_);
    tables->setContentsMargins(0, 0, 0, 0);
    tables->setSpacing(0);

    // Bound to the category's groups by the first reloadData, at the hand-over: the page may
    // be made on a visit while a scan still fills them.
    groupsModel_ = new NAGroupsModel(this);
    contentsModel_ = new NAGroupContentsModel(this);

    g_table_ = new NATableView;
    g_table_->setIdentifier(kGroupTableIdentifier);
    g_table_->setFixedWidth(kGroupTableWidth);
    g_table_->setStyleSheet(QStringLiteral("QTableView { background: rgb(247, 248, 250); }"));
    g_table_->setModel(groupsModel_);
    g_table_->setRowHeight(kGroupRowHeight);
    g_table_->setRowView(rowViewForRow(g_table_, 0));
    g_table_->setAllowsEmptySelection(false);
    // Tab reaches both tables; Up and Down move through their rows, Space checks a row.
    g_table_->setFocusPolicy(Qt::StrongFocus);
    g_table_->setAccessibleName(QStringLiteral("Groups"));
    g_table_->setTableDelegate(this);
    tables->addWidget(g_table_);

    auto* separator = new QFrame;
    separator->setFixedWidth(1);
    separator->setStyleSheet(QStringLiteral("background: rgb(226, 230, 236);"));
    tables->addWidget(separator);

    contents_view_superview_ = new NANoContentView;
    auto* contentColumn = new QVBoxLayout(contents_view_superview_);
    contentColumn->setContentsMargins(0, 0, 0, 0);
    c_table_ = new NATableView;
    c_table_->setIdentifier(QStringLiteral("cTable"));
    c_table_->setStyleSheet(QStringLiteral("QTableView { background: white; }"));
    c_table_->setModel(contentsModel_);
    c_table_->setRowHeight(contentRowHeight());
    c_table_->setRowView(rowViewForRow(c_table_, 0));
    c_table_->setTableDelegate(this);
    c_table_->setFocusPolicy(Qt::StrongFocus);
    c_table_->setAccessibleName(QStringLiteral("Items of the selected group"));
    contentColumn->addWidget(c_table_);
    tables->addWidget(contents_view_superview_, 1);
    column->addWidget(c_view_, 1);

    auto* bar = new QWidget;
    buildBottomBar(bar);
    column->addWidget(bar);

    removeFaildFiles_.clear();
    contents_view_superview_->setHiddenSubviews(false);
    refreshBottomBar(false);
}

void NAResultListHVC::buildBottomBar(QWidget* bar) {
    bar->setObjectName(QStringLiteral("bottomBar"));
    bar->setAttribute(Qt::WA_StyledBackground);
    bar->setFixedHeight(kBottomBarHeight);
    bar->setStyleSheet(QStringLiteral(
        "#bottomBar { background: white; border-top: 1px solid rgb(226, 230, 236); }"));
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(22, 0, 20, 0);
    row->setSpacing(12);
    summaryLabel_ = new QLabel;
    summaryLabel_->setStyleSheet(
        QStringLiteral("color: rgb(72, 81, 95); font-size: 13px; font-weight: 500;"));
    row->addWidget(summaryLabel_, 1);
    removeButton_ = new QPushButton;
    removeButton_->setCursor(Qt::PointingHandCursor);
    removeButton_->setStyleSheet(QString::fromLatin1(kRemoveButtonStyle));
    row->addWidget(removeButton_);
    connect(removeButton_, &QPushButton::clicked, this, [this] { removeAction(removeButton_); });
}

const NAGroupObjArray& NAResultListHVC::groups() const {
    static const NAGroupObjArray kNoGroups;
    const auto category = categoryObj();
    return category ? category->groups() : kNoGroups;
}

bool NAResultListHVC::anyGroupChecked() const {
    const NAGroupObjArray& all = groups();
    return std::any_of(all.begin(), all.end(),
                       [](const auto& group) { return group->isChecked() != 0; });
}

void NAResultListHVC::needRefreshUI() {
    const auto category = categoryObj();
    if (!category || !category->isNeedRefresh())
        return;
    sortGroupsByIndex(category->sort_selected_index());
    reloadData();
}

void NAResultListHVC::reloadData() {
    const auto category = categoryObj();
    if (groupsModel_) {
        if (groupsModel_->categoryObj() != category)
            groupsModel_->setCategoryObj(category);
        else
            groupsModel_->reload();
    }
    if (category)
        category->setBtnTitle("Remove");
    updateCheckState();
    if (c_view_)
        showEmptyState(groups().empty());
}

void NAResultListHVC::showEmptyState(bool empty) {
    c_view_->setHiddenSubviews(empty);
}

void NAResultListHVC::updateCheckState() {
    if (groupsModel_) {
        groupsModel_->checkMarksChanged();
        contentsModel_->checkMarksChanged();
    }
    const auto category = categoryObj();
    willCleanSize_ = category ? sysmend::updateCheckState(*category).willCleanSize : 0;
    refreshBottomBar(anyGroupChecked());
}

void NAResultListHVC::refreshBottomBar(bool removable) {
    if (!summaryLabel_)
        return;
    const auto category = categoryObj();
    summaryLabel_->setText(category ? QString::fromStdString(category->infromation()) : QString());
    const std::string title = category ? category->btnTitle() : std::string();
    removeButton_->setText(title.empty() ? QStringLiteral("Remove")
                                         : QString::fromStdString(title));
    removeButton_->setEnabled(removable);
}

void NAResultListHVC::startOver(QObject*) {
    const auto category = categoryObj();
    if (!category)
        return;
    category->setDisplayState(0);
    category->setInfromation("");
    changeResult([&] { category->groups().clear(); });
    removeFaildFiles_.clear();
    setDisplayIndex(0);
    if (contents_view_superview_)
        contents_view_superview_->setHiddenSubviews(false);
    refreshBottomBar(false);
    // A page that is not placed in the window has nothing to switch away from.
    if (parentWidget() && AppDelegate::current())
        AppDelegate::current()->displayViewController(*category);
}

void NAResultListHVC::setDisplayIndex(std::int64_t index) {
    displayIndex_ = index;
    const auto category = categoryObj();
    if (!category)
        return;
    auto filter = [&] { sysmend::setDisplayIndex(category->groups(), index); };
    if (contentsModel_)
        contentsModel_->changeContents(filter);
    else
        filter();
}

void NAResultListHVC::removeAction(QObject*) {
    removeBehindProgressSheet([](NACategoryObj& category) { sysmend::removeAction(category); });
}

bool NAResultListHVC::removeBehindProgressSheet(const std::function<void(NACategoryObj&)>& removal,
                                                const std::function<void()>& beforeSheetEnds) {
    const auto category = categoryObj();
    if (!category || !anyGroupChecked())
        return false;
    if (!progressPanel_) {
        progressPanel_ = new NAProgressPanelVC(QStringLiteral("NAProgressPanelVC"), this);
        progressPanel_->loadWindow();
    }
    beginSheet(this, progressPanel_, [this](int) {
        reloadTables();
        if (groups().empty())
            contents_view_superview_->setHiddenSubviews(true);
        updateCheckState();
    });
    // On the GUI thread, with the sheet up; the sheet ends in this call.
    changeResult([&] { removal(*category); });
    if (beforeSheetEnds)
        beforeSheetEnds();
    endSheet(progressPanel_, kModalResponseContinue);
    return true;
}

void NAResultListHVC::changeResult(const std::function<void()>& change) {
    if (!groupsModel_) {
        change();
        return;
    }
    groupsModel_->changeGroups([&] { contentsModel_->changeContents(change); });
    showGroupAtSelectedRow();
}

void NAResultListHVC::reloadTables() {
    if (!groupsModel_)
        return;
    groupsModel_->reload();
    contentsModel_->reload();
    showGroupAtSelectedRow();
}

void NAResultListHVC::showGroupAtSelectedRow() {
    const int row = g_table_->selectedRow();
    std::shared_ptr<NAGroupObj> group = row >= 0 ? groupsModel_->groupAt(row) : nullptr;
    if (group == currentGroup_)
        return;
    currentGroup_ = std::move(group);
    contentsModel_->setGroup(currentGroup_);
}

void NAResultListHVC::showLeftOvers() {
    if (!showloftoversheet_)
        showloftoversheet_ = new NAShowLeftOverSheet(QStringLiteral("NAShowLeftOverSheet"), this);
    if (!showloftoversheet_->isWindowLoaded())
        showloftoversheet_->loadWindow();
    showloftoversheet_->setLeftOverFiles(&removeFaildFiles_);
    beginSheet(this, showloftoversheet_, {});
}

QWidget* NAResultListHVC::viewForTableColumn(NATableView* table, int row) {
    if (table->identifier() != kGroupTableIdentifier) {
        const auto item = contentsModel_->itemAt(row);
        return item ? contentViewForRow(item) : nullptr;
    }
    const auto group = groupsModel_->groupAt(row);
    if (!group)
        return nullptr;
    auto* cell = NAGroupTableBaseCellView_AppViewer::initwithNib();
    if (!cell)
        return nullptr;
    if (cell->icon_view) {
        cell->icon_view->setPixmap(
            itemImage(group->attachImage(), cell->icon_view->minimumSize(), devicePixelRatioF()));
    }
    setElidedText(cell->title_view, QString::fromStdString(group->title()));
    if (cell->checkBtn) {
        // A group with nothing in it has nothing to check.
        const bool empty = group->contents().empty() && group->cache_contents().empty();
        cell->checkBtn->setState(empty ? 0 : static_cast<int>(group->isChecked()));
        cell->checkBtn->setEnabled(!empty);
    }
    cell->setRepresentObj(group);
    return cell;
}

NATableRowView* NAResultListHVC::rowViewForRow(NATableView* table, int) {
    if (table->identifier() == kGroupTableIdentifier)
        return new NATableRowView2(kSelectedGroupColor);
    return new NATableRowView(QColor(255, 255, 255));
}

void NAResultListHVC::tableViewSelectionDidChange(NATableView* table) {
    if (table->identifier() != kGroupTableIdentifier)
        return;
    const int row = g_table_->selectedRow();
    if (row < 0)
        return;
    currentGroup_ = groupsModel_->groupAt(row);
    contentsModel_->setGroup(currentGroup_);
}

}  // namespace sysmend
