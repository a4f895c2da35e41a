#pragma once

#include <QWidget>

namespace tambrel {

/// A frame of ink around paper, for other views to lie in, with a divider if there are two. Main thread.
class FramedZone : public QWidget {
public:
    using QWidget::QWidget;
    /// `divider`: the left of the line, in points.
    FramedZone(int divider, QWidget* parent) : QWidget(parent), divider_(divider) {}

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int divider_ = 0; // None.
};

} // namespace tambrel
