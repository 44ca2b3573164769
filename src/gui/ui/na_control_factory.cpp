#include "ui/na_control_factory.h"

#include <QHash>

#include "ui/na_no_content_view.h"
#include "ui/na_os_check_button.h"

namespace sysmend {

namespace {

using Maker = QWidget* (*)(QWidget*);

template <class T>
QWidget* make(QWidget* parent) {
    return new T(parent);
}

const QHash<QString, Maker>& makers() {
    static const QHash<QString, Maker> table = {
        {QStringLiteral("NAOSCheckButton"), &make<NAOSCheckButton>},
        {QStringLiteral("NAOSCheckButton_WebShield"), &make<NAOSCheckButton_WebShield>},
        {QStringLiteral("NAOSCheckButton_Normal"), &make<NAOSCheckButton_Normal>},
        {QStringLiteral("NANoContentView"), &make<NANoContentView>},
    };
    return table;
}

}  // namespace

QWidget* createCustomControl(const QString& className, QWidget* parent) {
    const Maker maker = makers().value(className);
    return maker ? maker(parent) : nullptr;
}

}  // namespace sysmend
