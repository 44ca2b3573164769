// The custom controls: the tri-state check box's click and drawing rules, the empty-state
// view, and cells whose interface files name the controls.
#include <unistd.h>
#include <QBuffer>
#include <QImage>
#include <QMouseEvent>
#include <QTemporaryFile>
#include <cstdio>

#include "gui_test_env.h"
#include "settings/na_setting_mgr.h"
#include "ui/na_attributed_string.h"
#include "ui/na_bg_views.h"
#include "ui/na_buttons.h"
#include "ui/na_cell_base_view.h"
#include "ui/na_check_btn.h"
#include "ui/na_drawing.h"
#include "ui/na_no_content_view.h"
#include "ui/na_os_check_button.h"
#include "ui/na_text_field.h"
#include "ui/na_thumbnail.h"

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

// Leaves exactly the given removal kinds checked in the shared settings store.
void checkRemovalKinds(bool caches, bool logs) {
    NASettingMgr& settings = NASettingMgr::mgr();
    settings.setIsNeedRemove_caches(caches);
    settings.setIsNeedRemove_logs(logs);
    settings.setIsNeedRemove_history(false);
    settings.setIsNeedRemove_localStorage(false);
    settings.setIsNeedRemove_cookies(false);
    settings.setIsNeedRemove_sessions(false);
    settings.setIsNeedRemove_savedPsw(false);
    settings.setIsNeedRemove_maliciousextensions(false);
    settings.setIsNeedRemove_maliciousplugins(false);
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
    QTemporaryDir files_;

  private slots:
    void initTestCase() {
        env_.setUp();
        QVERIFY(files_.isValid());
    }

    void clickOnMixedBoxChecksItAndSendsTheActionOnce() {
        QWidget window;
        auto* box = new NAOSCheckButton(&window);
        box->setGeometry(0, 0, 26, 26);
        window.show();
        QSignalSpy clicks(box, &QAbstractButton::clicked);

        box->setState(-1);
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

        // The variant with a text keeps the rule.
        auto* normal = new NAOSCheckButton_Normal(&window);
        normal->setText(QStringLiteral("Caches"));
        normal->adjustSize();
        normal->show();
        normal->setState(-1);
        QTest::mouseClick(normal, Qt::LeftButton, {}, normal->rect().center());
        QCOMPARE(normal->state(), 1);
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

        // A change of state is drawn at once.
        NAOSCheckButton other;
        pictureOfBox(other, 0, true);
        other.setState(1);
        QCOMPARE(picture(other), checked);
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
        QVERIFY(table->isHidden() && button->isHidden() && hiddenBefore->isHidden());
        QVERIFY(picture(view) != plain);  // the empty state is drawn
        view.setHiddenSubviews(true);     // a repeat must not forget what it hid

        view.setHiddenSubviews(false);
        QVERIFY(!table->isHidden() && !button->isHidden());
        QVERIFY(hiddenBefore->isHidden());  // it was not this view that hid it
        QCOMPARE(picture(view), plain);
    }

    void onlyTheLastCheckedSettingCannotBeCleared() {
        checkRemovalKinds(true, false);
        QWidget window;
        window.resize(500, 300);
        auto* box = new NACheckBtn(&window);
        box->setText(QStringLiteral("Caches"));
        box->setChecked(true);
        box->setGeometry(20, 20, 200, 24);
        window.show();
        QSignalSpy clicks(box, &QAbstractButton::clicked);

        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, 12));
        QVERIFY(box->isChecked());
        QCOMPARE(clicks.count(), 0);
        QMessageBox* alert = box->alert();
        QVERIFY(alert != nullptr);
        QCOMPARE(sheetParent(alert), &window);
        QCOMPARE(alert->text(), QStringLiteral("Operation failed!"));
        QCOMPARE(alert->informativeText(),
                 QStringLiteral("You need to select one，an then cleanup!"));

        // Pressing again while the sheet is up does not stack a second one.
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, 12));
        QCOMPARE(window.findChildren<QMessageBox*>().size(), 1);

        QTest::mouseClick(alert->button(QMessageBox::Ok), Qt::LeftButton);
        QTRY_VERIFY(box->alert() == nullptr);
        QVERIFY(box->isChecked());

        // With another setting checked it clears, and may always be checked again.
        checkRemovalKinds(true, true);
        LogCapture log;
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, 12));
        QVERIFY(!box->isChecked());
        QVERIFY(box->alert() == nullptr);
        QCOMPARE(log.lines(), std::vector<std::string>{"checkCount==2"});

        checkRemovalKinds(true, false);
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, 12));
        QVERIFY(box->isChecked());
    }

    void thumbnailFitsTheImageIntoTheRequestedSize() {
        const QString path = files_.filePath(QStringLiteral("wide.png"));
        QImage wide(40, 20, QImage::Format_RGB32);
        wide.fill(Qt::red);
        QVERIFY(wide.save(path));

        const QImage thumb = thumbnailCreatWithUrl(QUrl::fromLocalFile(path), 16, 16);
        QCOMPARE(thumb.size(), QSize(16, 16));
        QCOMPARE(thumb.pixelColor(8, 8), QColor(Qt::red));
        QCOMPARE(thumb.pixelColor(8, 1).alpha(), 0);  // 16 x 8, centred: the top stays clear

        // A small image is centred, not enlarged.
        const QImage large = thumbnailCreatWithUrl(QUrl::fromLocalFile(path), 100, 60.9);
        QCOMPARE(large.size(), QSize(100, 60));
        QCOMPARE(large.pixelColor(50, 30), QColor(Qt::red));
        QCOMPARE(large.pixelColor(25, 30).alpha(), 0);

        // What is no image, or no size, gives nothing.
        const QString notes = files_.filePath(QStringLiteral("notes.png"));
        QFile text(notes);
        QVERIFY(text.open(QIODevice::WriteOnly) && text.write("not a picture\n") > 0);
        text.close();
        for (const QString& file : {notes, files_.filePath(QStringLiteral("missing.png"))})
            QVERIFY(thumbnailCreatWithUrl(QUrl::fromLocalFile(file), 16, 16).isNull());
        QVERIFY(thumbnailCreatWithUrl(QUrl::fromLocalFile(path), 0, 16).isNull());
    }

    void thumbnailTurnsTheImageByItsOrientation() {
        // Stored 40 x 20 with an EXIF tag that says "turn 90 degrees clockwise to show".
        QImage wide(40, 20, QImage::Format_RGB32);
        wide.fill(Qt::blue);
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        QVERIFY(buffer.open(QIODevice::WriteOnly) && wide.save(&buffer, "JPEG"));
        const QByteArray exif(
            "Exif\0\0"                            // APP1 identifier
            "MM\0\x2a\0\0\0\x08"                  // big-endian TIFF header
            "\0\x01"                              // one entry
            "\x01\x12\0\x03\0\0\0\x01\0\x06\0\0"  // Orientation = 6
            "\0\0\0\0",                           // no next directory
            32);
        QByteArray app1("\xff\xe1", 2);
        app1.append(char((exif.size() + 2) >> 8)).append(char((exif.size() + 2) & 0xff));
        jpeg.insert(2, app1 + exif);  // right after the start-of-image marker
        const QString path = files_.filePath(QStringLiteral("turned.jpg"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(jpeg) == jpeg.size());
        file.close();

        // Shown 20 x 40: in a 16 square it stands 8 wide and 16 tall.
        const QImage thumb = thumbnailCreatWithUrl(QUrl::fromLocalFile(path), 16, 16);
        QCOMPARE(thumb.size(), QSize(16, 16));
        QCOMPARE(thumb.pixelColor(8, 1).alpha(), 255);
        QCOMPARE(thumb.pixelColor(1, 8).alpha(), 0);
    }

    void attributedStringRestylesTheListedWords() {
        const NATextAttributes base{font_r(13), NAColor(80)};
        const NATextAttributes count{font_blod(13), NAMakeColor(11, 80, 208, 1.0)};
        const NAAttributedString line =
            attristr(QStringLiteral("12 files | 3.4 MB, 12 checked"), base,
                     {{QStringLiteral("12"), count}, {QStringLiteral("absent"), count}});

        // Only the first "12" changes; the rest keeps the base style.
        QCOMPARE(line.runs().size(), 2);
        QCOMPARE(line.attributesAt(0), count);
        QCOMPARE(line.attributesAt(1), count);
        QCOMPARE(line.attributesAt(2), base);
        QCOMPARE(line.attributesAt(line.length() - 9), base);

        QCOMPARE(colorFromAttributeStr(&line), NAMakeColor(11, 80, 208, 1.0));
        const NAAttributedString plain(QStringLiteral("x"), NATextAttributes{font_r(13), {}});
        QCOMPARE(colorFromAttributeStr(&plain), NAColor(80));
        QCOMPARE(colorFromAttributeStr(nullptr), NAColor(80));

        QLabel label;
        setAttributedText(&label, attristr(QStringLiteral("a < b"), base, {}));
        QCOMPARE(label.textFormat(), Qt::RichText);
        QVERIFY(label.text().contains(QStringLiteral("a &lt; b")));
    }

    void pathsCoverOnlyWhatTheyShould() {
        const QRectF rect(0, 0, 100, 40);
        // Left-top rounded only (top as seen on the screen).
        const QPainterPath path = bezierPathWithRoundedRect(false, true, false, false, rect, 10);
        QVERIFY(!path.contains(QPointF(1, 1)));
        QVERIFY(path.contains(QPointF(99, 1)));
        QVERIFY(path.contains(QPointF(1, 39)));
        QVERIFY(path.contains(QPointF(99, 39)));
        QVERIFY(path.contains(QPointF(50, 20)));

        const QPainterPath all = bezierPathWithRoundedRect(rect, 10);
        for (const QPointF corner :
             {QPointF(1, 1), QPointF(99, 1), QPointF(1, 39), QPointF(99, 39)})
            QVERIFY(!all.contains(corner));

        // Polar points: 90 degrees is straight up on the screen.
        const QPointF centre(50, 50);
        // 90 degrees is straight up on the screen.
        const QPointF up = FLPolar::pointWithPolarCenter(centre, 10, 90);
        QVERIFY(qAbs(up.x() - 50) < 1e-9 && qAbs(up.y() - 40) < 1e-9);
        qreal radius = 0;
        qreal angle = 0;
        FLPolar::coordsForPoint(QPointF(50, 60), centre, &radius, &angle);
        QCOMPARE(radius, 10.0);
        QCOMPARE(angle, 270.0);

        const QPainterPath segment = circleSegmentWithCenter(centre, 0, 90, 20, 40);
        QVERIFY(segment.contains(FLPolar::pointWithPolarCenter(centre, 30, 45)));
        QVERIFY(!segment.contains(FLPolar::pointWithPolarCenter(centre, 10, 45)));  // the hole
        QVERIFY(!segment.contains(FLPolar::pointWithPolarCenter(centre, 30, 135)));
    }

    void draggingTheBackgroundMovesTheWindow() {
        QWidget window;
        window.setGeometry(100, 100, 300, 200);
        auto* background = new NABgView_CanMoveWindow(&window);
        background->setGeometry(0, 0, 300, 40);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QPoint before = window.pos();

        const QPoint press(20, 20);
        const auto send = [&](QEvent::Type type, QPoint local, Qt::MouseButtons buttons) {
            QMouseEvent event(type, local, background->mapToGlobal(local),
                              type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                              Qt::NoModifier);
            QApplication::sendEvent(background, &event);
        };
        send(QEvent::MouseButtonPress, press, Qt::LeftButton);
        send(QEvent::MouseMove, press + QPoint(50, 30), Qt::LeftButton);
        send(QEvent::MouseButtonRelease, press + QPoint(50, 30), Qt::NoButton);
        QCOMPARE(window.pos(), before + QPoint(50, 30));

        // Moving without a press leaves the window where it is.
        send(QEvent::MouseMove, press + QPoint(90, 90), Qt::NoButton);
        QCOMPARE(window.pos(), before + QPoint(50, 30));
    }

    void interfaceFilesMakeRealControlsOrNone() {
        std::unique_ptr<NAControlsProbeCell> cell(NAControlsProbeCell::initwithNib());
        QVERIFY(cell != nullptr);
        auto* box = cell->findChild<NAOSCheckButton*>(QStringLiteral("checkBtn"));
        QVERIFY(box != nullptr);
        QCOMPARE(box->state(), -1);  // set from the file
        QVERIFY(qobject_cast<NAOSCheckButton_WebShield*>(
                    cell->findChild<QWidget*>(QStringLiteral("shieldBtn"))) != nullptr);
        QVERIFY(cell->findChild<NANoContentView*>(QStringLiteral("emptyView")) != nullptr);
        auto* title = cell->findChild<NATextField_Title*>(QStringLiteral("title_view"));
        QVERIFY(title != nullptr);
        QCOMPARE(title->text(), QStringLiteral("Title"));
        auto* remove = cell->findChild<NAColorFillButton*>(QStringLiteral("removeBtn"));
        QVERIFY(remove != nullptr);
        QCOMPARE(remove->fillColor(), QColor(200, 30, 30));

        // A class without an interface file warns and makes no cell.
        NAMissingNibCell* missing = nullptr;
        const QByteArray err = capturedStderr([&] { missing = NAMissingNibCell::initwithNib(); });
        QVERIFY(missing == nullptr);
        QCOMPARE(err, QByteArray("Warning! Could not load nib file.\n"));
    }
};

QTEST_MAIN(ControlsTest)
#include "controls_test.moc"
