// The custom controls: the tri-state check box's click and drawing rules, the empty-state
// view, and cells whose interface files name the controls.
#include <unistd.h>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>
#include <cstdio>

#include "gui_test_env.h"
#include "ui/na_cell_base_view.h"
#include "ui/na_no_content_view.h"
#include "ui/na_os_check_button.h"

using namespace sysmend;

// A cell whose interface file (in this test's resources) names the custom controls.
class NAControlsProbeCell : public NACellBaseView {
    Q_OBJECT
  public:
    using NACellBaseView::NACellBaseView;
    static NAControlsProbeCell* initwithNib() { return loadCell<NAControlsProbeCell>(); }
};

// A cell class that has no interface file.
class NAMissingNibCell : public NACellBaseView {
    Q_OBJECT
  public:
    using NACellBaseView::NACellBaseView;
    static NAMissingNibCell* initwithNib() { return loadCell<NAMissingNibCell>(); }
};

namespace {

// What the code under test writes to standard error while `run` runs.
template <class F>
QByteArray capturedStderr(F run) {
    QTemporaryFile file;
    if (!file.open())
        return "<no temporary file>";
    std::fflush(stderr);
    const int saved = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    run();
    std::fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    file.seek(0);
    return file.readAll();
}

QImage picture(QWidget& widget) {
    return widget.grab().toImage().convertToFormat(QImage::Format_ARGB32);
}

// A box as a cell shows it: 26 points square, so the image inside is 16.
QImage pictureOfBox(NAOSCheckButton& box, int state, bool enabled) {
    box.resize(26, 26);
    box.setState(state);
    box.setEnabled(enabled);
    return picture(box);
}

}  // namespace

class ControlsTest : public QObject {
    Q_OBJECT

  private:
    test::GuiTestEnv env_;

  private slots:
    void initTestCase() { env_.setUp(); }

    void clickOnMixedBoxChecksItAndSendsTheActionOnce() {
        QWidget window;
        auto* box = new NAOSCheckButton(&window);
        box->setGeometry(0, 0, 26, 26);
        window.show();
        QSignalSpy clicks(box, &QAbstractButton::clicked);

        box->setState(-1);
        QCOMPARE(box->state(), -1);
        QCOMPARE(clicks.count(), 0);  // setting the state is not a click

        QTest::mouseClick(box, Qt::LeftButton);
        QCOMPARE(box->state(), 1);
        QCOMPARE(clicks.count(), 1);
        QCOMPARE(clicks.at(0).at(0).toBool(), true);

        // Later clicks only toggle between checked and unchecked, never back to mixed.
        QTest::mouseClick(box, Qt::LeftButton);
        QCOMPARE(box->state(), 0);
        QTest::mouseClick(box, Qt::LeftButton);
        QCOMPARE(box->state(), 1);
        QCOMPARE(clicks.count(), 3);

        // The whole bounds answer, corner included.
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(1, 1));
        QCOMPARE(box->state(), 0);
    }

    void normalVariantKeepsTheClickRule() {
        QWidget window;
        auto* box = new NAOSCheckButton_Normal(&window);
        box->setText(QStringLiteral("Caches"));
        box->adjustSize();
        window.show();
        box->setState(-1);
        QTest::mouseClick(box, Qt::LeftButton, {}, box->rect().center());
        QCOMPARE(box->state(), 1);
    }

    void disabledBoxDrawsUncheckedWhateverItsState() {
        NAOSCheckButton box;
        const QImage unchecked = pictureOfBox(box, 0, true);
        const QImage checked = pictureOfBox(box, 1, true);
        const QImage mixed = pictureOfBox(box, -1, true);
        QVERIFY(checked != unchecked);
        QVERIFY(mixed != unchecked && mixed != checked);

        QCOMPARE(pictureOfBox(box, 1, false), unchecked);
        QCOMPARE(pictureOfBox(box, -1, false), unchecked);

        NAOSCheckButton_WebShield shield;
        const QImage shieldDisabled = pictureOfBox(shield, 0, false);
        QVERIFY(shieldDisabled != unchecked);
        QVERIFY(shieldDisabled != checked);
        QCOMPARE(pictureOfBox(shield, 1, true), checked);
    }

    void stateChangesAreDrawnAtOnce() {
        NAOSCheckButton reference;
        const QImage checked = pictureOfBox(reference, 1, true);
        NAOSCheckButton box;
        pictureOfBox(box, 0, true);
        box.setState(1);
        QCOMPARE(picture(box), checked);
    }

    void noContentViewHidesItsChildrenAndShowsThemAgain() {
        NANoContentView view;
        view.resize(400, 300);
        auto* table = new QWidget(&view);
        auto* button = new QWidget(&view);
        auto* hiddenBefore = new QWidget(&view);
        hiddenBefore->hide();
        view.show();
        const QImage plain = picture(view);

        view.setHiddenSubviews(true);
        QVERIFY(view.hiddenSubviews());
        QVERIFY(table->isHidden() && button->isHidden() && hiddenBefore->isHidden());
        QVERIFY(picture(view) != plain);  // the empty state is drawn
        view.setHiddenSubviews(true);     // a repeat must not forget what it hid

        view.setHiddenSubviews(false);
        QVERIFY(!table->isHidden() && !button->isHidden());
        QVERIFY(hiddenBefore->isHidden());  // it was not this view that hid it
        QCOMPARE(picture(view), plain);
    }

    void interfaceFilesMakeRealControls() {
        std::unique_ptr<NAControlsProbeCell> cell(NAControlsProbeCell::initwithNib());
        QVERIFY(cell != nullptr);
        auto* box = cell->findChild<NAOSCheckButton*>(QStringLiteral("checkBtn"));
        QVERIFY(box != nullptr);
        QCOMPARE(box->state(), -1);  // set from the file
        QVERIFY(qobject_cast<NAOSCheckButton_WebShield*>(
                    cell->findChild<QWidget*>(QStringLiteral("shieldBtn"))) != nullptr);
        QVERIFY(cell->findChild<NANoContentView*>(QStringLiteral("emptyView")) != nullptr);
    }

    void missingInterfaceFileWarnsAndMakesNoCell() {
        NAMissingNibCell* cell = nullptr;
        const QByteArray err = capturedStderr([&] { cell = NAMissingNibCell::initwithNib(); });
        QVERIFY(cell == nullptr);
        QCOMPARE(err, QByteArray("Warning! Could not load nib file.\n"));
    }
};

QTEST_MAIN(ControlsTest)
#include "controls_test.moc"
