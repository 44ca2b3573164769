#include "appviewer/app_view_help_vc.h"

#include <QTextDocument>

#include "ui_AppViewHelpVC.h"

namespace sysmend {

AppViewHelpVC::AppViewHelpVC(const QString& nibName, QWidget* parent)
    : QWidget(parent), ui_(std::make_unique<Ui::AppViewHelpVC>()) {
    ui_->setupUi(this);
    setObjectName(nibName);
    // Light ("Aqua") whatever the system's appearance: dark text on the popover's white.
    QPalette light = palette();
    light.setColor(QPalette::WindowText, QColor(60, 72, 88));
    light.setColor(QPalette::Window, Qt::white);
    setPalette(light);
}

AppViewHelpVC::~AppViewHelpVC() = default;

QString AppViewHelpVC::helpText() const {
    QTextDocument document;
    document.setHtml(ui_->help_text->text());
    return document.toPlainText();
}

}  // namespace sysmend
