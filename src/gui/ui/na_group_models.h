// Item models over a result: the groups of a tool's category, and the items of one group.
//
// They are thin adapters: the rows are read from the engine's arrays on every call, never
// copied. A model announces its row count at each reset and keeps answering that count until
// the next one, so the arrays may change in place (a removal, start over, a new scan) as long
// as reload() or changeGroups() follows before the rows are read again; a row that has gone
// meanwhile answers no data. Marks set through setData propagate through the engine (items,
// sub-groups, parent groups), so a mark change on one model changes rows of the other too:
// whoever sets marks calls checkMarksChanged() on the other model.
//
// One column. Roles: DisplayRole the title (a group's, or an item's name), ToolTipRole an
// item's path, CheckStateRole the mark as Qt::CheckState (1 Checked, 0 Unchecked, anything
// else PartiallyChecked), MarkRole the mark as it is, SizeRole bytes. GUI thread only.
#pragma once

#include <QAbstractTableModel>
#include <cstdint>
#include <memory>
#include <utility>

#include "app/na_category_obj.h"
#include "model/na_fileobj.h"
#include "model/na_group_obj.h"

namespace sysmend {

enum NAResultRole {
    // qint64: the record's isChecked, 1, 0 or -1.
    MarkRole = Qt::UserRole + 1,
    // qint64: a group's running size, an item's fileSize.
    SizeRole,
};

// The mark a check state stands for, and back.
std::int64_t markForCheckState(Qt::CheckState state);
Qt::CheckState checkStateForMark(std::int64_t mark);

// A one-column list over an array the engine holds. It announces the array's size at each
// reset and answers that count until the next one, so the array may change in place between
// resets; rowInRange() tells whether a row is both announced and still in the array.
class NAEngineListModel : public QAbstractTableModel {
  public:
    using QAbstractTableModel::QAbstractTableModel;

    // Reads the array anew after it changed.
    void reload();
    // Changes the array inside a reset: `change` runs between its two halves.
    template <class Change>
    void changeRows(Change&& change) {
        beginResetModel();
        change();
        count_ = actualCount();
        endResetModel();
    }
    // Every row's mark may have changed (through the other model's records).
    void checkMarksChanged();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;

  protected:
    // The array's size now.
    virtual int actualCount() const = 0;
    bool rowInRange(int row, std::size_t arraySize) const;
    // Tells the views that a row's mark was set.
    void markChanged(const QModelIndex& index);

  private:
    int count_ = 0;
};

class NAGroupsModel : public NAEngineListModel {
    Q_OBJECT
  public:
    explicit NAGroupsModel(QObject* parent = nullptr);

    // The category whose top-level groups are the rows; held weakly. Resets the model.
    void setCategoryObj(std::weak_ptr<NACategoryObj> category);
    std::shared_ptr<NACategoryObj> categoryObj() const { return category_.lock(); }

    // The group of a row, or null for a row that is not there (any more).
    std::shared_ptr<NAGroupObj> groupAt(int row) const;
    // The row of a group, or -1.
    int rowOfGroup(const NAGroupObj* group) const;

    // Changes the groups inside a reset: `change` runs between its two halves.
    template <class Change>
    void changeGroups(Change&& change) {
        changeRows(std::forward<Change>(change));
    }

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // CheckStateRole or MarkRole: sets the group's mark, which the engine passes on to its
    // items and sub-groups. Refused for a group without items, whose box is disabled.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  protected:
    int actualCount() const override;

  private:
    std::weak_ptr<NACategoryObj> category_;
};

class NAGroupContentsModel : public NAEngineListModel {
    Q_OBJECT
  public:
    explicit NAGroupContentsModel(QObject* parent = nullptr);

    // The group whose contents are the rows (kept alive while shown; null shows no rows).
    // Resets the model.
    void setGroup(std::shared_ptr<NAGroupObj> group);
    const std::shared_ptr<NAGroupObj>& group() const { return group_; }

    std::shared_ptr<NAFileobj> itemAt(int row) const;

    // Changes the group's items inside a reset: `change` runs between its two halves.
    template <class Change>
    void changeContents(Change&& change) {
        changeRows(std::forward<Change>(change));
    }

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // CheckStateRole or MarkRole: sets the item's mark, which the engine passes on to its
    // children and up to its group.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  protected:
    int actualCount() const override;

  private:
    std::shared_ptr<NAGroupObj> group_;
};

}  // namespace sysmend
