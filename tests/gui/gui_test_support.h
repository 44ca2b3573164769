// Helpers for driving the GUI that the GUI tests and the GUI benchmarks share. Qt Widgets only:
// nothing here needs the test library.
#pragma once

#include <QEvent>
#include <QObject>
#include <memory>

#include "app/na_category_obj.h"
#include "ui/na_table_view.h"

namespace sysmend::test {

// The result page of `category` as the shell would show it after a scan, at the size of the
// window's content.
template <class Page>
std::unique_ptr<Page> showPage(const std::shared_ptr<NACategoryObj>& category) {
    auto page = std::make_unique<Page>();
    page->setCategoryObj(category);
    page->loadView();
    page->resize(720, 540);
    page->show();
    category->setIsNeedRefresh(true);
    category->setDisplayState(1);
    page->needRefreshUI();
    category->setIsNeedRefresh(false);
    return page;
}

// The cell view of a row, if it is a `Cell`.
template <class Cell>
Cell* cellAt(const NATableView* table, int row) {
    return qobject_cast<Cell*>(table->cellWidget(row));
}

// Counts the events of one type that reach the objects it is installed on.
template <QEvent::Type type>
class EventCounter : public QObject {
  public:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == type)
            ++count;
        return false;
    }
    int count = 0;
};

}  // namespace sysmend::test
