#include "ui/na_group_models.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "appviewer/app_information.h"
#include "model/tool_records.h"
#include "platform/path.h"
#include "tools/na_tools.h"

namespace sysmend {

namespace {

int clampedCount(std::size_t size) {
    return static_cast<int>(std::min<std::size_t>(size, std::numeric_limits<int>::max()));
}

QString itemName(const NAFileobj& item) {
    if (const auto* info = dynamic_cast<const NAAppSingleInformation*>(&item))
        return QString::fromStdString(info->key_title());
    if (const auto* job = dynamic_cast<const NAStartupItemObj*>(&item))
        return QString::fromStdString(job->item_id());
    if (!item.fileName().empty())
        return QString::fromStdString(item.fileName());
    if (!item.title().empty())
        return QString::fromStdString(item.title());
    return QString::fromStdString(path::lastPathComponent(item.filePath()));
}

// A mark from setData's value: a check state for CheckStateRole, the mark itself for MarkRole.
std::optional<std::int64_t> markFromValue(const QVariant& value, int role) {
    bool ok = false;
    const qlonglong number = value.toLongLong(&ok);
    if (!ok)
        return std::nullopt;
    if (role == MarkRole)
        return number;
    if (role == Qt::CheckStateRole)
        return markForCheckState(static_cast<Qt::CheckState>(number));
    return std::nullopt;
}

}  // namespace

std::int64_t markForCheckState(Qt::CheckState state) {
    switch (state) {
        case Qt::Checked:
            return 1;
        case Qt::Unchecked:
            return 0;
        case Qt::PartiallyChecked:
            break;
    }
    return -1;
}

Qt::CheckState checkStateForMark(std::int64_t mark) {
    if (mark == 1)
        return Qt::Checked;
    if (mark == 0)
        return Qt::Unchecked;
    return Qt::PartiallyChecked;
}

// --- NAEngineListModel --------------------------------------------------------------------

void NAEngineListModel::reload() {
    changeRows([] {});
}

void NAEngineListModel::checkMarksChanged() {
    if (count_ > 0)
        emit dataChanged(index(0, 0), index(count_ - 1, 0), {Qt::CheckStateRole, MarkRole});
}

int NAEngineListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count_;
}

int NAEngineListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 1;
}

bool NAEngineListModel::rowInRange(int row, std::size_t arraySize) const {
    return row >= 0 && row < count_ && static_cast<std::size_t>(row) < arraySize;
}

void NAEngineListModel::markChanged(const QModelIndex& index) {
    emit dataChanged(index, index, {Qt::CheckStateRole, MarkRole});
}

// --- NAGroupsModel ------------------------------------------------------------------------

NAGroupsModel::NAGroupsModel(QObject* parent) : NAEngineListModel(parent) {}

void NAGroupsModel::setCategoryObj(std::weak_ptr<NACategoryObj> category) {
    changeGroups([&] { category_ = std::move(category); });
}

int NAGroupsModel::actualCount() const {
    const auto category = category_.lock();
    return category ? clampedCount(category->groups().size()) : 0;
}

std::shared_ptr<NAGroupObj> NAGroupsModel::groupAt(int row) const {
    const auto category = category_.lock();
    if (!category || !rowInRange(row, category->groups().size()))
        return nullptr;
    return category->groups()[static_cast<std::size_t>(row)];
}

int NAGroupsModel::rowOfGroup(const NAGroupObj* group) const {
    for (int row = 0; row < rowCount(); ++row) {
        if (groupAt(row).get() == group)
            return row;
    }
    return -1;
}

QVariant NAGroupsModel::data(const QModelIndex& index, int role) const {
    const auto group = index.isValid() ? groupAt(index.row()) : nullptr;
    if (!group)
        return {};
    switch (role) {
        case Qt::DisplayRole:
            return QString::fromStdString(group->title());
        case Qt::AccessibleTextRole:
            return QString::fromStdString(group->title() + ", " + recal_size(group->size()));
        case Qt::CheckStateRole:
            return static_cast<int>(checkStateForMark(group->isChecked()));
        case MarkRole:
            return static_cast<qlonglong>(group->isChecked());
        case SizeRole:
            return static_cast<qlonglong>(group->size());
        default:
            return {};
    }
}

bool NAGroupsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    const auto group = index.isValid() ? groupAt(index.row()) : nullptr;
    const auto mark = markFromValue(value, role);
    if (!group || !mark || !(flags(index) & Qt::ItemIsUserCheckable))
        return false;
    group->setIsChecked(*mark);
    markChanged(index);
    return true;
}

Qt::ItemFlags NAGroupsModel::flags(const QModelIndex& index) const {
    const auto group = index.isValid() ? groupAt(index.row()) : nullptr;
    if (!group)
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (!group->contents().empty() || !group->cache_contents().empty())
        result |= Qt::ItemIsUserCheckable;
    return result;
}

// --- NAGroupContentsModel -----------------------------------------------------------------

NAGroupContentsModel::NAGroupContentsModel(QObject* parent) : NAEngineListModel(parent) {}

void NAGroupContentsModel::setGroup(std::shared_ptr<NAGroupObj> group) {
    changeContents([&] { group_ = std::move(group); });
}

int NAGroupContentsModel::actualCount() const {
    return group_ ? clampedCount(group_->contents().size()) : 0;
}

std::shared_ptr<NAFileobj> NAGroupContentsModel::itemAt(int row) const {
    if (!group_ || !rowInRange(row, group_->contents().size()))
        return nullptr;
    return group_->contents()[static_cast<std::size_t>(row)];
}

QVariant NAGroupContentsModel::data(const QModelIndex& index, int role) const {
    const auto item = index.isValid() ? itemAt(index.row()) : nullptr;
    if (!item)
        return {};
    switch (role) {
        case Qt::DisplayRole:
            return itemName(*item);
        case Qt::AccessibleTextRole: {
            // What a screen reader says of the row: its name, and for a file its path and size.
            QString text = itemName(*item);
            if (!item->filePath().empty())
                text += QStringLiteral(", ") + QString::fromStdString(item->filePath()) +
                        QStringLiteral(", ") + QString::fromStdString(recal_size(item->fileSize()));
            return text;
        }
        case Qt::ToolTipRole:
            return item->filePath().empty() ? QVariant()
                                            : QVariant(QString::fromStdString(item->filePath()));
        case Qt::CheckStateRole:
            return static_cast<int>(checkStateForMark(item->isChecked()));
        case MarkRole:
            return static_cast<qlonglong>(item->isChecked());
        case SizeRole:
            return static_cast<qlonglong>(item->fileSize());
        default:
            return {};
    }
}

bool NAGroupContentsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    const auto item = index.isValid() ? itemAt(index.row()) : nullptr;
    const auto mark = markFromValue(value, role);
    if (!item || !mark)
        return false;
    item->setIsChecked(*mark);
    markChanged(index);
    return true;
}

Qt::ItemFlags NAGroupContentsModel::flags(const QModelIndex& index) const {
    if (!index.isValid() || !itemAt(index.row()))
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable |
           Qt::ItemNeverHasChildren;
}

}  // namespace sysmend
