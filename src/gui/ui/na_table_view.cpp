#include "ui/na_table_view.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyle>
#include <algorithm>

#include "ui/na_empty_state.h"
#include "ui/na_table_row_view.h"

namespace sysmend {

namespace {

// Rows above and below the view that get their cell views too, so that a short scroll shows
// finished rows before the next update catches up.
constexpr int kOverscanRows = 4;

// A slim scroller without arrows, as Mac lists have.
const char* const kScrollerStyle =
    "QScrollBar:vertical { background: transparent; width: 10px; margin: 2px 2px 2px 0; }"
    "QScrollBar::handle:vertical { background: rgba(0, 0, 0, 0.25); border-radius: 3px;"
    " min-height: 28px; margin: 0 1px; }"
    "QScrollBar::handle:vertical:hover { background: rgba(0, 0, 0, 0.4); }"
    "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
    "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: transparent; }";

// Hides a cell view that is going. Focus inside it is let go first: hiding a focused widget
// hands focus on as a Tab press would, which moves the table's current row.
void retire(QWidget* view) {
    QWidget* focus = QApplication::focusWidget();
    if (focus && (focus == view || view->isAncestorOf(focus)))
        focus->clearFocus();
    view->hide();
}

// The ring a focused table draws around itself, over its cells, in the accent colour of the
// selection, with a thinner one around the selected row: in a table whose selection is drawn
// white, it is what shows the keyboard's row. It takes no clicks.
class FocusRing : public QWidget {
  public:
    explicit FocusRing(NATableView* table) : QWidget(table), table_(table) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
        hide();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(11, 80, 208, 150), 3));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5), 4, 4);
        const int row = table_->selectedRow();
        if (row < 0)
            return;
        const QRect cell = table_->visualRect(table_->model()->index(row, 0));
        const QRect inRing(table_->viewport()->mapTo(table_, cell.topLeft()), cell.size());
        painter.setPen(QPen(QColor(11, 80, 208, 110), 1.5));
        painter.drawRoundedRect(QRectF(inRing).adjusted(4, 2, -4, -2), 3, 3);
    }

  private:
    NATableView* table_;
};

void repolish(QWidget* widget) {
    QStyle* style = widget->style();
    style->unpolish(widget);
    style->polish(widget);
    widget->update();
}

}  // namespace

NATableView::NATableView(QWidget* parent) : QTableView(parent) {
    horizontalHeader()->hide();
    horizontalHeader()->setStretchLastSection(true);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    setShowGrid(false);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    verticalScrollBar()->setStyleSheet(QString::fromLatin1(kScrollerStyle));
    setWordWrap(false);
    setCornerButtonEnabled(false);
    // Tab leaves the table for the next control instead of walking its cells.
    setTabKeyNavigation(false);
    focusRing_ = new FocusRing(this);
}

QModelIndex NATableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const int step = action == MoveUp || action == MovePrevious ? -1
                     : action == MoveDown || action == MoveNext ? 1
                                                                : 0;
    if (step == 0 || !model())
        return QTableView::moveCursor(action, modifiers);
    const int from = currentIndex().isValid() ? currentIndex().row() : selectedRow();
    for (int row = from + step; row >= 0 && row < rowCount(); row += step) {
        const QModelIndex index = model()->index(row, 0);
        if (index.flags() & Qt::ItemIsSelectable)
            return index;
    }
    return currentIndex();
}

void NATableView::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space || event->modifiers() != Qt::NoModifier) {
        QTableView::keyPressEvent(event);
        return;
    }
    const int row = selectedRow();
    if (row >= 0)
        scrollTo(model()->index(row, 0));
    updateCellViews();
    QWidget* cell = row >= 0 ? cellWidget(row) : nullptr;
    auto* box = cell ? cell->findChild<QAbstractButton*>(QStringLiteral("checkBtn")) : nullptr;
    if (box && box->isEnabled() && box->isVisible())
        box->click();  // the click's own path: the same propagation and summary as the mouse
    event->accept();
}

void NATableView::focusInEvent(QFocusEvent* event) {
    QTableView::focusInEvent(event);
    // The window coming to the front hands the focus to the first list: that is no choice of
    // the user's, so no ring then, unless the table had it when the window went behind a sheet.
    if (event->reason() != Qt::ActiveWindowFocusReason)
        ringShown_ = true;
    if (ringShown_) {
        focusRing_->setGeometry(rect());
        focusRing_->raise();
        focusRing_->show();
    }
    // The keyboard acts on the selected row: give a table that has none the current row, or
    // else its first selectable one.
    if (selectedRow() < 0 && model()) {
        const QModelIndex current = currentIndex();
        if (current.isValid() && (current.flags() & Qt::ItemIsSelectable))
            selectRowIndexes(current.row());
        else
            selectRowIndexes(moveCursor(MoveDown, Qt::NoModifier).row());
    }
}

void NATableView::focusOutEvent(QFocusEvent* event) {
    QTableView::focusOutEvent(event);
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        ringShown_ = false;
    focusRing_->hide();
}

