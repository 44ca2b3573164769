// The title strip above the content area: a plain view that draws one separator line.
#pragma once

#include <QColor>
#include <QWidget>

namespace sysmend {

class NALineView : public QWidget {
    Q_OBJECT
  public:
    explicit NALineView(QWidget* parent = nullptr);

    // 1: a line across the whole bottom edge (result pages, whose tables start right below);
    // 2: a short centred line under the title (start pages); any other value: no line.
    int linePosition() const { return linePosition_; }
    void setLinePosition(int position);

    QColor lineColor() const { return lineColor_; }
    void setLineColor(const QColor& color);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int linePosition_ = 0;
    QColor lineColor_{226, 229, 234};
};

}  // namespace sysmend
