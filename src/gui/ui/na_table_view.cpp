#include "ui/na_table_view.h"

#include <QHeaderView>

namespace sysmend {

NATableView::NATableView(QWidget* parent) : QTableWidget(parent) {
    setColumnCount(1);
    horizontalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    verticalHeader()->hide();
    setShowGrid(false);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
}

int NATableView::selectedRow() const {
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

QItemSelectionModel::SelectionFlags NATableView::selectionCommand(const QModelIndex& index,
                                                                  const QEvent* event) const {
    if (index.isValid() && !(index.flags() & Qt::ItemIsSelectable))
        return QItemSelectionModel::NoUpdate;
    return QTableWidget::selectionCommand(index, event);
}

}  // namespace sysmend
