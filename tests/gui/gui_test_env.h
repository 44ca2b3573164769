// What every GUI test sets up first: the user defaults in a temporary folder (so the real
// user's settings are never touched), a small volume with one user, and the resources; and
// the helpers the tests share.
#pragma once

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include "gui_test_support.h"
#include "platform/volume.h"
#include "settings/user_defaults.h"
#include "ui/named_image.h"

namespace sysmend::test {

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

    static void removeAllDefaults() {
        UserDefaults& defaults = UserDefaults::standardUserDefaults();
        for (const std::string& key : defaults.keys())
            defaults.removeObjectForKey(key);
    }

  private:
    QTemporaryDir config_;
    QTemporaryDir volume_;
};

// A left click in the middle of a widget that must be there and visible.
inline void click(QWidget* widget) {
    QVERIFY(widget != nullptr);
    QVERIFY(widget->isVisible());
    QTest::mouseClick(widget, Qt::LeftButton);
}

}  // namespace sysmend::test