void NATableView::setTableDelegate(NATableViewDelegate* delegate) {
    delegate_ = delegate;
    reloadData();
}

void NATableView::setRowView(NATableRowView* rowView) {
    QAbstractItemDelegate* old = itemDelegate();
    if (rowView)
        rowView->setParent(this);
    setItemDelegate(rowView);
    if (old && old != rowView && old->parent() == this)
        old->deleteLater();
}

void NATableView::setRowHeight(int height) {
    verticalHeader()->setDefaultSectionSize(height);
    updateCellViews();
}

void NATableView::setModel(QAbstractItemModel* newModel) {
    if (QAbstractItemModel* old = model())
        disconnect(old, nullptr, this, nullptr);
    for (const QPersistentModelIndex& index : cells_)
        dropCellView(index);
    cells_.clear();
    QTableView::setModel(newModel);
    if (!newModel)
        return;
    // Connected after the view's and the header's own handlers, so that the header already
    // knows the new rows when the cell views are placed.
    connect(newModel, &QAbstractItemModel::modelAboutToBeReset, this,
            [this] { rowBeforeChange_ = selectedRow(); });
    connect(newModel, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [this] { rowBeforeChange_ = selectedRow(); });
    connect(newModel, &QAbstractItemModel::modelReset, this, &NATableView::modelWasReset);
    connect(newModel, &QAbstractItemModel::rowsRemoved, this, &NATableView::rowsWereRemoved);
    connect(newModel, &QAbstractItemModel::rowsInserted, this, &NATableView::updateCellViews);
    connect(newModel, &QAbstractItemModel::layoutChanged, this, &NATableView::updateCellViews);
    updateCellViews();
}

int NATableView::rowCount() const {
    return model() ? model()->rowCount() : 0;
}

