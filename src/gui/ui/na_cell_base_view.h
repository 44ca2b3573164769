// Table cell views made from interface files named after their class (":/ui/<class>.ui").
//
// A fresh cell is made for every row; the table that shows it owns it. Cells let mouse clicks
// through to their table, which selects the row.
#pragma once

#include <QLabel>
#include <QString>
#include <QWidget>
#include <cstring>
#include <memory>

#include "model/na_object.h"

namespace sysmend {

class NACellBaseView : public QWidget {
    Q_OBJECT
  public:
    explicit NACellBaseView(QWidget* parent = nullptr);

    // The item or group the row shows; the cell does not keep it alive.
    std::shared_ptr<NAObject> representObj() const { return representObj_.lock(); }
    void setRepresentObj(const std::shared_ptr<NAObject>& object) { representObj_ = object; }

    // Called once the interface file has made the cell's children: finds the outlets.
    virtual void awakeFromNib() {}

  protected:
    // Loads the interface file `nibName` and returns its top-level widget if the file made it
    // as an instance of `className` through `make`; otherwise prints "Warning! Could not load
    // nib file.\n" and returns nullptr.
    static NACellBaseView* loadNib(const QString& nibName, const char* className,
                                   NACellBaseView* (*make)(QWidget* parent));

    // Loads the interface file named after T into a new T.
    template <class T>
    static T* loadCell() {
        const char* name = T::staticMetaObject.className();
        // The interface files name classes without the namespace.
        const char* shortName = std::strrchr(name, ':') ? std::strrchr(name, ':') + 1 : name;
        auto* cell = loadNib(QString::fromLatin1(shortName), shortName,
                             [](QWidget* parent) -> NACellBaseView* { return new T(parent); });
        return static_cast<T*>(cell);
    }

  private:
    std::weak_ptr<NAObject> representObj_;
};

// A tool row of the category list: its icon and title.
class NACategoryCellBaseView : public NACellBaseView {
    Q_OBJECT
  public:
    using NACellBaseView::NACellBaseView;
    static NACategoryCellBaseView* initwithNib() { return loadCell<NACategoryCellBaseView>(); }
    void awakeFromNib() override;

    QLabel* icon_view = nullptr;
    QLabel* title_view = nullptr;
};

// A section row of the category list: its title only.
class NASplitCellBaseView : public NACellBaseView {
    Q_OBJECT
  public:
    using NACellBaseView::NACellBaseView;
    static NASplitCellBaseView* initwithNib() { return loadCell<NASplitCellBaseView>(); }
    void awakeFromNib() override;

    QLabel* title_view = nullptr;
};

}  // namespace sysmend
