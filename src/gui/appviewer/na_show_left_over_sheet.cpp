#include "appviewer/na_show_left_over_sheet.h"

#include <QAbstractListModel>

#include "appviewer/app_view_help_vc.h"
#include "appviewer/na_left_over_show_view.h"
#include "ui/na_sheet.h"
#include "ui/na_table_row_view.h"
#include "ui/named_image.h"
#include "ui_NAShowLeftOverSheet.h"

namespace sysmend {

namespace {
constexpr int kRowHeight = 32;
const QColor kSelectedRowColor(230, 230, 230);
}  // namespace

// The table's rows over the sheet's list, as it was at the last reset: the owner may change
// the list between reloads, and the table must not see rows come and go unannounced.
class NAShowLeftOverSheet::ListModel : public QAbstractListModel {
  public:
    explicit ListModel(QObject* parent) : QAbstractListModel(parent) {}

    void reset(const NAFileobjArray* files) {
        beginResetModel();
        files_ = files;
        count_ = files ? static_cast<int>(files->size()) : 0;
        endResetModel();
    }

    std::shared_ptr<NAFileobj> item(int row) const {
        if (!files_ || row < 0 || row >= count_ || static_cast<std::size_t>(row) >= files_->size())
            return nullptr;
        return (*files_)[static_cast<std::size_t>(row)];
    }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : count_;
    }

    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
            return {};
        const auto file = index.isValid() ? item(index.row()) : nullptr;
        return file ? QVariant(QString::fromStdString(file->filePath())) : QVariant();
    }

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren
                               : Qt::NoItemFlags;
    }

  private:
    const NAFileobjArray* files_ = nullptr;
    int count_ = 0;
};

NAShowLeftOverSheet::NAShowLeftOverSheet(const QString& windowNibName, QWidget* parent)
    : QDialog(parent) {
    setObjectName(windowNibName);
}

NAShowLeftOverSheet::~NAShowLeftOverSheet() {
    if (ui_)
        ui_->table->setTableDelegate(nullptr);
}

void NAShowLeftOverSheet::loadWindow() {
    if (!ui_) {
        ui_ = std::make_unique<Ui::NAShowLeftOverSheet>();
        const QString name = objectName();
        ui_->setupUi(this);
        setObjectName(name);

        model_ = new ListModel(this);
        NATableView* list = ui_->table;
        list->setModel(model_);
        list->setRowHeight(heightOfRow(0));
        list->setRowView(rowViewForRow(0));
        list->setTableDelegate(this);

        connect(ui_->helpButton, &QPushButton::clicked, this,
                [this] { helpMessage(ui_->helpButton); });
        connect(ui_->doneButton, &QPushButton::clicked, this, &NAShowLeftOverSheet::doneActiobn);
    }
    ownFiles_.clear();
    leftOverFiles_ = &ownFiles_;
    ui_->appIconImageView->setPixmap(
        applicationIconImage().pixmap(QSize(56, 56), devicePixelRatioF()));
    reloadTable();
}

void NAShowLeftOverSheet::setLeftOverFiles(NAFileobjArray* files) {
    leftOverFiles_ = files ? files : &ownFiles_;
    reloadTable();
}

void NAShowLeftOverSheet::reloadTable() {
    if (model_)
        model_->reset(leftOverFiles_);
}

int NAShowLeftOverSheet::numberOfRowsInTableView() const {
    return model_ ? model_->rowCount() : 0;
}

QWidget* NAShowLeftOverSheet::viewForTableColumn(NATableView*, int row) {
    const auto item = model_ ? model_->item(row) : nullptr;
    if (!item)
        return nullptr;
    NALeftOverShowView* cell = NALeftOverShowView::initwithNib();
    if (cell)
        cell->setObj(item);
    return cell;
}

NATableRowView* NAShowLeftOverSheet::rowViewForRow(int) {
    return new NATableRowView(kSelectedRowColor);
}

int NAShowLeftOverSheet::heightOfRow(int) const {
    return kRowHeight;
}

void NAShowLeftOverSheet::helpMessage(QWidget* sender) {
    if (!popOver_) {
        popOver_ = new NAPopover(this);
        popOver_->setObjectName(QStringLiteral("popOver"));
        popOver_->setContentViewController(new AppViewHelpVC);
    }
    if (sender)
        popOver_->showRelativeToView(sender, NAPopover::Edge::Bottom);
}

void NAShowLeftOverSheet::doneActiobn() {
    endSheet(this);
    if (leftOverFiles_)
        leftOverFiles_->clear();
    reloadTable();
}

void NAShowLeftOverSheet::reject() {
    doneActiobn();
}

QLabel* NAShowLeftOverSheet::appIconImageView() const {
    return ui_ ? ui_->appIconImageView : nullptr;
}

NATableView* NAShowLeftOverSheet::table() const {
    return ui_ ? ui_->table : nullptr;
}

QPushButton* NAShowLeftOverSheet::helpButton() const {
    return ui_ ? ui_->helpButton : nullptr;
}

QPushButton* NAShowLeftOverSheet::doneButton() const {
    return ui_ ? ui_->doneButton : nullptr;
}

}  // namespace sysmend
