// What every GUI test sets up first: the user defaults in a temporary folder (so the real
// user's settings are never touched), a small volume with one user, and the resources; and
// the helpers (and the headers) the tests share.
#pragma once

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "app/app_delegate.h"
#include "gui_test_support.h"
#include "model/na_object.h"
#include "platform/file_url.h"
#include "platform/syslog.h"
#include "platform/volume.h"
#include "settings/user_defaults.h"
#include "ui/na_sheet.h"
#include "ui/named_image.h"

namespace sysmend::test {

// The rows of the shell's category list.
enum Row { System, Crashes, ArpCache, AppViewer, StartupItems, Security, Firewall, Vexbane };

class GuiTestEnv {
  public:
    // Call before anything reads the standard user defaults.
    void setUp() {
        QVERIFY(config_.isValid() && volume_.isValid());
        qputenv("SYSMEND_CONFIG_DIR", config_.path().toLocal8Bit());
        QVERIFY(QDir(volume_.path()).mkpath(QStringLiteral("Users/alice/Documents")));
        QVERIFY(QDir(volume_.path()).mkpath(QStringLiteral("Applications")));
        Volume::setCurrent(Volume(volume_.path().toStdString(), "/Users/alice"));
        initGuiResources();
        QVERIFY(QString::fromStdString(UserDefaults::standardUserDefaults().filePath())
                    .startsWith(config_.path()));
    }

    QString hostPath(const QString& volumePath) const { return volume_.path() + volumePath; }

    // Writes a file (and its folders) on the volume.
    void writeFile(const std::string& volumePath, const QByteArray& bytes = {}) const {
        const QString path = hostPath(QString::fromStdString(volumePath));
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    bool exists(const std::string& volumePath) const {
        return QFile::exists(hostPath(QString::fromStdString(volumePath)));
    }

    static void removeAllDefaults() {
        UserDefaults& defaults = UserDefaults::standardUserDefaults();
        for (const std::string& key : defaults.keys())
            defaults.removeObjectForKey(key);
    }

  private:
    QTemporaryDir config_;
    QTemporaryDir volume_;
};

// The shell as the application starts it, its window shown.
inline std::unique_ptr<AppDelegate> launch() {
    auto delegate = std::make_unique<AppDelegate>();
    delegate->applicationDidFinishLaunching();
    delegate->window()->show();
    if (!QTest::qWaitForWindowExposed(delegate->window()))
        qWarning("the window was never exposed");
    return delegate;
}

inline NACategoryObj& categoryOf(const AppDelegate& delegate, Row row) {
    return *delegate.categorys().at(static_cast<std::size_t>(row));
}

// A left click in the middle of a widget that must be there and visible.
inline void click(QWidget* widget) {
    QVERIFY(widget != nullptr);
    QVERIFY(widget->isVisible());
    QTest::mouseClick(widget, Qt::LeftButton);
}

// A click on a table's row, off its check box.
inline void clickRow(NATableView* table, int row, int offset = 0) {
    const QRect rect = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, rect.center() + QPoint(offset, 0));
}

// The groups and their items with their marks, as "Group[mark]{item[mark] ...} ...".
inline QString tree(const NACategoryObj& category) {
    QStringList groups;
    for (const auto& g : category.groups())
        groups << QString::fromStdString(toString(*g));
    return groups.join(QLatin1Char(' '));
}

inline FileURL folderURL(const char* volumePath) {
    return FileURL::fileURLWithPath(volumePath, true);
}

// Presses a folder chooser's default button, as the user would.
inline void clickChoose(QFileDialog* chooser) {
    auto* buttons = chooser->findChild<QDialogButtonBox*>();
    QVERIFY(buttons != nullptr && buttons->button(QDialogButtonBox::Open) != nullptr);
    QTest::mouseClick(buttons->button(QDialogButtonBox::Open), Qt::LeftButton);
}

}  // namespace sysmend::test
