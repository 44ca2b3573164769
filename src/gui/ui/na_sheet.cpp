#include "ui/na_sheet.h"

#include <QPointer>

namespace sysmend {

namespace {

const char* const kCompletionProperty = "sysmendSheetConnection";

void dropCompletion(QDialog* sheet) {
    const QVariant held = sheet->property(kCompletionProperty);
    if (held.canConvert<QMetaObject::Connection>())
        QObject::disconnect(held.value<QMetaObject::Connection>());
    sheet->setProperty(kCompletionProperty, QVariant());
}

}  // namespace

void beginSheet(QWidget* owner, QDialog* sheet, SheetCompletion completion) {
    QWidget* window = owner ? owner->window() : nullptr;
    dropCompletion(sheet);
#ifdef Q_OS_MACOS
    sheet->setParent(window, Qt::Sheet);
#else
    sheet->setParent(window, Qt::Dialog | Qt::FramelessWindowHint);
#endif
    sheet->setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);

    QPointer<QDialog> guard(sheet);
    const QMetaObject::Connection connection = QObject::connect(
        sheet, &QDialog::finished, sheet, [guard, completion = std::move(completion)](int code) {
            if (guard)
                dropCompletion(guard);
            if (completion)
                completion(code);
        });
    sheet->setProperty(kCompletionProperty, QVariant::fromValue(connection));

    sheet->adjustSize();
#ifndef Q_OS_MACOS
    if (window) {
        // Hangs from the window's top edge, below the title strip, like a sheet.
        const QPoint top = window->mapToGlobal(QPoint(window->width() / 2, 30));
        sheet->move(top.x() - sheet->width() / 2, top.y());
    }
#endif
    sheet->open();
}

QWidget* sheetParent(const QDialog* sheet) {
    if (!sheet || !sheet->isVisible())
        return nullptr;
    return sheet->parentWidget();
}

void endSheet(QDialog* sheet, int returnCode) {
    if (sheetParent(sheet))
        sheet->done(returnCode);
}

}  // namespace sysmend
