// The content area of a result page that, while there is nothing to list, hides what it holds
// and shows the application's image with "No Items" in its middle.
#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

namespace sysmend {

class NANoContentView : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool hiddenSubviews READ hiddenSubviews WRITE setHiddenSubviews)
  public:
    explicit NANoContentView(QWidget* parent = nullptr);

    bool hiddenSubviews() const { return hiddenSubviews_; }
    // true hides every child widget and draws the empty state; false shows again the children
    // that this view hid (children hidden by someone else stay hidden) and draws nothing of
    // its own. Repeating a call changes nothing. Children added while the empty state shows
    // are not hidden by it.
    void setHiddenSubviews(bool hidden);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    bool hiddenSubviews_ = false;
    QList<QPointer<QWidget>> hiddenByUs_;
};

}  // namespace sysmend
