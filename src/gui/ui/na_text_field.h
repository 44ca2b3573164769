// Labels that bring their own font and colour, so that pages need not style each text: body
// text, a page title and the line under it.
#pragma once

#include <QLabel>

namespace sysmend {

// Body text: Helvetica 13, dark grey.
class NATextField : public QLabel {
    Q_OBJECT
  public:
    explicit NATextField(QWidget* parent = nullptr);
};

// A page title: Helvetica Light 26, near black.
class NATextField_Title : public NATextField {
    Q_OBJECT
  public:
    explicit NATextField_Title(QWidget* parent = nullptr);
};

// The line under a title: Helvetica Light 15, mid grey, wrapping.
class NATextField_SubTitle : public NATextField {
    Q_OBJECT
  public:
    explicit NATextField_SubTitle(QWidget* parent = nullptr);
};

}  // namespace sysmend
