#include "ui/na_cell_base_view.h"

#include <QFile>
#include <QUiLoader>
#include <cstdio>

#include "ui/na_control_factory.h"

namespace sysmend {

namespace {

// Makes the cell class itself where the interface file names it, so that the loaded
// top-level widget is a real instance of that class, and the application's own controls
// where the file names them; everything else as usual.
class CellLoader : public QUiLoader {
  public:
    CellLoader(const char* className, NACellBaseView* (*make)(QWidget*))
        : className_(QString::fromLatin1(className)), make_(make) {}

    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override {
        QWidget* widget = nullptr;
        if (className == className_)
            widget = make_(parent);
        else
            widget = createCustomControl(className, parent);
        if (!widget)
            return QUiLoader::createWidget(className, parent, name);
        widget->setObjectName(name);
        return widget;
    }

  private:
    QString className_;
    NACellBaseView* (*make_)(QWidget*);
};

}  // namespace

NACellBaseView::NACellBaseView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

NACellBaseView* NACellBaseView::loadNib(const QString& nibName, const char* className,
                                        NACellBaseView* (*make)(QWidget* parent)) {
    QFile file(QStringLiteral(":/ui/%1.ui").arg(nibName));
    NACellBaseView* cell = nullptr;
    if (file.open(QIODevice::ReadOnly)) {
        CellLoader loader(className, make);
        // Only `make` creates cell views, so a cell at the top is an instance of className.
        QWidget* top = loader.load(&file);
        cell = qobject_cast<NACellBaseView*>(top);
        if (!cell)
            delete top;
    }
    if (!cell) {
        std::fputs("Warning! Could not load nib file.\n", stderr);
        return nullptr;
    }
    cell->awakeFromNib();
    return cell;
}

void NACategoryCellBaseView::awakeFromNib() {
    icon_view = findChild<QLabel*>(QStringLiteral("icon_view"));
    title_view = findChild<QLabel*>(QStringLiteral("title_view"));
}

void NASplitCellBaseView::awakeFromNib() {
    title_view = findChild<QLabel*>(QStringLiteral("title_view"));
}

}  // namespace sysmend
