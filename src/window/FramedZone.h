#pragma once

#include <QWidget>

namespace tambrel {

/// A frame of ink around paper, for another view to lie in.
class FramedZone : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace tambrel
