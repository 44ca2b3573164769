#include "sandbox/na_permission_panel.h"

#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QLayout>
#include <QThread>

#include "app/na_folder_chooser.h"

namespace sysmend {

namespace {

// A plain, empty view laid under everything else in the chooser's title area (its top row,
// where the folder pop-up and the navigation buttons sit). It follows the chooser's size as
// the chooser is resized.
class TitleAreaView : public QObject {
  public:
    explicit TitleAreaView(QFileDialog* chooser) : QObject(chooser), chooser_(chooser) {
        view_ = new QWidget(chooser);
        view_->setObjectName(QStringLiteral("titleAreaView"));
        view_->lower();
        chooser->installEventFilter(this);
        place();
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == chooser_ &&
            (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest ||
             event->type() == QEvent::Show))
            place();
        return false;
    }

  private:
    void place() {
        int height = chooser_->layout() ? chooser_->layout()->contentsMargins().top() : 0;
        if (auto* header = chooser_->findChild<QComboBox*>(QStringLiteral("lookInCombo")))
            height = header->geometry().bottom() + 1;
        view_->setGeometry(0, 0, chooser_->width(), height);
        view_->lower();
    }

    QFileDialog* chooser_;
    QWidget* view_;
};

}  // namespace

NAPermissionPanel::NAPermissionPanel(QObject* parent) : QObject(parent) {}

std::optional<FileURL> NAPermissionPanel::runPanel(const PermissionRequest& request) {
    auto* app = QCoreApplication::instance();
    if (!qobject_cast<QApplication*>(app))
        return std::nullopt;
    if (QThread::currentThread() == thread())
        return runOnGuiThread(request);

    // The request lives on the caller's stack, which stays put while the caller is blocked.
    std::optional<FileURL> chosen;
    QMetaObject::invokeMethod(
        this, [this, &request, &chosen] { chosen = runOnGuiThread(request); },
        Qt::BlockingQueuedConnection);
    return chosen;
}

std::optional<FileURL> NAPermissionPanel::runOnGuiThread(const PermissionRequest& request) {
    const AppSandboxFileAccessOpenSavePanelDelegate& delegate = request.delegate;
    NAFolderChooser chooser([&delegate](const QFileDialog*, const FileURL& folder) {
        return delegate.shouldEnableURL(folder);
    });
    new TitleAreaView(&chooser);
    chooser.setMessage(QString::fromStdString(request.message));
    chooser.setLabelText(QFileDialog::Accept, QString::fromStdString(request.prompt));
    chooser.setWindowTitle(QString::fromStdString(request.title));
    chooser.setStartFolder(request.directory);
    chooser.setWindowModality(Qt::ApplicationModal);

    openPanel_ = &chooser;
    emit panelWillRun(&chooser);
    chooser.show();
    chooser.raise();
    chooser.activateWindow();
    const int result = chooser.exec();
    openPanel_ = nullptr;

    if (result != QDialog::Accepted)
        return std::nullopt;
    return chooser.chosenURL();
}

}  // namespace sysmend
