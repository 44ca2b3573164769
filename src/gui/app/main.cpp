#include <QApplication>
#include <QIcon>

#include "app/app_delegate.h"
#include "platform/volume.h"
#include "ui/named_image.h"

int main(int argc, char* argv[]) {
    // Everything below reads the volume, the window's first page included.
    sysmend::Volume::setCurrent(sysmend::Volume::fromEnvironment());

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Sysmend"));
    QApplication::setOrganizationDomain(QStringLiteral("qvarlo.net"));
    sysmend::initGuiResources();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/sysmend.svg")));

    sysmend::AppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    delegate.window()->show();
    return QApplication::exec();
}
