#include "ui/na_check_btn.h"

#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPushButton>

#include "platform/syslog.h"
#include "settings/na_setting_mgr.h"
#include "ui/na_sheet.h"
#include "ui/named_image.h"

namespace sysmend {

namespace {

// The alert's dark, vibrant-looking appearance; a sheet on Linux has no frame of its own.
const char* const kDarkAlertStyle = R"(
QMessageBox { background: rgb(38, 38, 40); border: 1px solid rgb(12, 12, 12); }
QMessageBox QLabel { color: rgb(236, 236, 236); }
QMessageBox QLabel#qt_msgbox_label { font-weight: bold; font-size: 14px; min-width: 260px; }
QMessageBox QLabel#qt_msgbox_informativelabel { font-size: 12px; min-width: 260px; }
QMessageBox QPushButton {
    color: white; background: rgb(11, 80, 208); border: none; border-radius: 5px;
    padding: 4px 18px; min-width: 64px;
}
QMessageBox QPushButton:pressed { background: rgb(8, 62, 166); }
)";

}  // namespace

NACheckBtn::NACheckBtn(QWidget* parent) : QCheckBox(parent) {
    setFocusPolicy(Qt::TabFocus);
}

bool NACheckBtn::mayToggle() {
    const int checkCount = NASettingMgr::mgr().checkedCount();
    if (isChecked() && checkCount - 1 == 0) {
        showRefusal();
        return false;
    }
    logLine("checkCount==" + std::to_string(checkCount));
    return true;
}

void NACheckBtn::showRefusal() {
    if (alert_)
        return;  // already on screen
    auto* alert = new QMessageBox(QMessageBox::Warning, QString(),
                                  QStringLiteral("Operation failed!"), QMessageBox::Ok);
    alert->setInformativeText(QStringLiteral("You need to select one，an then cleanup!"));
    alert->setStyleSheet(QString::fromLatin1(kDarkAlertStyle));
    // Like a Mac alert, it shows the application's image rather than a warning sign.
    alert->setIconPixmap(namedImage(QStringLiteral("sysmend"), QSize(52, 52), devicePixelRatioF()));
    alert->layout()->setContentsMargins(20, 18, 20, 16);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert_ = alert;
    beginSheet(this, alert);
}

void NACheckBtn::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && hitButton(event->position().toPoint()) &&
        !mayToggle()) {
        event->accept();
        return;
    }
    QCheckBox::mousePressEvent(event);
}

void NACheckBtn::keyPressEvent(QKeyEvent* event) {
    // The space bar toggles too; it obeys the same rule.
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat() && !mayToggle()) {
        event->accept();
        return;
    }
    QCheckBox::keyPressEvent(event);
}

}  // namespace sysmend
