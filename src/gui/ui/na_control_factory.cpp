#include "ui/na_control_factory.h"

#include <QHash>

#include "ui/na_bg_views.h"
#include "ui/na_buttons.h"
#include "ui/na_check_btn.h"
#include "ui/na_no_content_view.h"
#include "ui/na_os_check_button.h"
#include "ui/na_text_field.h"

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
        {QStringLiteral("NACheckBtn"), &make<NACheckBtn>},
        {QStringLiteral("NANoContentView"), &make<NANoContentView>},
        {QStringLiteral("NATextField"), &make<NATextField>},
        {QStringLiteral("NATextField_Title"), &make<NATextField_Title>},
        {QStringLiteral("NATextField_SubTitle"), &make<NATextField_SubTitle>},
        {QStringLiteral("NAOnOffButton"), &make<NAOnOffButton>},
        {QStringLiteral("NAColorFillButton"), &make<NAColorFillButton>},
        {QStringLiteral("NAButton"), &make<NAButton>},
        {QStringLiteral("NABgView"), &make<NABgView>},
        {QStringLiteral("NABgView2"), &make<NABgView2>},
        {QStringLiteral("NABgView3"), &make<NABgView3>},
        {QStringLiteral("NABgColorFill"), &make<NABgColorFill>},
        {QStringLiteral("NABgView_RightBorder"), &make<NABgView_RightBorder>},
        {QStringLiteral("NABgView_ContentView"), &make<NABgView_ContentView>},
        {QStringLiteral("NABgView_CanMoveWindow"), &make<NABgView_CanMoveWindow>},
    };
    return table;
}

}  // namespace

QWidget* createCustomControl(const QString& className, QWidget* parent) {
    const Maker maker = makers().value(className);
    return maker ? maker(parent) : nullptr;
}

}  // namespace sysmend
