// Sheets: dialogs shown over a window that block only that window, the way a Mac sheet does.
//
// "Begin" shows the sheet over the window and keeps the completion until the sheet ends;
// "end" closes it with a return code and runs the completion once. A sheet that is not shown
// has no sheet parent, and ending it then does nothing, so a second end is harmless. On macOS
// the dialog is a real sheet; elsewhere a frameless dialog centred under the window's top
// edge. Everything here runs on the GUI thread.
#pragma once

#include <QDialog>
#include <functional>

namespace sysmend {

using SheetCompletion = std::function<void(int returnCode)>;

// Shows `sheet` over the window of `owner` (any widget of that window). The sheet's earlier
// completion, if it was begun before and never ended, is dropped.
void beginSheet(QWidget* owner, QDialog* sheet, SheetCompletion completion = {});

// The window the sheet is shown over; null while it is not shown.
QWidget* sheetParent(const QDialog* sheet);

// Ends the sheet with `returnCode` when it is shown (its completion runs before this returns);
// otherwise nothing.
void endSheet(QDialog* sheet, int returnCode = QDialog::Rejected);

// AppKit's "continue" response, the code a scan's sheet ends with.
inline constexpr int kModalResponseContinue = -1002;

}  // namespace sysmend
