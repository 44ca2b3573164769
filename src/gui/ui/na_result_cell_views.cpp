#include "ui/na_result_cell_views.h"

#include <QEvent>
#include <QPainter>
#include <typeinfo>

#include "model/na_fileobj.h"
#include "model/na_group_obj.h"
#include "ui/na_table_view.h"

namespace sysmend {

namespace {

const char* const kFullText = "sysmendFullText";
const char* const kElideMode = "sysmendElideMode";

void applyElision(QLabel* label) {
    const QString full = label->property(kFullText).toString();
    const auto mode = static_cast<Qt::TextElideMode>(label->property(kElideMode).toInt());
    const int width = label->contentsRect().width();
    const QString shown = width > 0 ? label->fontMetrics().elidedText(full, mode, width) : full;
    if (label->text() != shown)
        label->setText(shown);
    label->setToolTip(shown == full ? QString() : full);
}

// Cuts the label's text again whenever its width or font changes.
class ElisionFilter : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
            case QEvent::Resize:
            case QEvent::FontChange:
            case QEvent::StyleChange:
            case QEvent::Polish:
                applyElision(static_cast<QLabel*>(watched));
                break;
            default:
                break;
        }
        return false;
    }
};

template <class T>
T* outlet(QWidget* cell, const char* name) {
    return cell->findChild<T*>(QString::fromLatin1(name));
}

}  // namespace

void setElidedText(QLabel* label, const QString& text, Qt::TextElideMode mode) {
    if (!label)
        return;
    if (!label->property(kElideMode).isValid()) {
        label->setTextFormat(Qt::PlainText);
        label->installEventFilter(new ElisionFilter(label));
    }
    label->setProperty(kFullText, text);
    label->setProperty(kElideMode, static_cast<int>(mode));
    applyElision(label);
}

// --- NACheckCellBaseView ------------------------------------------------------------------

NACheckCellBaseView::NACheckCellBaseView(QWidget* parent) : NACellBaseView(parent) {
    // The box must get its clicks; the rest of the cell ignores them, so they still reach the
    // table behind it.
    setAttribute(Qt::WA_TransparentForMouseEvents, false);
}

void NACheckCellBaseView::awakeFromNib() {
    checkBtn = outlet<NAOSCheckButton>(this, "checkBtn");
    if (!checkBtn)
        return;
    // Keys move through the rows, not through every box of every row.
    checkBtn->setFocusPolicy(Qt::NoFocus);
    connect(checkBtn, &NAOSCheckButton::clicked, this, &NACheckCellBaseView::checkAction);
}

void NACheckCellBaseView::checkAction() {
    const std::shared_ptr<NAObject> object = representObj();
    if (object && checkBtn && canChangeMark(*object))
        object->setIsChecked(checkBtn->state());
    changeRow();
}

void NACheckCellBaseView::changeRow() {
    NATableView* table = NATableView::enclosingTable(this);
    if (!table)
        return;
    table->selectRowIndexes(table->rowForView(this));
    if (NATableViewDelegate* delegate = table->tableDelegate())
        delegate->updateCheckState();
}

// --- NAGroupTableBaseCellView -------------------------------------------------------------

NAGroupTableBaseCellView* NAGroupTableBaseCellView::initwithNib() {
    return loadGroupCell<NAGroupTableBaseCellView>();
}

bool NAGroupTableBaseCellView::canChangeMark(const NAObject& object) const {
    return dynamic_cast<const NAGroupObj*>(&object) != nullptr;
}

void NAGroupTableBaseCellView::awakeFromNib() {
    NACheckCellBaseView::awakeFromNib();
    icon_view = outlet<QLabel>(this, "icon_view");
    title_view = outlet<QLabel>(this, "title_view");
}

void NAGroupTableBaseCellView::paintEvent(QPaintEvent*) {
    if (!checkBtn || !checkBtn->isVisible() || !property("rowSelected").toBool())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    const QPointF centre = QRectF(checkBtn->geometry()).center();
    painter.drawRoundedRect(QRectF(centre.x() - 9, centre.y() - 9, 18, 18), 4.5, 4.5);
}

// --- NAFilelistCellBaseView ---------------------------------------------------------------

bool NAFilelistCellBaseView::isPlainFileItem(const NAObject& object) {
    const std::type_info& type = typeid(object);
    return type == typeid(NAFileobj) || type == typeid(NATreatObj);
}

bool NAFilelistCellBaseView::canChangeMark(const NAObject& object) const {
    return isPlainFileItem(object);
}

void NAFilelistCellBaseView::awakeFromNib() {
    NACheckCellBaseView::awakeFromNib();
    icon_view = outlet<QLabel>(this, "icon_view");
    name_text = outlet<QLabel>(this, "name_text");
    path_text = outlet<QLabel>(this, "path_text");
    size_text = outlet<QLabel>(this, "size_text");
}

// --- the text-only cells ------------------------------------------------------------------

void NAStartupItemInformationCellBaseView::awakeFromNib() {
    itemID_text = outlet<QLabel>(this, "itemID_text");
    loadedUsing_text = outlet<QLabel>(this, "loadedUsing_text");
    fullPath_text = outlet<QLabel>(this, "fullPath_text");
}

void NALabelKeyAndValueCellBaseView::awakeFromNib() {
    key_text = outlet<QLabel>(this, "key_text");
    value_text = outlet<QLabel>(this, "value_text");
}

}  // namespace sysmend
