// The base of every tool's result page. The shell makes a result page once, keeps it for the
// run and calls needRefreshUI each time it shows it; the hooks are empty here and given their
// meaning by each result page.
#pragma once

#include <QWidget>
#include <cstdint>
#include <memory>
#include <string>

#include "app/na_category_obj.h"

namespace sysmend {

class NARootHVC : public QWidget {
    Q_OBJECT
  public:
    explicit NARootHVC(QWidget* parent = nullptr);

    // The page's tool; set by the shell when it stores the page, held weakly (the shell keeps
    // the category for the whole run).
    std::shared_ptr<NACategoryObj> categoryObj() const { return categoryObj_.lock(); }
    void setCategoryObj(std::weak_ptr<NACategoryObj> category) {
        categoryObj_ = std::move(category);
    }

    // Builds the page's widgets; sent once, right after the page is made and stored.
    virtual void loadView() {}

    // Called whenever the page is shown: rebuild from the category's groups and contents when
    // its isNeedRefresh says so, else refresh what is shown.
    virtual void needRefreshUI() {}
    virtual void reloadData() {}
    virtual void sortGroupsByIndex(std::int64_t index) { static_cast<void>(index); }
    virtual void cleanCheckedContent() {}
    // Empties the category's result, sets its displayState to 0 and shows the start page.
    virtual void startOver(QObject* sender) { static_cast<void>(sender); }
    virtual void startClean(const std::string& what, const std::string& remvoveFilePath) {
        static_cast<void>(what);
        static_cast<void>(remvoveFilePath);
    }

  private:
    std::weak_ptr<NACategoryObj> categoryObj_;
};

}  // namespace sysmend
