#pragma once

#include <QWidget>

namespace tambrel {

/// A panel with square corners and a border of one pixel, for other views to specialise: they paint after
/// calling this class's paintEvent. Main thread.
class RetroPanelView : public QWidget {
    Q_OBJECT

public:
    explicit RetroPanelView(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace tambrel
