#include <QApplication>
#include <QIcon>

#include "app/app_delegate.h"
#include "platform/volume.h"
#include "sandbox/app_sandbox_file_access.h"
#include "sandbox/na_permission_panel.h"
#include "ui/named_image.h"

int main(int argc, char* argv[]) {
    // Everything below reads the volume, the window's first page included.
    sysmend::Volume::setCurrent(sysmend::Volume::fromEnvironment());

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Sysmend"));
    QApplication::setOrganizationDomain(QStringLiteral("qvarlo.net"));
    // The id the desktop entry is installed under, so that Wayland matches the window to it.
    QGuiApplication::setDesktopFileName(QStringLiteral("net.qvarlo.Sysmend"));
    sysmend::initGuiResources();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/sysmend.svg")));

    // The chooser the folder grants show when they ask; in place before any page can ask, and
    // taken out once the event loop has ended.
    sysmend::NAPermissionPanel permissionPanel;
    sysmend::AppSandboxFileAccess& fileAccess = sysmend::AppSandboxFileAccess::fileAccess();
    fileAccess.setPermissionPanel(&permissionPanel);

    sysmend::AppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    delegate.window()->show();
    const int status = QApplication::exec();
    fileAccess.setPermissionPanel(nullptr);
    return status;
}
