// Makes the application's own controls by class name, so that interface files loaded at run
// time can name them (NAOSCheckButton, NATextField_Title, NAColorFillButton, ...) and get
// real instances instead of their Qt base class.
#pragma once

#include <QString>
#include <QWidget>

namespace sysmend {

// A new control of the class named `className` (without the namespace) under `parent`, or null
// when the name is not one of the application's controls.
QWidget* createCustomControl(const QString& className, QWidget* parent);

}  // namespace sysmend