int NATableView::selectedRow() const {
    if (!selectionModel())
        return -1;
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void NATableView::selectRowIndexes(int row) {
    if (!model() || row < 0 || row >= rowCount())
        return;
    const QModelIndex index = model()->index(row, 0);
    if (!(index.flags() & Qt::ItemIsSelectable))
        return;
    selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

int NATableView::rowForView(const QWidget* view) const {
    while (view && view->parentWidget() != viewport())
        view = view->parentWidget();
    if (!view)
        return -1;
    for (const QPersistentModelIndex& index : cells_) {
        if (index.isValid() && indexWidget(index) == view)
            return index.row();
    }
    return -1;
}

QWidget* NATableView::cellWidget(int row, int column) const {
    if (!model() || row < 0 || row >= rowCount() || column < 0 || column >= model()->columnCount())
        return nullptr;
    return indexWidget(model()->index(row, column));
}

NATableView* NATableView::enclosingTable(const QWidget* view) {
    for (QWidget* w = view ? view->parentWidget() : nullptr; w; w = w->parentWidget()) {
        if (auto* table = qobject_cast<NATableView*>(w))
            return table;
    }
    return nullptr;
}

void NATableView::reloadData() {
    for (const QPersistentModelIndex& index : cells_)
        dropCellView(index);
    cells_.clear();
    updateCellViews();
    viewport()->update();
}

void NATableView::updateCellViews() {
    if (inCellUpdate_)
        return;
    const int count = rowCount();
    int first = 0;
    int last = -1;
    if (delegate_ && count > 0 && viewport()->height() > 0) {
        first = rowAt(0);
        last = rowAt(viewport()->height() - 1);
        if (first < 0)
            first = 0;
        if (last < 0)
            last = count - 1;
        first = std::max(0, first - kOverscanRows);
        last = std::min(count - 1, last + kOverscanRows);
    }

    std::vector<QPersistentModelIndex> kept;
    kept.reserve(cells_.size());
    for (const QPersistentModelIndex& index : cells_) {
        if (index.isValid() && index.row() >= first && index.row() <= last && indexWidget(index))
            kept.push_back(index);
        else
            dropCellView(index);
    }
    cells_ = std::move(kept);
    for (int row = first; row <= last; ++row) {
        if (!indexWidget(model()->index(row, 0)))
            makeCellView(row);
    }
}

void NATableView::makeCellView(int row) {
    QWidget* view = delegate_->viewForTableColumn(this, row);
    if (!view)
        return;
    const QModelIndex index = model()->index(row, 0);
    const bool replacing = indexWidget(index) != nullptr;
    if (replacing)
        retire(indexWidget(index));
    view->setProperty("rowSelected", selectionModel() && selectionModel()->isRowSelected(row));
    // A screen reader names the row's check box after the row, as the model describes it.
    if (auto* box = view->findChild<QAbstractButton*>(QStringLiteral("checkBtn"))) {
        const QVariant described = index.data(Qt::AccessibleTextRole);
        box->setAccessibleName(described.isValid() ? described.toString()
                                                   : index.data(Qt::DisplayRole).toString());
    }
    inCellUpdate_ = true;
    // The view takes the widget and lets the one it replaces go at the next turn of the event
    // loop: a cell may be replaced while its own check box is still delivering a click.
    setIndexWidget(index, view);
    inCellUpdate_ = false;
    if (!replacing)
        cells_.emplace_back(index);
}

void NATableView::dropCellView(const QPersistentModelIndex& index) {
    if (!index.isValid())
        return;
    if (QWidget* view = indexWidget(index)) {
        retire(view);
        inCellUpdate_ = true;
        setIndexWidget(index, nullptr);
        inCellUpdate_ = false;
    }
}

void NATableView::modelWasReset() {
    // The view has already let every cell view go.
    cells_.clear();
    updateCellViews();
    keepASelection(rowBeforeChange_);
    rowBeforeChange_ = -1;
    viewport()->update();
}

void NATableView::rowsWereRemoved() {
    updateCellViews();
    if (selectedRow() < 0 && !allowsEmptySelection_ && rowCount() > 0)
        selectRowIndexes(std::clamp(rowBeforeChange_, 0, rowCount() - 1));
    rowBeforeChange_ = -1;
}

// A reload keeps the selected row without telling anyone, as Mac tables do; a row that is gone
// makes the selection move to the nearest row (or empty, where allowed), which is a change.
void NATableView::keepASelection(int wantedRow) {
    const int count = rowCount();
    if (wantedRow >= 0 && wantedRow < count &&
        (model()->index(wantedRow, 0).flags() & Qt::ItemIsSelectable)) {
        {
            const QSignalBlocker blocker(selectionModel());
            selectionModel()->setCurrentIndex(
                model()->index(wantedRow, 0),
                QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        }
        markSelectedCells();
        viewport()->update();
        return;
    }
    if (count > 0 && !allowsEmptySelection_) {
        selectRowIndexes(std::clamp(wantedRow, 0, count - 1));
        if (selectedRow() >= 0)
            return;
    }
    if (wantedRow >= 0) {
        if (delegate_)
            delegate_->tableViewSelectionDidChange(this);
    }
}

QItemSelectionModel::SelectionFlags NATableView::selectionCommand(const QModelIndex& index,
                                                                  const QEvent* event) const {
    if (index.isValid() && !(index.flags() & Qt::ItemIsSelectable))
        return QItemSelectionModel::NoUpdate;
    QItemSelectionModel::SelectionFlags command = QTableView::selectionCommand(index, event);
    if (!allowsEmptySelection_ &&
        (command & (QItemSelectionModel::Deselect | QItemSelectionModel::Toggle |
                    QItemSelectionModel::Clear)) &&
        !(command & QItemSelectionModel::Select))
        return QItemSelectionModel::NoUpdate;
    return command;
}

void NATableView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                              const QList<int>& roles) {
    QTableView::dataChanged(topLeft, bottomRight, roles);
    if (inCellUpdate_ || !delegate_ || !topLeft.isValid() || !bottomRight.isValid())
        return;
    // Only the rows that have cell views are made anew; the rest are made when they scroll in.
    std::vector<int> rows;
    for (const QPersistentModelIndex& index : cells_) {
        if (index.isValid() && index.row() >= topLeft.row() && index.row() <= bottomRight.row())
            rows.push_back(index.row());
    }
    for (int row : rows)
        makeCellView(row);
}

void NATableView::selectionChanged(const QItemSelection& selected,
                                   const QItemSelection& deselected) {
    QTableView::selectionChanged(selected, deselected);
    markSelectedCells();
    focusRing_->update();
    if (delegate_)
        delegate_->tableViewSelectionDidChange(this);
}

// Cells style their text for a selected row through the "rowSelected" property.
void NATableView::markSelectedCells() {
    for (const QPersistentModelIndex& index : cells_) {
        QWidget* view = index.isValid() ? indexWidget(index) : nullptr;
        if (!view)
            continue;
        const bool selected = selectionModel()->isRowSelected(index.row());
        if (view->property("rowSelected").toBool() == selected)
            continue;
        view->setProperty("rowSelected", selected);
        repolish(view);
        for (QWidget* child : view->findChildren<QWidget*>())
            repolish(child);
    }
}

void NATableView::paintEvent(QPaintEvent* event) {
    if (rowCount() > 0) {
        QTableView::paintEvent(event);
        return;
    }
    QPainter painter(viewport());
    drawEmptyState(painter);
}

void NATableView::drawEmptyState(QPainter& painter) const {
    setListEmptyCaptionStyle(painter);
    sysmend::drawEmptyState(painter, viewport()->rect(), devicePixelRatioF(),
                            QStringLiteral("no items"));
}

void NATableView::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    focusRing_->setGeometry(rect());
    updateCellViews();
}

void NATableView::showEvent(QShowEvent* event) {
    QTableView::showEvent(event);
    updateCellViews();
}

void NATableView::scrollContentsBy(int dx, int dy) {
    focusRing_->update();
    QTableView::scrollContentsBy(dx, dy);
    updateCellViews();
}

}  // namespace sysmend
